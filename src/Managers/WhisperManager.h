#pragma once

#include "Core/Recognition/TranscriptionSegment.h"
#include "Core/Recognition/WhisperContext.h"
#include "Managers/ModelDownloadState.h"
#include "Managers/WhisperError.h"
#include "Managers/WhisperModelType.h"
#include "Models/ModelCatalog.h"
#include "Platform/Platform.h"

#include <QCoroTask>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QPromise>
#include <functional>
#include <memory>

namespace Velloro {

/// The one owner of speech models on disk and in memory. Main thread only.
///
/// It keeps the models directory ("Velloro/Models" in the application-support directory), knows
/// which catalogue models are there, downloads and deletes them, and loads one at a time into a
/// `WhisperContext`. The set of present files is the only record of what is downloaded.
class WhisperManager : public QObject, private DownloadSessionDelegate
{
    Q_OBJECT
    Q_PROPERTY(QString selectedModelId READ selectedModelId NOTIFY selectedModelIdChanged)
    Q_PROPERTY(bool isModelLoaded READ isModelLoaded NOTIFY isModelLoadedChanged)

public:
    using LoadResult = tl::expected<void, ModelLoadError>;
    using ProgressHandler = std::function<void(double progress)>;

    /// `baseUrl` is where the model files lie; it ends with a "/". Another one is for tests alone.
    explicit WhisperManager(Platform &platform,
                            const QString &baseUrl = ModelCatalog::repositoryBaseUrl(),
                            QObject *parent = nullptr);
    ~WhisperManager() override;

    /// State of every catalogue model, by catalogue id.
    [[nodiscard]] const QMap<QString, ModelDownloadState> &modelStates() const
    {
        return m_modelStates;
    }
    /// The model loaded last by `loadModel`; initially the default model of the catalogue.
    [[nodiscard]] QString selectedModelId() const { return m_selectedModelId; }
    /// True while `whisperContext` holds a loaded model.
    [[nodiscard]] bool isModelLoaded() const { return m_isModelLoaded; }
    /// The model whose load is under way; empty when none is.
    [[nodiscard]] QString loadingModelId() const
    {
        return m_pendingLoad ? m_pendingLoad->modelId : QString();
    }
    /// The current context, replaced at every load; null when there is none.
    [[nodiscard]] std::shared_ptr<WhisperContext> whisperContext() const
    {
        return m_whisperContext;
    }
    /// The models directory; empty when the platform has no application-support directory.
    [[nodiscard]] QString modelsDirectory() const { return m_modelsDirectory; }

    /// Rescans the models directory.
    void refreshModelStates();
    /// The path of a model's file, for ids outside the catalogue, too.
    [[nodiscard]] QString modelURL(const QString &modelId) const;
    /// Whether the file of the model with this id is there.
    [[nodiscard]] bool isModelFilePresent(const QString &modelId) const;
    /// Whether the file of the model with the type's id is there.
    [[nodiscard]] bool isModelDownloaded(WhisperModelType type) const;
    /// Starts a download and returns at once. Nothing happens for a model that is there or on its
    /// way already.
    void downloadModel(const QString &modelId, ProgressHandler progressHandler = {});
    /// Removes the model's file; the loaded model stays loaded.
    FileSystem::Result deleteModel(const QString &modelId);
    /// Makes this model the loaded one. An unknown id and a missing file leave the loaded model as
    /// it is. While this very model is being loaded, the call waits for that and has its outcome. A
    /// load that `unloadModel` or the load of another model supersedes fails with `modelNotLoaded`,
    /// unless this model has come to be the loaded one after all.
    QCoro::Task<LoadResult> loadModel(QString modelId);
    QCoro::Task<LoadResult> loadModel(WhisperModelType type);
    /// Waits until no load is under way any more. The outcome of the last one; absent when none
    /// was.
    QCoro::Task<std::optional<LoadResult>> finishLoading();
    /// Drops the loaded model; its memory goes in the background.
    void unloadModel();
    /// Prepares the current context for streaming; does nothing without one.
    QCoro::Task<void> startStreaming(QString language, TranscriptionCallback callback);

Q_SIGNALS:
    /// Every write of a model's state, changed or not.
    void modelStatesChanged(const QString &modelId);
    void selectedModelIdChanged();
    void isModelLoadedChanged();

private:
    void downloadDidWriteData(DownloadTaskId task, int64_t totalBytesWritten,
                              int64_t totalBytesExpected) override;
    void downloadDidFinish(DownloadTaskId task, const QString &location) override;
    void downloadDidComplete(DownloadTaskId task,
                             const std::optional<PlatformError> &error) override;

    /// A load that later calls for the same model join.
    struct PendingLoad
    {
        QString modelId;
        QPromise<LoadResult> outcome;
    };

    void setModelState(const QString &modelId, ModelDownloadState state);
    /// Loads the model afresh, in the place of what is loaded or being loaded.
    QCoro::Task<LoadResult> load(const WhisperModelInfo &row);

    Platform &m_platform;
    QString m_baseUrl;
    QMap<QString, ModelDownloadState> m_modelStates;
    QString m_selectedModelId;
    bool m_isModelLoaded = false;
    /// The load that is under way.
    std::shared_ptr<PendingLoad> m_pendingLoad;
    std::shared_ptr<WhisperContext> m_whisperContext;
    QHash<QString, DownloadTaskId> m_downloadTasks;
    QString m_modelsDirectory;
    QHash<QString, ProgressHandler> m_downloadProgressHandlers;
    /// Instance tag of the log lines of construction and destruction.
    QString m_id;
    std::unique_ptr<DownloadSession> m_downloadSession;
};

} // namespace Velloro
