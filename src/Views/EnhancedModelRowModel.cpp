#include "Views/EnhancedModelRowModel.h"

#include "Core/DictationController.h"
#include "Models/ModelCatalog.h"

namespace Velloro {

EnhancedModelRowModel::EnhancedModelRowModel(ModelPreset preset, AppState &appState,
                                             QObject *parent)
    : QObject(parent)
    , m_preset(preset)
    , m_appState(appState)
    , m_modelId(modelId(DictationController::modelType(preset)))
    , m_estimate(ModelCatalog::modelById(m_modelId)->fileSizeMB)
{
    m_isSelected = appState.selectedModel() == preset;
    m_state = current();
    connect(&appState, &AppState::selectedModelChanged, this,
            &EnhancedModelRowModel::updateSelection);
    connect(&appState.whisperManager(), &WhisperManager::modelStatesChanged, this,
            &EnhancedModelRowModel::updateState);
}

QString EnhancedModelRowModel::label() const
{
    switch (m_preset) {
    case ModelPreset::small:
        return tr("Fast");
    case ModelPreset::medium:
        return tr("Balanced");
    case ModelPreset::large:
        return tr("Accurate");
    }
    Q_UNREACHABLE();
}

QString EnhancedModelRowModel::tint() const
{
    switch (m_preset) {
    case ModelPreset::small:
        return QStringLiteral("green");
    case ModelPreset::medium:
        return QStringLiteral("orange");
    case ModelPreset::large:
        return QStringLiteral("purple");
    }
    Q_UNREACHABLE();
}

QString EnhancedModelRowModel::state() const
{
    if (std::holds_alternative<ModelDownloadState::Downloading>(m_state.value))
        return QStringLiteral("downloading");
    if (std::holds_alternative<ModelDownloadState::Failed>(m_state.value))
        return QStringLiteral("failed");
    return m_state.isDownloaded() ? QStringLiteral("downloaded") : QStringLiteral("notDownloaded");
}

double EnhancedModelRowModel::progress() const
{
    const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&m_state.value);
    return downloading ? downloading->progress : 0;
}

QString EnhancedModelRowModel::percentText() const
{
    return QStringLiteral("%1%").arg(int(progress() * 100));
}

QString EnhancedModelRowModel::detail() const
{
    if (const auto *failed = std::get_if<ModelDownloadState::Failed>(&m_state.value))
        return failed->error;
    return std::holds_alternative<ModelDownloadState::Downloading>(m_state.value)
        ? m_estimate.text()
        : QString();
}

void EnhancedModelRowModel::select()
{
    m_appState.setSelectedModel(m_preset);
}

void EnhancedModelRowModel::download()
{
    m_appState.whisperManager().downloadModel(m_modelId);
}

void EnhancedModelRowModel::deleteModel()
{
    (void)m_appState.whisperManager().deleteModel(m_modelId);
}

ModelDownloadState EnhancedModelRowModel::current() const
{
    return m_appState.whisperManager().modelStates().value(m_modelId,
                                                           ModelDownloadState::notDownloaded());
}

void EnhancedModelRowModel::updateSelection()
{
    const bool isSelected = m_appState.selectedModel() == m_preset;
    if (isSelected == m_isSelected)
        return;
    m_isSelected = isSelected;
    Q_EMIT isSelectedChanged();
}

void EnhancedModelRowModel::updateState(const QString &modelId)
{
    if (modelId != m_modelId)
        return;
    const ModelDownloadState state = current();
    if (const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&state.value))
        m_estimate.update(downloading->progress);
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

} // namespace Velloro
