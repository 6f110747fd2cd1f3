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
#include "Platform/Linux/Process/LinuxProcessInfo.h"
#include "Platform/Linux/Sound/PulseAudioEngine.h"
#include "Platform/Linux/Sound/PulseCaptureAuthorization.h"
#include "Platform/Linux/Sound/PulseSystemSounds.h"
#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"
#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"
#include "Platform/Linux/X11/X11ScreenFrames.h"
#include "Platform/Linux/X11/X11UserInput.h"
#include "Platform/Linux/X11/X11Workspace.h"

namespace Velloro {

Platform makeLinuxPlatform()
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
    platform.pasteboard = std::make_unique<X11Pasteboard>(pasting);
    platform.keyboardEvents = std::make_unique<X11KeyboardEvents>(display, pasting);
    platform.userInput = std::make_unique<X11UserInput>(display);
    platform.hotkeyRegistration = std::make_unique<X11HotkeyRegistration>(display);
    platform.keyEventMonitor = std::make_unique<WindowKeyEvents>(display);
    platform.systemSettings = std::make_unique<DesktopSettings>();
    platform.screenFrames = std::make_unique<X11ScreenFrames>(display);
    platform.workspace = std::make_unique<X11Workspace>(display);
    platform.screenLock = std::make_unique<LinuxScreenLock>(
        std::make_unique<DBusLockState>(SessionBus::connection()), display);

    const auto look = std::make_shared<X11DesktopLook>(X11Connection::open());
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
