#include "Views/Tray/EnhancedModelRowViewModel.h"

#include "Core/Dictation/DictationController.h"
#include "Views/Shared/PresetPresentation.h"

namespace Velloro {

EnhancedModelRowViewModel::EnhancedModelRowViewModel(ModelPreset preset, AppState &appState,
                                                     QObject *parent)
    : ModelFileViewModel(Velloro::modelId(DictationController::modelType(preset)), appState, parent)
    , m_preset(preset)
    , m_isSelected(appState.selectedModel() == preset)
{
    connect(&appState, &AppState::selectedModelChanged, this,
            &EnhancedModelRowViewModel::updateSelection);
}

QString EnhancedModelRowViewModel::label() const
{
    return PresetPresentation::label(m_preset);
}

QString EnhancedModelRowViewModel::tint() const
{
    return PresetPresentation::tint(m_preset);
}

void EnhancedModelRowViewModel::select()
{
    appState().setSelectedModel(m_preset);
}

void EnhancedModelRowViewModel::updateSelection()
{
    const bool isSelected = appState().selectedModel() == m_preset;
    if (isSelected == m_isSelected)
        return;
    m_isSelected = isSelected;
    Q_EMIT isSelectedChanged();
}

} // namespace Velloro
