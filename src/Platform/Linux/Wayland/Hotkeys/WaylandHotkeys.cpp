#include "Platform/Linux/Wayland/Hotkeys/WaylandHotkeys.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/SessionBus.h"
#include "Platform/Linux/Wayland/Gnome/ShellHotkeys.h"
#include "Platform/Linux/Wayland/Hotkeys/HotkeyRoute.h"
#include "Platform/Linux/Wayland/Hotkeys/KGlobalAccelHotkeys.h"
#include "Platform/Linux/Wayland/Hotkeys/PortalHotkeys.h"
#include "Platform/Linux/Wayland/Hotkeys/SwayHotkeys.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"

#include <QGuiApplication>
#include <QPointer>
#include <algorithm>

namespace Velloro {

namespace {

/// Not every desktop on whose bus KDE's service runs gives it the keys; KDE's own compositor does.
bool isKde(const WaylandConnection &display)
{
    return std::ranges::any_of(display.globals(), [](const WaylandConnection::Global &global) {
        return global.interface == "org_kde_plasma_shell";
    });
}

/// AltGr and its like, in the order of the modifiers that every keymap begins with.
bool holdsOtherModifier(uint32_t nativeModifiers)
{
    constexpr uint32_t mod3 = 1U << 5;
    constexpr uint32_t mod5 = 1U << 7;
    return nativeModifiers & (mod3 | mod5);
}

HotkeyRoute::Ways waysOf(const std::shared_ptr<WaylandConnection> &display,
                         const std::shared_ptr<const WaylandKeymap> &keymap,
                         const std::shared_ptr<ShellExtension> &extension)
{
    HotkeyRoute::Ways ways;
    ways.push_back(std::make_unique<SwayHotkeys>(keymap));
    const QDBusConnection bus = SessionBus::connection();
    if (!bus.isConnected())
        return ways;
    if (isKde(*display))
        ways.push_back(std::make_unique<KGlobalAccelHotkeys>(keymap, bus));
    if (extension)
        ways.push_back(std::make_unique<ShellHotkeys>(extension));
    ways.push_back(std::make_unique<PortalHotkeys>(
        keymap, QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"velloro-portal"_s)));
    return ways;
}

} // namespace

void addWaylandHotkeys(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                       const std::shared_ptr<const WaylandKeymap> &keymap,
                       const std::shared_ptr<ShellExtension> &extension)
{
    auto route = std::make_unique<HotkeyRoute>(waysOf(display, keymap, extension),
                                               std::move(platform.hotkeyRegistration));
    if (QGuiApplication::platformName().startsWith(u"wayland"_s)) {
        WindowKeyEvents::Desktop desktop;
        desktop.holdsOtherModifier = holdsOtherModifier;
        desktop.letShortcutsThrough = [route = QPointer(route.get())] {
            return route ? route->letShortcutsThrough() : nullptr;
        };
        platform.keyEventMonitor = std::make_unique<WindowKeyEvents>(std::move(desktop));
    }
    platform.hotkeyRegistration = std::move(route);
}

} // namespace Velloro
