#pragma once

#include "Core/State/AppState.h"

#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Behind the first-run flow's download of the medium preset's model. It outlives the step and the
/// window, so that a download is still watched. Main thread only.
class ModelDownloadStepViewModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the onboarding window's controller")
    /// Whether the model is there.
    Q_PROPERTY(bool isReady READ isReady NOTIFY isReadyChanged)
    Q_PROPERTY(QString percentText READ percentText NOTIFY progressChanged)
    /// What is to be downloaded, and how much of it.
    Q_PROPERTY(QString explanation READ explanation NOTIFY explanationChanged)
    /// Why the last attempt failed; else empty.
    Q_PROPERTY(QString failure READ failure NOTIFY failureChanged)
    /// What the user can do about a failure; else empty.
    Q_PROPERTY(QString advice READ advice NOTIFY failureChanged)

public:
    /// `appState` outlives the model.
    explicit ModelDownloadStepViewModel(AppState &appState, QObject *parent = nullptr);

    [[nodiscard]] bool isReady() const;
    [[nodiscard]] QString percentText() const;
    [[nodiscard]] QString explanation() const;
    [[nodiscard]] const QString &failure() const { return m_failure; }
    [[nodiscard]] QString advice() const;

    /// The step is shown: starts the download 0.5 s later, unless the model is there.
    Q_INVOKABLE void shown();
    /// Starts the download, unless the file has come into the models folder by then; does nothing
    /// while it runs.
    Q_INVOKABLE void startDownload();

Q_SIGNALS:
    void isReadyChanged();
    void progressChanged();
    void explanationChanged();
    void failureChanged();

private:
    void watch();
    void setFailure(const QString &failure);

    AppState &m_appState;
    QTimer m_watcher;
    QString m_modelId;
    QString m_failure;
};

} // namespace Velloro
