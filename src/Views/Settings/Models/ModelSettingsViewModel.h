#pragma once

#include "Core/State/AppState.h"
#include "Models/WhisperModelInfo.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace Velloro {

class ModelGroupViewModel;

/// The models pane: the presets, and the catalogue by category and size. Main thread only.
class ModelSettingsViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the settings window")
    /// One `PresetConfigRowViewModel` per preset.
    Q_PROPERTY(QList<QObject *> presets READ presets CONSTANT)
    Q_PROPERTY(QStringList categories READ categories CONSTANT)
    Q_PROPERTY(int categoryIndex READ categoryIndex NOTIFY categoryChanged)
    Q_PROPERTY(QString categoryDescription READ categoryDescription NOTIFY categoryChanged)
    /// One `ModelGroupViewModel` per size; at most one is open.
    Q_PROPERTY(QList<QObject *> groups READ groups CONSTANT)
    /// Where the files lie.
    Q_PROPERTY(QString modelsDirectory READ modelsDirectory CONSTANT)

public:
    /// `appState` outlives the model.
    explicit ModelSettingsViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] const QList<QObject *> &presets() const { return m_presets; }
    [[nodiscard]] QStringList categories() const;
    [[nodiscard]] int categoryIndex() const;
    [[nodiscard]] QString categoryDescription() const
    {
        return enumCase(m_selectedCategory).remark.toString();
    }
    [[nodiscard]] QList<QObject *> groups() const;
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
    void setSelectedCategory(ModelCategory category);
    void setExpandedSize(std::optional<ModelSize> size);

    AppState &m_appState;
    ModelCategory m_selectedCategory = ModelCategory::quantized;
    std::optional<ModelSize> m_expandedSize;
    QList<QObject *> m_presets;
    QList<ModelGroupViewModel *> m_groups;
};

} // namespace Velloro
