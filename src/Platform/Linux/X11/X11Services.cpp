#include "Platform/Linux/X11/X11Services.h"

#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"
#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"
#include "Platform/Linux/X11/X11ScreenFrames.h"
#include "Platform/Linux/X11/X11UserInput.h"
#include "Platform/Linux/X11/X11Workspace.h"

namespace Velloro {

void addX11Services(Platform &platform, DisplayServer server,
                    const std::shared_ptr<X11Connection> &display,
                    const std::shared_ptr<PasteCoordinator> &pasting)
{
    platform.pasteboard = std::make_unique<X11Pasteboard>(pasting);
    platform.keyboardEvents = std::make_unique<X11KeyboardEvents>(display, pasting);
    platform.userInput = std::make_unique<X11UserInput>(display);
    platform.hotkeyRegistration = std::make_unique<X11HotkeyRegistration>(display, server);
    platform.keyEventMonitor = std::make_unique<WindowKeyEvents>(display);
    platform.screenFrames = std::make_unique<X11ScreenFrames>(display);
    platform.workspace = std::make_unique<X11Workspace>(display);
}

} // namespace Velloro
