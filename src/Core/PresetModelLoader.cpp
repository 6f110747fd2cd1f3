#include "Core/PresetModelLoader.h"

#include "Core/DictationController.h"

#include <QPointer>

namespace Velloro {

PresetModelLoader::PresetModelLoader(AppState &appState, HotkeyManager &hotkeyManager,
                                     QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
{
    connect(&appState, &AppState::selectedModelChanged, this, &PresetModelLoader::loadPresetModel);
    connect(&appState, &AppState::presetMappingsChanged, this, &PresetModelLoader::loadPresetModel);
    connect(&appState, &AppState::transcriptionStateChanged, this, [this] {
        if (m_isWaitingForIdle)
            loadPresetModel();
    });
    // Another load may have overtaken ours.
    connect(&appState.whisperManager(), &WhisperManager::isModelLoadedChanged, this, [this] {
        if (m_wasOvertaken)
            makeUpForOvertaken();
    });
    connect(&appState.whisperManager(), &WhisperManager::modelStatesChanged, this,
            &PresetModelLoader::modelStateChanged);
    connect(&hotkeyManager, &HotkeyManager::isHotkeyPressedChanged, this,
            &PresetModelLoader::hotkeyPressedChanged);
}

void PresetModelLoader::loadPresetModel()
{
    m_isWaitingForIdle = m_appState.transcriptionState() != TranscriptionState::idle;
    if (m_isWaitingForIdle)
        return;

    WhisperManager &manager = m_appState.whisperManager();
    const QString modelId = m_appState.modelId(m_appState.selectedModel());
    if (modelId == m_loadingModelId)
        return;
    if (manager.isModelLoaded() && manager.selectedModelId() == modelId)
        return;
    if (!manager.isModelFilePresent(modelId))
        return;
    load(modelId);
}

QCoro::Task<void> PresetModelLoader::load(QString modelId)
{
    const QPointer<PresetModelLoader> alive(this);
    m_loadingModelId = modelId;
    m_wasOvertaken = false;
    const WhisperManager::LoadResult loaded
        = co_await m_appState.whisperManager().loadModel(modelId);
    if (!alive || m_loadingModelId != modelId)
        co_return;
    m_loadingModelId.clear();
    // Any other failure has been logged where it happened; the next press or choice tries again.
    m_wasOvertaken = !loaded && loaded.error() == ModelLoadError(WhisperError::modelNotLoaded);
    if (m_wasOvertaken && m_appState.whisperManager().isModelLoaded())
        makeUpForOvertaken();
}

void PresetModelLoader::makeUpForOvertaken()
{
    // A model that the user has chosen by its name stays; the controller's guess at the preset's
    // model does not.
    WhisperManager &manager = m_appState.whisperManager();
    if (manager.isModelLoaded()
        && manager.selectedModelId()
               != Velloro::modelId(DictationController::modelType(m_appState.selectedModel()))) {
        m_wasOvertaken = false;
        return;
    }
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

void PresetModelLoader::hotkeyPressedChanged()
{
    // Where the controller finds the file that it looks for, the load is its own.
    WhisperManager &manager = m_appState.whisperManager();
    if (m_hotkeyManager.isHotkeyPressed() && !manager.isModelLoaded()
        && !manager.isModelDownloaded(DictationController::modelType(m_appState.selectedModel()))) {
        loadPresetModel();
    }
}

} // namespace Velloro
