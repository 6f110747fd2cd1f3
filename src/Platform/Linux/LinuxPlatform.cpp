#include "Platform/Linux/LinuxPlatform.h"

#include "Platform/Linux/AtSpiAccessibility.h"
#include "Platform/Linux/DBusUserNotifications.h"
#include "Platform/Linux/DesktopAppearance.h"
#include "Platform/Linux/DesktopSettings.h"
#include "Platform/Linux/DesktopTrayHost.h"
#include "Platform/Linux/JsonUserDefaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/LinuxProcessInfo.h"
#include "Platform/Linux/LinuxScreenLock.h"
#include "Platform/Linux/NetworkDownloadSession.h"
#include "Platform/Linux/PackagedUpdater.h"
#include "Platform/Linux/PulseAudioEngine.h"
#include "Platform/Linux/PulseCaptureAuthorization.h"
#include "Platform/Linux/PulseSystemSounds.h"
#include "Platform/Linux/SessionBus.h"
#include "Platform/Linux/WindowKeyEvents.h"
#include "Platform/Linux/X11/PasteStroke.h"
#include "Platform/Linux/X11/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/X11KeyboardEvents.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/X11ScreenFrames.h"
#include "Platform/Linux/X11/X11UserInput.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/Linux/XdgLoginItem.h"

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
    // Before the event loop starts: see AtSpiBus.
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
    accessibility->setActiveWindowTakesText(
        [workspace = std::make_shared<X11Workspace>(display)] {
            return isKnownToPaste(workspace->activeWindowClass().value_or(WindowClass{}));
        });
    // A text field is read and written when the backspaces before have done their work.
    accessibility->setBeforeAccess([strokes = keyboard.get()] { return strokes->awaitReceipt(); });
    platform.keyboardEvents = std::move(keyboard);
    platform.userInput = std::make_unique<X11UserInput>(display);
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
