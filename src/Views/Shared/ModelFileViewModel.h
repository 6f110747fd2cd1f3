#pragma once

#include "Core/State/AppState.h"
#include "Views/Shared/DownloadEstimate.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// The file of one catalogue model: whether it is there or on its way, and what can be done with
/// it. Main thread only.
///
/// Types that are derived from it name it in full: otherwise Qt 6.4 does not tell QML's tools of
/// it.
class ModelFileViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("What the rows of models have in common")
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    /// 0 to 1 while it downloads.
    Q_PROPERTY(double progress READ progress NOTIFY stateChanged)
    Q_PROPERTY(QString percentText READ percentText NOTIFY stateChanged)
    /// Speed and time left of a download, the reason of a failure; else empty.
    Q_PROPERTY(QString detail READ detail NOTIFY stateChanged)

public:
    /// In the order of `ModelDownloadState`'s cases.
    enum State { NotDownloaded, Downloading, Downloaded, Failed };
    Q_ENUM(State)

    /// `modelId` is in the catalogue; `appState` outlives the model.
    ModelFileViewModel(const QString &modelId, AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] State state() const { return State(m_state.value.index()); }
    [[nodiscard]] double progress() const;
    [[nodiscard]] QString percentText() const;
    [[nodiscard]] QString detail() const;

    Q_INVOKABLE void download();
    /// Deletes the file; that it can't be is ignored.
    Q_INVOKABLE void deleteModel();

Q_SIGNALS:
    void stateChanged();

protected:
    [[nodiscard]] const QString &modelId() const { return m_modelId; }
    [[nodiscard]] AppState &appState() const { return m_appState; }

private:
    [[nodiscard]] ModelDownloadState current() const;
    void updateState(const QString &modelId);

    QString m_modelId;
    AppState &m_appState;
    ModelDownloadState m_state;
    DownloadEstimate m_estimate;
};

} // namespace Velloro
