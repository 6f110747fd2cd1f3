#pragma once

#include "Views/Shared/ModelFileViewModel.h"
#include "Views/Shared/PresetPresentation.h"

namespace Velloro {

/// A preset in the panel: its name, whether it is the selected one, and its model's file. Main
/// thread only.
class EnhancedModelRowViewModel : public Velloro::ModelFileViewModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel's model")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString label READ label CONSTANT)
    /// The name of the theme's colour for the label.
    Q_PROPERTY(QString tint READ tint CONSTANT)
    Q_PROPERTY(bool isSelected READ isSelected NOTIFY isSelectedChanged)

public:
    /// `appState` outlives the model.
    EnhancedModelRowViewModel(ModelPreset preset, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] QString title() const { return PresetPresentation::title(m_preset); }
    [[nodiscard]] QString label() const;
    [[nodiscard]] QString tint() const;
    [[nodiscard]] bool isSelected() const { return m_isSelected; }

    /// Makes this preset the selected one.
    Q_INVOKABLE void select();

Q_SIGNALS:
    void isSelectedChanged();

private:
    void updateSelection();

    ModelPreset m_preset;
    bool m_isSelected = false;
};

} // namespace Velloro
