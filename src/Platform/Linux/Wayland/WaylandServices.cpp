#include "Platform/Linux/Wayland/WaylandServices.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/SessionBus.h"
#include "Platform/Linux/Wayland/Clipboard/DataControl.h"
#include "Platform/Linux/Wayland/Clipboard/WaylandPasteboard.h"
#include "Platform/Linux/Wayland/Gnome/ShellKeyboardEvents.h"
#include "Platform/Linux/Wayland/Gnome/ShellStrokes.h"
#include "Platform/Linux/Wayland/Gnome/ShellWindows.h"
#include "Platform/Linux/Wayland/Gnome/ShellWorkspace.h"
#include "Platform/Linux/Wayland/Hotkeys/WaylandHotkeys.h"
#include "Platform/Linux/Wayland/Keyboard/WaylandKeyboardEvents.h"
#include "Platform/Linux/Wayland/Keyboard/XWaylandKeyboardEvents.h"
#include "Platform/Linux/Wayland/Overlay/WaylandOverlay.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"
#include "Platform/Linux/Wayland/WaylandDesktopLook.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/Linux/Wayland/WaylandScreenFrames.h"
#include "Platform/Linux/Wayland/WaylandUserInput.h"
#include "Platform/Linux/Wayland/WaylandWorkspace.h"

#include <QGuiApplication>
#include <layer-shell-client.h>
#include <plasma-window-management-client.h>

namespace Velloro {

namespace {

/// The service where the program's windows are the X server's, and nothing where they are the
/// compositor's own.
template <typename Service>
std::unique_ptr<Service> ofX11Windows(std::unique_ptr<Service> x11)
{
    return QGuiApplication::platformName() == u"xcb"_s ? std::move(x11) : nullptr;
}

void addShellExtension(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                       const std::shared_ptr<ShellExtension> &extension,
                       const std::shared_ptr<PasteCoordinator> &pasting)
{
    const auto windows = std::make_shared<ShellWindows>(extension);
    platform.workspace = std::make_unique<ShellWorkspace>(
        extension, std::make_unique<WaylandWorkspace>(windows), std::move(platform.workspace));
    platform.keyboardEvents = std::make_unique<ShellKeyboardEvents>(
        extension,
        std::make_unique<WaylandKeyboardEvents>(display, std::make_unique<ShellStrokes>(extension),
                                                windows, pasting),
        std::move(platform.keyboardEvents));
}

} // namespace

void addWaylandServices(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                        const std::shared_ptr<PasteCoordinator> &pasting)
{
    platform.screenFrames
        = std::make_unique<WaylandScreenFrames>(ofX11Windows(std::move(platform.screenFrames)));
    if (!display)
        return;
    // Before this program's own keyboard is there, after which the user's may be told of only when
    // it is used.
    const auto keymap = std::make_shared<WaylandKeymap>(display);
    if (DataControl::isOffered(*display))
        platform.pasteboard = std::make_unique<WaylandPasteboard>(pasting);
    const auto windows = WindowList::make(display);
    if (windows)
        platform.workspace = std::make_unique<WaylandWorkspace>(windows);
    // GNOME's shell offers programs nothing of all this itself.
    std::shared_ptr<ShellExtension> extension;
    if (auto strokes = StrokeSender::make(*display)) {
        platform.keyboardEvents = std::make_unique<WaylandKeyboardEvents>(
            display, std::move(strokes), windows, pasting);
    } else {
        platform.keyboardEvents
            = std::make_unique<XWaylandKeyboardEvents>(std::move(platform.keyboardEvents));
        extension = std::make_shared<ShellExtension>(SessionBus::connection());
        addShellExtension(platform, display, extension, pasting);
    }
    addWaylandHotkeys(platform, display, keymap, extension);
    platform.userInput = std::make_unique<WaylandUserInput>();
    platform.overlay = WaylandOverlay::make(display);
}

std::unique_ptr<DesktopLook> makeWaylandLook(const std::shared_ptr<WaylandConnection> &display,
                                             std::unique_ptr<DesktopLook> x11)
{
    // The bars for compositors without a panel of their own are dark as they come; a panel has the
    // desktop's colours.
    const bool hasBars = display && display->offers(zwlr_layer_shell_v1_interface)
        && !display->offers(org_kde_plasma_window_management_interface);
    return std::make_unique<WaylandDesktopLook>(ofX11Windows(std::move(x11)),
                                                hasBars ? std::optional(true) : std::nullopt);
}

} // namespace Velloro
