#pragma once

#include "Core/AppState.h"
#include "Views/DownloadEstimate.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// A preset in the panel: its name, whether it is the selected one, and its model's file. Main
/// thread only.
class EnhancedModelRowModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the panel's model")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString label READ label CONSTANT)
    /// The name of the theme's colour for the label.
    Q_PROPERTY(QString tint READ tint CONSTANT)
    Q_PROPERTY(bool isSelected READ isSelected NOTIFY isSelectedChanged)
    /// "notDownloaded", "downloading", "downloaded" or "failed".
    Q_PROPERTY(QString state READ state NOTIFY stateChanged)
    /// 0 to 1 while it downloads.
    Q_PROPERTY(double progress READ progress NOTIFY stateChanged)
    Q_PROPERTY(QString percentText READ percentText NOTIFY stateChanged)
    /// Speed and time left of a download, the reason of a failure; else empty.
    Q_PROPERTY(QString detail READ detail NOTIFY stateChanged)

public:
    /// `appState` outlives the model.
    EnhancedModelRowModel(ModelPreset preset, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] QString title() const { return rawValue(m_preset); }
    [[nodiscard]] QString label() const;
    [[nodiscard]] QString tint() const;
    [[nodiscard]] bool isSelected() const { return m_isSelected; }
    [[nodiscard]] QString state() const;
    [[nodiscard]] double progress() const;
    [[nodiscard]] QString percentText() const;
    [[nodiscard]] QString detail() const;

    /// Makes this preset the selected one.
    Q_INVOKABLE void select();
    Q_INVOKABLE void download();
    /// Deletes the model's file; that it can't be is ignored.
    Q_INVOKABLE void deleteModel();

Q_SIGNALS:
    void isSelectedChanged();
    void stateChanged();

private:
    [[nodiscard]] ModelDownloadState current() const;
    void updateSelection();
    void updateState(const QString &modelId);

    ModelPreset m_preset;
    AppState &m_appState;
    QString m_modelId;
    bool m_isSelected = false;
    ModelDownloadState m_state;
    DownloadEstimate m_estimate;
};

} // namespace Velloro
