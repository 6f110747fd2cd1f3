#include "Views/Onboarding/OnboardingViewModel.h"

#include "Core/Dictation/DictationController.h"

#include <algorithm>
#include <utility>

namespace Velloro {

OnboardingViewModel::OnboardingViewModel(Platform &platform, AppState &appState,
                                         HotkeyManager &hotkeyManager,
                                         ModelDownloadStepViewModel &download, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
    , m_download(download)
    , m_trayHost(*platform.trayHost)
    , m_hotkey(hotkeyManager, *platform.keyEventMonitor)
{
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &OnboardingViewModel::canProceedChanged);
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &OnboardingViewModel::microphoneProblemChanged);
    connect(&appState, &AppState::isDownloadingModelChanged, this,
            &OnboardingViewModel::canProceedChanged);
    connect(&appState, &AppState::downloadedModelsChanged, this,
            &OnboardingViewModel::canProceedChanged);
    connect(&appState, &AppState::recordingModeChanged, this,
            &OnboardingViewModel::instructionChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this,
            &OnboardingViewModel::instructionChanged);
    const WhisperManager &manager = appState.whisperManager();
    connect(&manager, &WhisperManager::isModelLoadedChanged, this,
            &OnboardingViewModel::unfinishedChanged);
    connect(&manager, &WhisperManager::modelStatesChanged, this,
            &OnboardingViewModel::unfinishedChanged);
    connect(&appState, &AppState::selectedModelChanged, this,
            &OnboardingViewModel::unfinishedChanged);
    connect(&appState, &AppState::presetMappingsChanged, this,
            &OnboardingViewModel::unfinishedChanged);
    connect(&m_trayHost, &TrayHost::appeared, this, &OnboardingViewModel::hasTrayChanged);
}

bool OnboardingViewModel::canProceed() const
{
    switch (m_currentStep) {
    case Permissions:
        return m_appState.hasMicrophonePermission();
    case ModelDownload:
        return m_download.isReady() || !m_appState.isDownloadingModel();
    default:
        return true;
    }
}

QString OnboardingViewModel::instruction() const
{
    const QString hotkey = HotkeyManager::string(m_hotkeyManager.currentKeyCode(),
                                                 m_hotkeyManager.currentModifiers());
    return (m_appState.recordingMode() == RecordingMode::holdToTalk
                ? tr("Press and hold %1 anywhere to dictate")
                : tr("Press %1 anywhere to start dictating"))
        .arg(hotkey);
}

bool OnboardingViewModel::hasModel() const
{
    const WhisperManager &manager = m_appState.whisperManager();
    const ModelPreset preset = m_appState.selectedModel();
    return manager.isModelLoaded() || manager.isModelFilePresent(m_appState.modelId(preset))
        || manager.isModelDownloaded(DictationController::modelType(preset));
}

QString OnboardingViewModel::unfinished() const
{
    if (hasModel())
        return {};
    const ModelDownloadState state = m_appState.whisperManager().modelStates().value(
        m_appState.modelId(m_appState.selectedModel()));
    if (const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&state.value)) {
        return tr("The voice model is still being downloaded (%1%). You can dictate as soon as it "
                  "has arrived.")
            .arg(int(downloading->progress * 100));
    }
    return tr("A voice model is still missing. Go back to download it, or do so later in Settings, "
              "under Model.");
}

QString OnboardingViewModel::microphoneProblem() const
{
    if (!m_hasAskedForMicrophone || m_appState.hasMicrophonePermission())
        return {};
    return tr("No microphone was found. Connect one, or choose it as the input in your desktop's "
              "sound settings, and press Enable again.");
}

void OnboardingViewModel::back()
{
    setCurrentStep(m_currentStep - 1);
}

void OnboardingViewModel::proceed()
{
    if (!canProceed())
        return;
    if (m_currentStep == Done) {
        m_appState.setHasCompletedOnboarding(true);
        Q_EMIT dismissRequested();
        return;
    }
    setCurrentStep(m_currentStep + 1);
}

void OnboardingViewModel::setCurrentStep(int step)
{
    const auto next = Step(std::clamp<int>(step, Welcome, Done));
    if (std::exchange(m_currentStep, next) == next)
        return;
    Q_EMIT currentStepChanged();
    Q_EMIT canProceedChanged();
}

void OnboardingViewModel::checkPermissions()
{
    m_appState.permissionsManager().check();
}

void OnboardingViewModel::requestMicrophonePermission()
{
    m_hasAskedForMicrophone = true;
    m_appState.permissionsManager().requestMicrophone();
    Q_EMIT microphoneProblemChanged();
}

void OnboardingViewModel::requestAccessibilityPermission()
{
    m_appState.permissionsManager().requestAccessibility();
}

} // namespace Velloro
