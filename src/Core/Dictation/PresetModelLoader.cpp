#include "Core/Dictation/PresetModelLoader.h"

namespace Velloro {

PresetModelLoader::PresetModelLoader(AppState &appState, DictationController &controller,
                                     QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_controller(controller)
{
    connect(&appState, &AppState::selectedModelChanged, this, &PresetModelLoader::loadPresetModel);
    connect(&appState, &AppState::presetMappingsChanged, this, &PresetModelLoader::loadPresetModel);
    connect(&appState.whisperManager(), &WhisperManager::modelStatesChanged, this,
            &PresetModelLoader::modelStateChanged);
    connect(&controller, &DictationController::becameIdle, this,
            &PresetModelLoader::controllerBecameIdle);
}

void PresetModelLoader::loadAtLaunch()
{
    loadPresetModel();
    if (!hasModel())
        m_controller.loadSelectedModelIfNeeded();
}

bool PresetModelLoader::hasModel() const
{
    const WhisperManager &manager = m_appState.whisperManager();
    return manager.isModelLoaded() || !manager.loadingModelId().isEmpty();
}

void PresetModelLoader::loadPresetModel()
{
    m_isWaitingForIdle = m_controller.isBusy();
    if (m_isWaitingForIdle)
        return;

    WhisperManager &manager = m_appState.whisperManager();
    const QString modelId = m_appState.modelId(m_appState.selectedModel());
    if (modelId == manager.loadingModelId())
        return;
    if (manager.isModelLoaded() && manager.selectedModelId() == modelId)
        return;
    // A failure has been logged where it happened; the next press or choice tries again.
    if (manager.isModelFilePresent(modelId))
        manager.loadModel(modelId);
}

void PresetModelLoader::controllerBecameIdle()
{
    // A press tries the file of the preset's type by itself.
    const ModelPreset preset = m_appState.selectedModel();
    const bool isMissed = !hasModel()
        && m_appState.modelId(preset) != modelId(DictationController::modelType(preset));
    if (m_isWaitingForIdle || isMissed)
        loadPresetModel();
}

void PresetModelLoader::modelStateChanged(const QString &modelId)
{
    const ModelDownloadState state = m_appState.whisperManager().modelStates().value(modelId);
    if (std::holds_alternative<ModelDownloadState::Downloading>(state.value)) {
        m_downloading.insert(modelId);
        return;
    }
    const bool hasJustArrived = m_downloading.remove(modelId) && state.isDownloaded();
    if (hasJustArrived && modelId == m_appState.modelId(m_appState.selectedModel()))
        loadPresetModel();
}

} // namespace Velloro
