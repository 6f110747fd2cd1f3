#pragma once

#include "Core/Dictation/DictationController.h"
#include "Core/Dictation/PresetModelLoader.h"
#include "Core/State/AppState.h"

#include <QObject>
#include <memory>

namespace Velloro {

/// Owns the one application state and the one dictation controller, wires dictation at launch and
/// cleans up at the end. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Reads settings and history and starts the updater. `platform` and `hotkeyManager` outlive
    /// the delegate. `repositoryBaseUrl` is handed to the state.
    AppDelegate(Platform &platform, HotkeyManager &hotkeyManager,
                DictationController::PillFactory makePill,
                const QString &repositoryBaseUrl = ModelCatalog::repositoryBaseUrl(),
                QObject *parent = nullptr);
    ~AppDelegate() override;

    /// The launch sequence.
    void applicationDidFinishLaunching();
    /// Makes and wires the controller; does nothing if one exists.
    void setupDictation();
    /// Cleans up; termination is never delayed or refused.
    void applicationShouldTerminate();
    void applicationWillTerminate();

    [[nodiscard]] AppState &appState() { return m_appState; }
    /// Null until `setupDictation`, and after the clean-up.
    [[nodiscard]] DictationController *dictationController() { return m_dictationController.get(); }

private:
    void followLaunchAtLogin();
    void bringOnboardingToFront();
    void cleanUp();

    Platform &m_platform;
    HotkeyManager &m_hotkeyManager;
    DictationController::PillFactory m_makePill;
    AppState m_appState;
    std::unique_ptr<DictationController> m_dictationController;
    std::unique_ptr<PresetModelLoader> m_presetModelLoader;
};

} // namespace Velloro
