#pragma once

#include "Platform/Linux/Clipboard/ThreadedPasteboard.h"

#include <QByteArray>
#include <memory>

namespace Velloro {

/// The pasteboard on an X server. At its end the content goes to the clipboard manager if one runs,
/// so that it outlives the program.
class X11Pasteboard final : public ThreadedPasteboard
{
public:
    /// Connects to the display, the one of the environment when `displayName` is empty. Without an
    /// X server the pasteboard is always empty.
    explicit X11Pasteboard(std::shared_ptr<PasteCoordinator> pasting,
                           const QByteArray &displayName = {});
};

} // namespace Velloro
