#include "Views/Onboarding/OnboardingModel.h"

#include "Core/DictationController.h"

#include <algorithm>
#include <utility>

namespace Velloro {

OnboardingModel::OnboardingModel(Platform &platform, AppState &appState,
                                 HotkeyManager &hotkeyManager,
                                 PermissionsManager &permissionsManager,
                                 ModelDownloadStepModel &download, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
    , m_permissionsManager(permissionsManager)
    , m_download(download)
    , m_trayHost(*platform.trayHost)
    , m_hotkey(hotkeyManager, *platform.keyEventMonitor)
{
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &OnboardingModel::canProceedChanged);
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &OnboardingModel::microphoneProblemChanged);
    connect(&appState, &AppState::isDownloadingModelChanged, this,
            &OnboardingModel::canProceedChanged);
    connect(&appState, &AppState::downloadedModelsChanged, this,
            &OnboardingModel::canProceedChanged);
    connect(&appState, &AppState::recordingModeChanged, this,
            &OnboardingModel::instructionChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this,
            &OnboardingModel::instructionChanged);
    const WhisperManager &manager = appState.whisperManager();
    connect(&manager, &WhisperManager::isModelLoadedChanged, this,
            &OnboardingModel::unfinishedChanged);
    connect(&manager, &WhisperManager::modelStatesChanged, this,
            &OnboardingModel::unfinishedChanged);
    connect(&appState, &AppState::selectedModelChanged, this, &OnboardingModel::unfinishedChanged);
    connect(&appState, &AppState::presetMappingsChanged, this,
            &OnboardingModel::unfinishedChanged);
    connect(&m_trayHost, &TrayHost::appeared, this, &OnboardingModel::hasTrayChanged);
}

bool OnboardingModel::canProceed() const
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

bool OnboardingModel::isHoldToTalk() const
{
    return m_appState.recordingMode() == RecordingMode::holdToTalk;
}

QString OnboardingModel::instruction() const
{
    const QString hotkey = HotkeyManager::string(m_hotkeyManager.currentKeyCode(),
                                                 m_hotkeyManager.currentModifiers());
    return (isHoldToTalk() ? tr("Press and hold %1 anywhere to dictate")
                           : tr("Press %1 anywhere to start dictating"))
        .arg(hotkey);
}

bool OnboardingModel::hasModel() const
{
    const WhisperManager &manager = m_appState.whisperManager();
    const ModelPreset preset = m_appState.selectedModel();
    return manager.isModelLoaded() || manager.isModelFilePresent(m_appState.modelId(preset))
        || manager.isModelDownloaded(DictationController::modelType(preset));
}

QString OnboardingModel::unfinished() const
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

QString OnboardingModel::microphoneProblem() const
{
    if (!m_hasAskedForMicrophone || m_appState.hasMicrophonePermission())
        return {};
    return tr("No microphone was found. Connect one, or choose it as the input in your desktop's "
              "sound settings, and press Enable again.");
}

void OnboardingModel::back()
{
    setCurrentStep(m_currentStep - 1);
}

void OnboardingModel::proceed()
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

void OnboardingModel::setCurrentStep(int step)
{
    const auto next = Step(std::clamp<int>(step, Welcome, Done));
    if (std::exchange(m_currentStep, next) == next)
        return;
    Q_EMIT currentStepChanged();
    Q_EMIT canProceedChanged();
}

void OnboardingModel::checkPermissions()
{
    m_permissionsManager.check();
}

void OnboardingModel::requestMicrophonePermission()
{
    m_hasAskedForMicrophone = true;
    m_permissionsManager.requestMicrophone();
    Q_EMIT microphoneProblemChanged();
}

void OnboardingModel::requestAccessibilityPermission()
{
    m_permissionsManager.requestAccessibility();
}

void OnboardingModel::chooseHoldToTalk(bool holdToTalk)
{
    m_appState.setRecordingMode(holdToTalk ? RecordingMode::holdToTalk : RecordingMode::toggle);
}

} // namespace Velloro
