#pragma once

#include "Core/State/AppState.h"
#include "Views/Settings/Models/ModelGroupViewModel.h"
#include "Views/Settings/Models/PresetConfigRowViewModel.h"

#include <QList>
#include <QObject>
#include <QQmlListProperty>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace Velloro {

/// The models pane: the presets, and the catalogue by category and size. Main thread only.
class ModelSettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    /// One per preset.
    Q_PROPERTY(QQmlListProperty<Velloro::PresetConfigRowViewModel> presets READ presetList CONSTANT)
    Q_PROPERTY(QList<QString> categories READ categories CONSTANT)
    Q_PROPERTY(int categoryIndex READ categoryIndex NOTIFY categoryChanged)
    Q_PROPERTY(QString categoryDescription READ categoryDescription NOTIFY categoryChanged)
    /// One per size; at most one is open.
    Q_PROPERTY(QQmlListProperty<Velloro::ModelGroupViewModel> groups READ groupList CONSTANT)
    /// Where the files lie.
    Q_PROPERTY(QString modelsDirectory READ modelsDirectory CONSTANT)

public:
    /// `appState` outlives the model.
    explicit ModelSettingsViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] const QList<PresetConfigRowViewModel *> &presets() const { return m_presets; }
    [[nodiscard]] QStringList categories() const;
    [[nodiscard]] int categoryIndex() const;
    [[nodiscard]] QString categoryDescription() const
    {
        return enumCase(m_selectedCategory).remark.toString();
    }
    [[nodiscard]] const QList<ModelGroupViewModel *> &groups() const { return m_groups; }
    [[nodiscard]] QString modelsDirectory() const;

    /// Shows the category at this index.
    Q_INVOKABLE void selectCategory(int index);
    /// Opens the group at this index and closes the one that was open, or closes it.
    Q_INVOKABLE void toggleGroup(int index);
    /// Takes category and open group back to what they are when the pane is first shown.
    Q_INVOKABLE void reset();

Q_SIGNALS:
    void categoryChanged();

private:
    [[nodiscard]] QQmlListProperty<PresetConfigRowViewModel> presetList()
    {
        return {this, &m_presets};
    }
    [[nodiscard]] QQmlListProperty<ModelGroupViewModel> groupList() { return {this, &m_groups}; }
    void setSelectedCategory(ModelCategory category);
    void setExpandedSize(std::optional<ModelSize> size);

    AppState &m_appState;
    ModelCategory m_selectedCategory = ModelCategory::quantized;
    std::optional<ModelSize> m_expandedSize;
    QList<PresetConfigRowViewModel *> m_presets;
    QList<ModelGroupViewModel *> m_groups;
};

} // namespace Velloro
