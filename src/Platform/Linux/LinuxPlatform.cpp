#include "Platform/Linux/LinuxPlatform.h"

#include "Platform/Linux/Accessibility/AtSpiAccessibility.h"
#include "Platform/Linux/Desktop/DBusUserNotifications.h"
#include "Platform/Linux/Desktop/DesktopAppearance.h"
#include "Platform/Linux/Desktop/DesktopSettings.h"
#include "Platform/Linux/Desktop/DesktopTrayHost.h"
#include "Platform/Linux/Desktop/LinuxScreenLock.h"
#include "Platform/Linux/Desktop/PackagedUpdater.h"
#include "Platform/Linux/Desktop/SessionBus.h"
#include "Platform/Linux/Desktop/XdgLoginItem.h"
#include "Platform/Linux/Downloads/NetworkDownloadSession.h"
#include "Platform/Linux/Files/JsonUserDefaults.h"
#include "Platform/Linux/Files/LinuxFileSystem.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Linux/Process/CommandHotkeys.h"
#include "Platform/Linux/Process/LinuxProcessInfo.h"
#include "Platform/Linux/Process/SingleInstance.h"
#include "Platform/Linux/Sound/PulseAudioEngine.h"
#include "Platform/Linux/Sound/PulseCaptureAuthorization.h"
#include "Platform/Linux/Sound/PulseSystemSounds.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"
#include "Platform/Linux/Wayland/WaylandServices.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11DesktopLook.h"
#include "Platform/Linux/X11/X11Services.h"

namespace Velloro {

namespace {

/// Puts the program's commands beside the hotkey.
void addHotkeyCommands(Platform &platform, SingleInstance *instance)
{
    auto hotkeys = std::make_unique<CommandHotkeys>(std::move(platform.hotkeyRegistration));
    if (instance)
        QObject::connect(instance, &SingleInstance::hotkeyCommanded, hotkeys.get(),
                         &CommandHotkeys::handle);
    platform.hotkeyRegistration = std::move(hotkeys);
}

} // namespace

Platform makeLinuxPlatform(DisplayServer server, SingleInstance *instance)
{
    Platform platform;

    const auto sound = std::make_shared<PulseConnection>();
    platform.makeAudioEngine = [sound] { return std::make_unique<PulseAudioEngine>(sound); };
    platform.captureAuthorization = std::make_unique<PulseCaptureAuthorization>(sound);
    platform.systemSounds = std::make_unique<PulseSystemSounds>(sound);

    const auto display = X11Connection::open();
    const auto pasting = std::make_shared<PasteCoordinator>();
    auto accessibility = std::make_unique<AtSpiAccessibility>(pasting);
    // Before the event loop starts: see AtSpiLauncher.
    (void)accessibility->isProcessTrusted();
    platform.accessibility = std::move(accessibility);
    const bool isWayland = server == DisplayServer::wayland;
    addX11Services(platform, server, display, pasting);
    const auto compositor = isWayland ? WaylandConnection::open() : nullptr;
    if (isWayland)
        addWaylandServices(platform, compositor, pasting);
    addHotkeyCommands(platform, instance);
    platform.systemSettings = std::make_unique<DesktopSettings>();
    // Of a compositor's keyboard the X server beside it knows nothing.
    platform.screenLock = std::make_unique<LinuxScreenLock>(
        std::make_unique<DBusLockState>(SessionBus::connection()),
        isWayland ? nullptr : X11Connection::open());

    std::unique_ptr<DesktopLook> x11Look = std::make_unique<X11DesktopLook>(X11Connection::open());
    const std::shared_ptr<DesktopLook> look
        = isWayland ? makeWaylandLook(compositor, std::move(x11Look)) : std::move(x11Look);
    platform.appearance = std::make_unique<DesktopAppearance>(look);
    platform.trayHost = std::make_unique<DesktopTrayHost>(look);
    platform.userNotifications = std::make_unique<DBusUserNotifications>();
    platform.userDefaults = std::make_unique<JsonUserDefaults>();
    platform.fileSystem = std::make_unique<LinuxFileSystem>();
    platform.processInfo = std::make_unique<LinuxProcessInfo>();
    platform.loginItem = std::make_unique<XdgLoginItem>();
    platform.updater = std::make_unique<PackagedUpdater>();
    platform.makeDownloadSession
        = [](DownloadSessionDelegate &delegate, const QString &temporaryDirectory) {
              return std::make_unique<NetworkDownloadSession>(delegate, temporaryDirectory);
          };
    return platform;
}

} // namespace Velloro
