#pragma once

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
/// thread.
class X11Pasteboard final : public Pasteboard
{
public:
    /// Connects to the display, the one of the environment when `displayName` is empty. Without an
    /// X server the pasteboard is always empty.
    explicit X11Pasteboard(const QByteArray &displayName = {});
    /// Hands the content to the clipboard manager if one runs, so that it outlives the program.
    ~X11Pasteboard() override;

    /// Waits for an owner that does not answer for 120 ms, and for a slow one for 240 ms.
    [[nodiscard]] std::optional<QString> string() override;
    void clearContents() override;
    void setString(const QString &text) override;

    /// Makes the primary selection hold what the pasteboard holds, for half a second; then the text
    /// that it held before is back.
    void lendToPrimarySelection();

    /// The application of this window is about to paste what the pasteboard holds now; it is given
    /// that even if the pasteboard holds something else when it comes round to it.
    void beginPaste(uint32_t window);
    /// Waits until that application has been given the text, at most until a second after
    /// `beginPaste`. Key strokes that are sent to it afterwards come after the text.
    [[nodiscard]] bool awaitPaste() override;

private:
    /// Runs `work` on the selections' thread and waits for it; nothing without an X server.
    template <typename Work>
    void withSelections(Work work);

    QThread m_thread;
    /// Lives on `m_thread` and receives what is to run there.
    QObject m_receiver;
    /// Made, used and destroyed on `m_thread`; null without an X server.
    std::unique_ptr<X11Selections> m_selections;
};

} // namespace Velloro
