#include "Views/Settings/Models/PresetConfigRowViewModel.h"

#include "Base/StringLiterals.h"
#include "Models/ModelCatalog.h"
#include "Views/Shared/PresetPresentation.h"

#include <utility>

namespace Velloro {

PresetConfigRowViewModel::PresetConfigRowViewModel(ModelPreset preset, AppState &appState,
                                                   QObject *parent)
    : QObject(parent)
    , m_preset(preset)
    , m_appState(appState)
    , m_modelId(appState.modelId(preset))
    , m_downloadedIds(downloadedIds())
{
    connect(&appState, &AppState::presetMappingsChanged, this,
            &PresetConfigRowViewModel::updateMapping);
    connect(&appState.whisperManager(), &WhisperManager::modelStatesChanged, this,
            &PresetConfigRowViewModel::updateModels);
}

QString PresetConfigRowViewModel::label() const
{
    return PresetPresentation::label(m_preset);
}

QString PresetConfigRowViewModel::symbol() const
{
    return PresetPresentation::symbol(m_preset);
}

QString PresetConfigRowViewModel::menuLabel() const
{
    const WhisperModelInfo *info = ModelCatalog::modelById(m_modelId);
    return info ? info->displayName : tr("Select");
}

QStringList PresetConfigRowViewModel::downloadedModels() const
{
    QStringList names;
    for (const QString &id : m_downloadedIds)
        names << ModelCatalog::modelById(id)->displayName;
    return names;
}

int PresetConfigRowViewModel::assignedIndex() const
{
    return int(m_downloadedIds.indexOf(m_modelId));
}

QStringList PresetConfigRowViewModel::notDownloadedModels() const
{
    QStringList texts;
    for (const WhisperModelInfo &info : ModelCatalog::allModels()) {
        if (!m_downloadedIds.contains(info.id))
            texts << u"%1 • %2"_s.arg(info.displayName, info.fileSizeFormatted());
    }
    return texts;
}

void PresetConfigRowViewModel::assign(int index)
{
    if (index >= 0 && index < m_downloadedIds.size())
        m_appState.setModelId(m_downloadedIds[index], m_preset);
}

QStringList PresetConfigRowViewModel::downloadedIds() const
{
    const auto &states = m_appState.whisperManager().modelStates();
    QStringList ids;
    for (const WhisperModelInfo &info : ModelCatalog::allModels()) {
        if (states.value(info.id).isDownloaded())
            ids << info.id;
    }
    return ids;
}

void PresetConfigRowViewModel::updateMapping()
{
    const QString modelId = m_appState.modelId(m_preset);
    if (std::exchange(m_modelId, modelId) != modelId)
        Q_EMIT mappingChanged();
}

void PresetConfigRowViewModel::updateModels()
{
    const QStringList ids = downloadedIds();
    const int assignedBefore = assignedIndex();
    if (std::exchange(m_downloadedIds, ids) == ids)
        return;
    Q_EMIT modelsChanged();
    if (assignedIndex() != assignedBefore)
        Q_EMIT mappingChanged();
}

} // namespace Velloro
