#include "Platform/Linux/LinuxPlatform.h"

#include "Platform/Linux/Accessibility/AtSpiAccessibility.h"
#include "Platform/Linux/Desktop/DBusUserNotifications.h"
#include "Platform/Linux/Desktop/DesktopAppearance.h"
#include "Platform/Linux/Desktop/DesktopSettings.h"
#include "Platform/Linux/Desktop/DesktopTrayHost.h"
#include "Platform/Linux/Files/JsonUserDefaults.h"
#include "Platform/Linux/Files/LinuxFileSystem.h"
#include "Platform/Linux/Process/LinuxProcessInfo.h"
#include "Platform/Linux/Desktop/LinuxScreenLock.h"
#include "Platform/Linux/Downloads/NetworkDownloadSession.h"
#include "Platform/Linux/Desktop/PackagedUpdater.h"
#include "Platform/Linux/Sound/PulseAudioEngine.h"
#include "Platform/Linux/Sound/PulseCaptureAuthorization.h"
#include "Platform/Linux/Sound/PulseSystemSounds.h"
#include "Platform/Linux/Desktop/SessionBus.h"
#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"
#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"
#include "Platform/Linux/X11/X11ScreenFrames.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/Linux/Desktop/XdgLoginItem.h"

namespace Velloro {

Platform makeLinuxPlatform()
{
    Platform platform;

    const auto sound = std::make_shared<PulseConnection>();
    platform.makeAudioEngine = [sound] { return std::make_unique<PulseAudioEngine>(sound); };
    platform.captureAuthorization = std::make_unique<PulseCaptureAuthorization>(sound);
    platform.systemSounds = std::make_unique<PulseSystemSounds>(sound);

    const auto display = X11Connection::open();
    auto accessibility = std::make_unique<AtSpiAccessibility>();
    // Before the event loop starts: see AtSpiLauncher.
    (void)accessibility->isProcessTrusted();
    auto pasteboard = std::make_unique<X11Pasteboard>();
    // Both are there for every stroke; none is sent while the bundle is destroyed.
    auto keyboard = std::make_unique<X11KeyboardEvents>(
        display,
        X11KeyboardEvents::Hooks{
            .focusedElementIsTerminal
            = [bus = accessibility.get()] { return bus->isTerminalFocused(); },
            .willPastePrimarySelection
            = [board = pasteboard.get()] { board->lendToPrimarySelection(); },
            .willPaste
            = [board = pasteboard.get()](uint32_t window,
                                         bool isOwn) { return board->beginPaste(window, isOwn); },
            .awaitPaste = [board = pasteboard.get()] { (void)board->awaitPaste(); },
        });
    // A text field is read and written when the backspaces before have done their work.
    accessibility->setBeforeAccess([strokes = keyboard.get()] { return strokes->awaitReceipt(); });
    platform.keyboardEvents = std::move(keyboard);
    platform.hotkeyRegistration = std::make_unique<X11HotkeyRegistration>(display);
    platform.keyEventMonitor = std::make_unique<WindowKeyEvents>(display);
    platform.systemSettings = std::make_unique<DesktopSettings>();
    platform.screenFrames = std::make_unique<X11ScreenFrames>(display);
    platform.workspace = std::make_unique<X11Workspace>(display);
    platform.screenLock = std::make_unique<LinuxScreenLock>(
        std::make_unique<DBusLockState>(SessionBus::connection()), display);
    platform.accessibility = std::move(accessibility);
    platform.pasteboard = std::move(pasteboard);

    const auto look = std::make_shared<X11DesktopLook>(X11Connection::open());
    platform.appearance = std::make_unique<DesktopAppearance>(look);
    platform.trayHost = std::make_unique<DesktopTrayHost>(look);
    platform.userNotifications = std::make_unique<DBusUserNotifications>();
    platform.userDefaults = std::make_unique<JsonUserDefaults>();
    platform.fileSystem = std::make_unique<LinuxFileSystem>();
    platform.processInfo = std::make_unique<LinuxProcessInfo>();
    platform.loginItem = std::make_unique<XdgLoginItem>();
    platform.updater = std::make_unique<PackagedUpdater>();
    platform.makeDownloadSession = [](DownloadSessionDelegate &delegate,
                                      const QString &temporaryDirectory) {
        return std::make_unique<NetworkDownloadSession>(delegate, temporaryDirectory);
    };
    return platform;
}

} // namespace Velloro
