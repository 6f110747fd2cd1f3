#pragma once

#include "Core/State/AppState.h"
#include "Views/Shared/PresetPresentation.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// A preset, the model that is assigned to it, and the models that can be. Main thread only.
class PresetConfigRowViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the models pane's model")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString label READ label CONSTANT)
    Q_PROPERTY(QString symbol READ symbol CONSTANT)
    /// The assigned model's name.
    Q_PROPERTY(QString menuLabel READ menuLabel NOTIFY mappingChanged)
    /// The names of the models that are there, in catalogue order.
    Q_PROPERTY(QList<QString> downloadedModels READ downloadedModels NOTIFY modelsChanged)
    /// Which of these is the assigned one; -1 when none of them is.
    Q_PROPERTY(int assignedIndex READ assignedIndex NOTIFY mappingChanged)
    /// The names and sizes of all others, in catalogue order.
    Q_PROPERTY(QList<QString> notDownloadedModels READ notDownloadedModels NOTIFY modelsChanged)

public:
    /// `appState` outlives the model.
    PresetConfigRowViewModel(ModelPreset preset, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] QString title() const { return PresetPresentation::title(m_preset); }
    [[nodiscard]] QString label() const;
    [[nodiscard]] QString symbol() const;
    [[nodiscard]] QString menuLabel() const;
    [[nodiscard]] QStringList downloadedModels() const;
    [[nodiscard]] int assignedIndex() const;
    [[nodiscard]] QStringList notDownloadedModels() const;

    /// Assigns the model at `index` among the downloaded ones.
    Q_INVOKABLE void assign(int index);

Q_SIGNALS:
    void mappingChanged();
    void modelsChanged();

private:
    [[nodiscard]] QStringList downloadedIds() const;
    void updateMapping();
    void updateModels();

    ModelPreset m_preset;
    AppState &m_appState;
    QString m_modelId;
    QStringList m_downloadedIds;
};

} // namespace Velloro
