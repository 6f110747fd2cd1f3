#pragma once

#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Pasteboard.h"

#include <QByteArray>
#include <QObject>
#include <QThread>
#include <cstdint>
#include <memory>

namespace Velloro {

class X11Selections;

/// The pasteboard on an X server.
///
/// Its content is served from a thread of its own, so that an application can paste while the main
/// thread is busy, and so that this program's own toolkit can: it waits for the content on the main
/// thread. What the toolkit itself has copied is read as from any other program.
class X11Pasteboard final : public Pasteboard, public PasteCoordinator::Lender
{
public:
    /// Connects to the display, the one of the environment when `displayName` is empty. Without an
    /// X server the pasteboard is always empty.
    explicit X11Pasteboard(std::shared_ptr<PasteCoordinator> pasting,
                           const QByteArray &displayName = {});
    /// Hands the content to the clipboard manager if one runs, so that it outlives the program.
    ~X11Pasteboard() override;

    void setString(const QString &text) override;

    void follow() override;
    void unfollow() override;
    /// What was there is waited for where it has not been read yet: 120 ms without a sign of life
    /// from its owner, half a second at most.
    void borrow(const QString &text) override;
    [[nodiscard]] bool wasPasteRefused() const override { return m_wasPasteRefused; }
    void giveBack() override;
    [[nodiscard]] bool awaitPaste() override;

    void lendToPrimarySelection() override;
    /// The application of the target is given the text even if the pasteboard holds something else
    /// when it asks.
    ///
    /// Where another program has taken the pasteboard from the text, the text is put back. False
    /// when it is taken again at once.
    [[nodiscard]] bool beginPaste(const PasteTarget &target) override;

private:
    /// Runs `work` on the selections' thread and waits for it; nothing without an X server.
    template <typename Work>
    void withSelections(Work work);
    /// The same without waiting.
    template <typename Work>
    void withSelectionsLater(Work work);

    std::shared_ptr<PasteCoordinator> m_pasting;
    QThread m_thread;
    /// Lives on `m_thread` and receives what is to run there.
    QObject m_receiver;
    /// Made, used and destroyed on `m_thread`; null without an X server.
    std::unique_ptr<X11Selections> m_selections;
    bool m_wasPasteRefused = false;
};

} // namespace Velloro
