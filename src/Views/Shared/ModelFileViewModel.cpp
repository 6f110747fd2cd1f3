#include "Views/Shared/ModelFileViewModel.h"

#include "Models/ModelCatalog.h"
#include "Views/Shared/StatusText.h"

namespace Velloro {

ModelFileViewModel::ModelFileViewModel(const QString &modelId, AppState &appState, QObject *parent)
    : QObject(parent)
    , m_modelId(modelId)
    , m_appState(appState)
    , m_state(current())
    , m_estimate(ModelCatalog::modelById(m_modelId)->fileSizeMB)
{
    connect(&appState.whisperManager(), &WhisperManager::modelStatesChanged, this,
            &ModelFileViewModel::updateState);
}

double ModelFileViewModel::progress() const
{
    const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&m_state.value);
    return downloading ? downloading->progress : 0;
}

QString ModelFileViewModel::percentText() const
{
    return Velloro::percentText(progress());
}

QString ModelFileViewModel::detail() const
{
    if (const auto *failed = std::get_if<ModelDownloadState::Failed>(&m_state.value))
        return failed->error;
    return std::holds_alternative<ModelDownloadState::Downloading>(m_state.value)
        ? m_estimate.text()
        : QString();
}

void ModelFileViewModel::download()
{
    m_appState.whisperManager().downloadModel(m_modelId);
}

void ModelFileViewModel::deleteModel()
{
    (void)m_appState.whisperManager().deleteModel(m_modelId);
}

ModelDownloadState ModelFileViewModel::current() const
{
    return m_appState.whisperManager().modelStates().value(m_modelId,
                                                           ModelDownloadState::notDownloaded());
}

void ModelFileViewModel::updateState(const QString &modelId)
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
