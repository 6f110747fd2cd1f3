#include "Views/Settings/Models/CatalogModelRowViewModel.h"

#include <utility>

namespace Velloro {

CatalogModelRowViewModel::CatalogModelRowViewModel(const WhisperModelInfo &info, AppState &appState,
                                                   QObject *parent)
    : ModelFileViewModel(info.id, appState, parent)
    , m_info(info)
    , m_isSelected(appState.whisperManager().selectedModelId() == info.id)
{
    connect(&appState.whisperManager(), &WhisperManager::selectedModelIdChanged, this,
            &CatalogModelRowViewModel::updateSelection);
}

void CatalogModelRowViewModel::select()
{
    // The task continues by itself; a failure has been logged where it happened.
    (void)appState().whisperManager().loadModel(modelId());
}

void CatalogModelRowViewModel::updateSelection()
{
    const bool isSelected = appState().whisperManager().selectedModelId() == modelId();
    if (std::exchange(m_isSelected, isSelected) != isSelected)
        Q_EMIT isSelectedChanged();
}

} // namespace Velloro
