#include "Platform/Linux/Wayland/WaylandServices.h"

#include "Platform/Linux/Wayland/Clipboard/DataControl.h"
#include "Platform/Linux/Wayland/Clipboard/WaylandPasteboard.h"
#include "Platform/Linux/Wayland/Keyboard/WaylandKeyboardEvents.h"
#include "Platform/Linux/Wayland/Keyboard/XWaylandKeyboardEvents.h"
#include "Platform/Linux/Wayland/WaylandUserInput.h"
#include "Platform/Linux/Wayland/WaylandWorkspace.h"

namespace Velloro {

void addWaylandServices(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                        const std::shared_ptr<PasteCoordinator> &pasting)
{
    if (!display)
        return;
    const auto windows = WindowList::make(display);
    if (windows)
        platform.workspace = std::make_unique<WaylandWorkspace>(windows);
    if (DataControl::isOffered(*display))
        platform.pasteboard = std::make_unique<WaylandPasteboard>(pasting);
    if (auto strokes = StrokeSender::make(*display)) {
        platform.keyboardEvents = std::make_unique<WaylandKeyboardEvents>(
            display, std::move(strokes), windows, pasting);
    } else {
        platform.keyboardEvents
            = std::make_unique<XWaylandKeyboardEvents>(std::move(platform.keyboardEvents));
    }
    platform.userInput = std::make_unique<WaylandUserInput>();
}

} // namespace Velloro
