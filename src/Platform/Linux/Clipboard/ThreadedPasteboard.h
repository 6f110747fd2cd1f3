#pragma once

#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Pasteboard.h"

#include <QObject>
#include <QThread>
#include <functional>
#include <memory>

namespace Velloro {

/// The pasteboard of a display system.
///
/// Its content is served from a thread of its own, so that an application can paste while the main
/// thread is busy, and so that this program's own toolkit can: it waits for the content on the main
/// thread. What the toolkit itself has copied is read as from any other program.
class ThreadedPasteboard : public Pasteboard, public PasteCoordinator::Lender
{
public:
    /// Null where the display system has no selections: the pasteboard is always empty then.
    using MakeSelections = std::function<std::unique_ptr<Selections>()>;

    /// `makeSelections` is called once, on the thread.
    ThreadedPasteboard(std::shared_ptr<PasteCoordinator> pasting,
                       const MakeSelections &makeSelections);
    ~ThreadedPasteboard() override;

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
    /// Where another program has taken the pasteboard from the text, the text is put back. False
    /// when it is taken again at once.
    [[nodiscard]] bool beginPaste(const PasteTarget &target) override;

private:
    /// Runs `work` on the selections' thread and waits for it; nothing where there are none.
    template <typename Work>
    void withSelections(Work work);
    /// The same without waiting.
    template <typename Work>
    void withSelectionsLater(Work work);

    std::shared_ptr<PasteCoordinator> m_pasting;
    QThread m_thread;
    /// Lives on `m_thread` and receives what is to run there.
    QObject m_receiver;
    /// Made, used and destroyed on `m_thread`.
    std::unique_ptr<Selections> m_selections;
    bool m_wasPasteRefused = false;
};

} // namespace Velloro
