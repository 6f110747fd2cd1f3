#include "Views/CatalogModelRowModel.h"

#include <utility>

namespace Velloro {

CatalogModelRowModel::CatalogModelRowModel(const WhisperModelInfo &info, AppState &appState,
                                           QObject *parent)
    : ModelFileModel(info.id, appState, parent)
    , m_info(info)
    , m_isSelected(appState.whisperManager().selectedModelId() == info.id)
{
    connect(&appState.whisperManager(), &WhisperManager::selectedModelIdChanged, this,
            &CatalogModelRowModel::updateSelection);
}

void CatalogModelRowModel::select()
{
    // The task goes on by itself; a failure has been logged where it happened.
    (void)appState().whisperManager().loadModel(modelId());
}

void CatalogModelRowModel::updateSelection()
{
    const bool isSelected = appState().whisperManager().selectedModelId() == modelId();
    if (std::exchange(m_isSelected, isSelected) != isSelected)
        Q_EMIT isSelectedChanged();
}

} // namespace Velloro
