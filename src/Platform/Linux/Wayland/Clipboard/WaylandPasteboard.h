#pragma once

#include "Platform/Linux/Clipboard/ThreadedPasteboard.h"

#include <QByteArray>
#include <memory>

namespace Velloro {

/// The pasteboard of a Wayland compositor that lets a program have it without the keyboard's focus.
/// What this program has put there ends with it where no clipboard manager runs.
class WaylandPasteboard final : public ThreadedPasteboard
{
public:
    /// Connects to the compositor's socket of this name or path, the one of the environment when it
    /// is empty. Where that is not there or keeps its pasteboard for the program in front, the
    /// pasteboard is always empty.
    explicit WaylandPasteboard(std::shared_ptr<PasteCoordinator> pasting,
                               const QByteArray &socket = {});
};

} // namespace Velloro
