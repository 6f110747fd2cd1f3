#include "Managers/WhisperManager.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Core/Recognition/ModelFile.h"

#include <QCoroFuture>
#include <QPointer>
#include <QUuid>
#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

constexpr QStringView tag = u"WhisperManager";

} // namespace

WhisperManager::WhisperManager(Platform &platform, const QString &baseUrl, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_baseUrl(baseUrl)
    , m_selectedModelId(ModelCatalog::defaultModel().id)
    , m_id(QUuid::createUuid().toString(QUuid::WithoutBraces).left(8).toUpper())
{
    Log::line(u"WhisperManager-"_s + m_id, u"init"_s);
    if (const auto supportDirectory = m_platform.fileSystem->applicationSupportDirectory()) {
        m_modelsDirectory = *supportDirectory + u"/Velloro/Models"_s;
        m_downloadSession = m_platform.makeDownloadSession(*this, m_modelsDirectory);
        // A failure shows when something is saved there.
        (void)m_platform.fileSystem->createDirectory(m_modelsDirectory);
    } else {
        Log::line(tag,
                  u"No application-support directory: models can be neither "
                  "downloaded nor loaded"_s);
    }
    refreshModelStates();
}

WhisperManager::~WhisperManager()
{
    Log::line(u"WhisperManager-"_s + m_id, u"deinit"_s);
}

void WhisperManager::refreshModelStates()
{
    for (const WhisperModelInfo &row : ModelCatalog::allModels()) {
        if (isModelFilePresent(row.id))
            setModelState(row.id, ModelDownloadState::downloaded());
        else if (!m_downloadTasks.contains(row.id))
            setModelState(row.id, ModelDownloadState::notDownloaded());
    }
}

QString WhisperManager::modelURL(const QString &modelId) const
{
    if (m_modelsDirectory.isEmpty())
        return {};
    const WhisperModelInfo *row = ModelCatalog::modelById(modelId);
    return m_modelsDirectory + u'/' + (row ? row->fileName : u"ggml-"_s + modelId + u".bin"_s);
}

bool WhisperManager::isModelDownloaded(WhisperModelType type) const
{
    return isModelFilePresent(Velloro::modelId(type));
}

void WhisperManager::downloadModel(const QString &modelId, ProgressHandler progressHandler)
{
    if (m_modelStates.value(modelId).isDownloaded() || m_downloadTasks.contains(modelId))
        return;
    const WhisperModelInfo *row = ModelCatalog::modelById(modelId);
    if (!row) {
        Log::line(tag, u"Unknown model ID: "_s + modelId);
        return;
    }
    if (!m_downloadSession) {
        setModelState(modelId,
                      ModelDownloadState::failed(u"There is no folder to keep models in."_s));
        return;
    }

    setModelState(modelId, ModelDownloadState::downloading(0.0));
    if (progressHandler)
        m_downloadProgressHandlers.insert(modelId, std::move(progressHandler));
    else
        m_downloadProgressHandlers.remove(modelId);
    const DownloadTaskId task = m_downloadSession->downloadTask(row->downloadURL(m_baseUrl));
    m_downloadTasks.insert(modelId, task);
    m_downloadSession->resume(task);
    Log::line(tag, u"Started downloading "_s + row->displayName);
}

FileSystem::Result WhisperManager::deleteModel(const QString &modelId)
{
    if (isModelFilePresent(modelId)) {
        if (const auto removed = m_platform.fileSystem->removeItem(modelURL(modelId)); !removed)
            return removed;
    }
    setModelState(modelId, ModelDownloadState::notDownloaded());
    Log::line(tag, u"Deleted model: "_s + modelId);
    return {};
}

QCoro::Task<WhisperManager::LoadResult> WhisperManager::loadModel(QString modelId)
{
    Log::line(tag, u"loadModel requested for "_s + modelId);
    const WhisperModelInfo *row = ModelCatalog::modelById(modelId);
    if (!row || !isModelFilePresent(modelId))
        co_return tl::unexpected<ModelLoadError>(WhisperError::modelNotFound);

    const QPointer<WhisperManager> self = this;
    LoadResult result;
    if (!m_pendingLoad || m_pendingLoad->modelId != modelId) {
        const auto pending = std::make_shared<PendingLoad>();
        pending->modelId = modelId;
        pending->outcome.start();
        unloadModel();
        m_pendingLoad = pending;
        result = co_await load(*row);
        if (self && m_pendingLoad == pending)
            m_pendingLoad.reset();
        pending->outcome.addResult(result);
        pending->outcome.finish();
    } else {
        result = co_await m_pendingLoad->outcome.future();
    }
    if (result || result.error() != ModelLoadError(WhisperError::modelNotLoaded) || !self)
        co_return result;
    // Superseded; the latest load may be one of this model again.
    if (m_pendingLoad && m_pendingLoad->modelId == modelId)
        co_return co_await m_pendingLoad->outcome.future();
    if (m_isModelLoaded && m_selectedModelId == modelId)
        co_return LoadResult{};
    co_return result;
}

QCoro::Task<WhisperManager::LoadResult> WhisperManager::load(const WhisperModelInfo &row)
{
    const auto context = std::make_shared<WhisperContext>(m_platform.processInfo);
    m_whisperContext = context;
    const QPointer<WhisperManager> self = this;
    const WhisperContext::LoadResult loaded = co_await context->loadModel(modelURL(row.id));
    if (!loaded)
        co_return tl::unexpected<ModelLoadError>(loaded.error());
    // Another load or an unload may have come between: what is loaded now is theirs to say.
    if (!self || m_whisperContext != context)
        co_return tl::unexpected<ModelLoadError>(WhisperError::modelNotLoaded);

    const bool selectionChanged = std::exchange(m_selectedModelId, row.id) != row.id;
    const bool loadedChanged = !std::exchange(m_isModelLoaded, true);
    m_pendingLoad.reset();
    Log::line(tag, u"Loaded model: "_s + row.displayName);
    if (selectionChanged)
        Q_EMIT selectedModelIdChanged();
    if (self && loadedChanged)
        Q_EMIT isModelLoadedChanged();
    co_return LoadResult{};
}

QCoro::Task<WhisperManager::LoadResult> WhisperManager::loadModel(WhisperModelType type)
{
    return loadModel(Velloro::modelId(type));
}

QCoro::Task<std::optional<WhisperManager::LoadResult>> WhisperManager::finishLoading()
{
    const QPointer<WhisperManager> self = this;
    std::optional<LoadResult> outcome;
    // One that takes the place of another is waited for in its turn.
    while (self && m_pendingLoad) {
        const std::shared_ptr<PendingLoad> pending = m_pendingLoad;
        outcome = co_await pending->outcome.future();
    }
    co_return outcome;
}

void WhisperManager::unloadModel()
{
    const auto context = std::exchange(m_whisperContext, nullptr);
    Log::line(tag, u"unloadModel called. Context exists: "_s + (context ? u"true"_s : u"false"_s));
    const bool wasLoaded = std::exchange(m_isModelLoaded, false);
    m_pendingLoad.reset();
    // Nobody waits for it: the work outlives the context that it was given to.
    if (context)
        context->unloadModel();
    if (wasLoaded)
        Q_EMIT isModelLoadedChanged();
}

QCoro::Task<void> WhisperManager::startStreaming(QString language, TranscriptionCallback callback)
{
    const QPointer<WhisperManager> self = this;
    // Kept here, too: the manager may drop it while this waits.
    std::shared_ptr<WhisperContext> context = m_whisperContext;
    if (!context)
        co_return;
    co_await context->setLanguage(language);
    if (!self)
        co_return;
    context = m_whisperContext;
    if (context)
        co_await context->startStreaming(std::move(callback));
}

void WhisperManager::downloadDidWriteData(DownloadTaskId task, int64_t totalBytesWritten,
                                          int64_t totalBytesExpected)
{
    const QString modelId = m_downloadTasks.key(task);
    if (modelId.isEmpty() || totalBytesExpected <= 0)
        return;
    const double progress = std::clamp(
        static_cast<double>(totalBytesWritten) / static_cast<double>(totalBytesExpected), 0.0, 1.0);
    const int percent = static_cast<int>(progress * 100);
    if (percent % 10 == 0)
        Log::line(tag, u"Downloading %1: %2%"_s.arg(modelId).arg(percent));
    // The handler may start or end downloads: called by a copy.
    const ProgressHandler handler = m_downloadProgressHandlers.value(modelId);
    setModelState(modelId, ModelDownloadState::downloading(progress));
    if (handler)
        handler(progress);
}

void WhisperManager::downloadDidFinish(DownloadTaskId task, const QString &location)
{
    const QString modelId = m_downloadTasks.key(task);
    const WhisperModelInfo *row = ModelCatalog::modelById(modelId);
    if (!row)
        return;
    // A server that does not tell the length can break off unnoticed.
    const bool isForeign = ModelFile::isForeign(location);
    if (isForeign || ModelFile::isDamaged(location)) {
        downloadDidComplete(task,
                            PlatformError{0,
                                          isForeign ? u"The server sent something that is "
                                                      "not a speech model"_s
                                                    : u"The download is incomplete"_s});
        return;
    }

    FileSystem &files = *m_platform.fileSystem;
    const QString destination = m_modelsDirectory + u'/' + row->fileName;
    FileSystem::Result saved;
    if (files.fileExists(destination))
        saved = files.removeItem(destination);
    if (saved)
        saved = files.moveItem(location, destination);

    // The entries go first, so that whoever hears of a failure may start afresh at once.
    m_downloadTasks.remove(modelId);
    m_downloadProgressHandlers.remove(modelId);
    if (saved) {
        Log::line(tag, u"Successfully saved "_s + row->displayName);
        setModelState(modelId, ModelDownloadState::downloaded());
    } else {
        Log::line(tag, u"Failed to save model: "_s + saved.error().description());
        setModelState(modelId, ModelDownloadState::failed(saved.error().localizedDescription));
    }
}

void WhisperManager::downloadDidComplete(DownloadTaskId task,
                                         const std::optional<PlatformError> &error)
{
    const QString modelId = m_downloadTasks.key(task);
    if (modelId.isEmpty())
        return;
    m_downloadTasks.remove(modelId);
    m_downloadProgressHandlers.remove(modelId);
    if (error) {
        Log::line(tag, u"Download failed: "_s + error->description());
        setModelState(modelId, ModelDownloadState::failed(error->localizedDescription));
    }
}

bool WhisperManager::isModelFilePresent(const QString &modelId) const
{
    const QString path = modelURL(modelId);
    return !path.isEmpty() && m_platform.fileSystem->fileExists(path);
}

void WhisperManager::setModelState(const QString &modelId, ModelDownloadState state)
{
    m_modelStates.insert(modelId, std::move(state));
    Q_EMIT modelStatesChanged(modelId);
}

} // namespace Velloro
