#pragma once

#include "Platform/Platform.h"
#include "Support/InMemoryAccessibility.h"
#include "Support/InMemoryAppearance.h"
#include "Support/InMemoryAudioEngine.h"
#include "Support/InMemoryCaptureAuthorization.h"
#include "Support/InMemoryDownloadSession.h"
#include "Support/InMemoryFileSystem.h"
#include "Support/InMemoryHotkeyRegistration.h"
#include "Support/InMemoryKeyEventMonitor.h"
#include "Support/InMemoryKeyboardEvents.h"
#include "Support/InMemoryLoginItem.h"
#include "Support/InMemoryPasteboard.h"
#include "Support/InMemoryProcessInfo.h"
#include "Support/InMemoryScreenFrames.h"
#include "Support/InMemoryScreenLock.h"
#include "Support/InMemorySystemSettings.h"
#include "Support/InMemorySystemSounds.h"
#include "Support/InMemoryTrayHost.h"
#include "Support/InMemoryUserDefaults.h"
#include "Support/InMemoryUserInput.h"
#include "Support/InMemoryUserNotifications.h"
#include "Support/InMemoryWorkspace.h"

namespace Velloro {

/// An updater that has nothing to do.
class InMemoryUpdater : public Updater
{
public:
    void start() override {}
};

/// A whole platform in memory, and its services by their own types, for scripting and asking.
class InMemoryPlatform
{
public:
    InMemoryPlatform()
    {
        platform.makeAudioEngine = [this] {
            auto engine = std::make_unique<InMemoryAudioEngine>();
            engine->format = inputFormat;
            engine->startError = captureError;
            audioEngine = engine.get();
            return engine;
        };
        platform.makeDownloadSession
            = [this](DownloadSessionDelegate &delegate, const QString &directory) {
                  auto session = std::make_unique<InMemoryDownloadSession>(delegate, directory);
                  downloadSession = session.get();
                  return session;
              };
        make(platform.captureAuthorization, captureAuthorization);
        make(platform.hotkeyRegistration, hotkeyRegistration);
        make(platform.accessibility, accessibility);
        make(platform.keyEventMonitor, keyEventMonitor);
        make(platform.keyboardEvents, keyboardEvents, output);
        make(platform.userInput, userInput);
        make(platform.pasteboard, pasteboard, output);
        keyboardEvents->willPaste = [this] { return pasteboard->beginPaste(); };
        make(platform.appearance, appearance);
        make(platform.workspace, workspace);
        make(platform.userNotifications, userNotifications);
        make(platform.screenFrames, screenFrames);
        make(platform.screenLock, screenLock);
        make(platform.systemSettings, systemSettings);
        make(platform.systemSounds, systemSounds);
        make(platform.trayHost, trayHost);
        make(platform.userDefaults, userDefaults);
        make(platform.fileSystem, fileSystem);
        platform.processInfo = std::make_shared<InMemoryProcessInfo>();
        make(platform.loginItem, loginItem);
        platform.updater = std::make_unique<InMemoryUpdater>();
    }

    /// What was done with the keyboard and the pasteboard, in its order.
    QStringList output;
    Platform platform;

    // Script of the engine that is made at the first recording.
    AudioFormat inputFormat{16000.0, 1};
    std::optional<PlatformError> captureError;

    InMemoryAudioEngine *audioEngine = nullptr;
    InMemoryDownloadSession *downloadSession = nullptr;
    InMemoryCaptureAuthorization *captureAuthorization = nullptr;
    InMemoryHotkeyRegistration *hotkeyRegistration = nullptr;
    InMemoryAccessibility *accessibility = nullptr;
    InMemoryKeyEventMonitor *keyEventMonitor = nullptr;
    InMemoryKeyboardEvents *keyboardEvents = nullptr;
    InMemoryUserInput *userInput = nullptr;
    InMemoryPasteboard *pasteboard = nullptr;
    InMemoryAppearance *appearance = nullptr;
    InMemoryWorkspace *workspace = nullptr;
    InMemoryUserNotifications *userNotifications = nullptr;
    InMemoryScreenFrames *screenFrames = nullptr;
    InMemoryScreenLock *screenLock = nullptr;
    InMemorySystemSettings *systemSettings = nullptr;
    InMemorySystemSounds *systemSounds = nullptr;
    InMemoryTrayHost *trayHost = nullptr;
    InMemoryUserDefaults *userDefaults = nullptr;
    InMemoryFileSystem *fileSystem = nullptr;
    InMemoryLoginItem *loginItem = nullptr;

private:
    template <typename Service, typename InMemory, typename... Arguments>
    static void make(std::unique_ptr<Service> &service, InMemory *&inMemory,
                     Arguments &...arguments)
    {
        auto made = std::make_unique<InMemory>(arguments...);
        inMemory = made.get();
        service = std::move(made);
    }
};

} // namespace Velloro
