#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Appearance.h"
#include "Platform/AudioEngine.h"
#include "Platform/CaptureAuthorization.h"
#include "Platform/DownloadSession.h"
#include "Platform/FileSystem.h"
#include "Platform/HotkeyRegistration.h"
#include "Platform/KeyEventMonitor.h"
#include "Platform/KeyboardEvents.h"
#include "Platform/LoginItem.h"
#include "Platform/Overlay.h"
#include "Platform/Pasteboard.h"
#include "Platform/ProcessInfo.h"
#include "Platform/ScreenFrames.h"
#include "Platform/ScreenLock.h"
#include "Platform/SystemSettings.h"
#include "Platform/SystemSounds.h"
#include "Platform/TrayHost.h"
#include "Platform/Updater.h"
#include "Platform/UserDefaults.h"
#include "Platform/UserInput.h"
#include "Platform/UserNotifications.h"
#include "Platform/Workspace.h"

#include <functional>
#include <memory>

namespace Velloro {

/// The services of the platform, bundled. `main` makes the real one, a test the one in memory; it
/// is handed down by reference and outlives everything that it was handed to.
struct Platform
{
    /// Makes an engine on the default microphone.
    std::function<std::unique_ptr<AudioEngine>()> makeAudioEngine;
    /// Makes a session that reports to `delegate`, which outlives it, and keeps partial data in
    /// `temporaryDirectory`, on the file system to which the files are moved.
    std::function<std::unique_ptr<DownloadSession>(DownloadSessionDelegate &delegate,
                                                   const QString &temporaryDirectory)>
        makeDownloadSession;
    std::unique_ptr<CaptureAuthorization> captureAuthorization;
    std::unique_ptr<HotkeyRegistration> hotkeyRegistration;
    std::unique_ptr<Accessibility> accessibility;
    std::unique_ptr<KeyEventMonitor> keyEventMonitor;
    std::unique_ptr<KeyboardEvents> keyboardEvents;
    std::unique_ptr<UserInput> userInput;
    std::unique_ptr<Pasteboard> pasteboard;
    std::unique_ptr<Appearance> appearance;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<UserNotifications> userNotifications;
    /// Null where a window of the program is shown above all others.
    std::unique_ptr<Overlay> overlay;
    std::unique_ptr<ScreenFrames> screenFrames;
    std::unique_ptr<ScreenLock> screenLock;
    std::unique_ptr<SystemSettings> systemSettings;
    std::unique_ptr<SystemSounds> systemSounds;
    std::unique_ptr<TrayHost> trayHost;
    std::unique_ptr<UserDefaults> userDefaults;
    std::unique_ptr<FileSystem> fileSystem;
    /// Shared with recognition, whose work may outlast the rest when the program ends.
    std::shared_ptr<const ProcessInfo> processInfo;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<Updater> updater;
};

} // namespace Velloro
