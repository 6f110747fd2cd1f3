#include "Views/EnhancedModelRowModel.h"

#include "Core/DictationController.h"
#include "Views/PresetPresentation.h"

namespace Velloro {

EnhancedModelRowModel::EnhancedModelRowModel(ModelPreset preset, AppState &appState,
                                             QObject *parent)
    : ModelFileModel(Velloro::modelId(DictationController::modelType(preset)), appState, parent)
    , m_preset(preset)
    , m_isSelected(appState.selectedModel() == preset)
{
    connect(&appState, &AppState::selectedModelChanged, this,
            &EnhancedModelRowModel::updateSelection);
}

QString EnhancedModelRowModel::label() const
{
    return PresetPresentation::label(m_preset);
}

QString EnhancedModelRowModel::tint() const
{
    return PresetPresentation::tint(m_preset);
}

void EnhancedModelRowModel::select()
{
    appState().setSelectedModel(m_preset);
}

void EnhancedModelRowModel::updateSelection()
{
    const bool isSelected = appState().selectedModel() == m_preset;
    if (isSelected == m_isSelected)
        return;
    m_isSelected = isSelected;
    Q_EMIT isSelectedChanged();
}

} // namespace Velloro
