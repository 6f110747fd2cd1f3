#pragma once

#include "Base/CustomDelete.h"
#include "Base/SerialExecutor.h"
#include "Base/StringLiterals.h"
#include "Core/Recognition/LocalAgreement.h"
#include "Core/Recognition/StreamingWindow.h"
#include "Core/Recognition/WhisperContext.h"

#include <QByteArray>
#include <QPromise>
#include <mutex>
#include <optional>
#include <type_traits>
#include <whisper.h>

namespace Velloro {

/// The inside of a `WhisperContext`: its state, and its operations as they run on the executor.
///
/// Queued jobs share it, so it outlives the context until they are done.
class WhisperContext::Executor : public std::enable_shared_from_this<Executor>
{
public:
    explicit Executor(std::shared_ptr<const ProcessInfo> processInfo);

    /// Queues `work`, called with this object on the executor; the future has what it returns.
    template <typename Work>
    auto run(Work work) -> QFuture<std::invoke_result_t<Work &, Executor &>>;
    /// Queues samples. Those that wait for the executor together are appended together.
    QFuture<void> feed(const std::vector<float> &samples);
    /// Samples that still wait are dropped when their turn comes.
    void dropWaitingSamples();

    // On the executor.
    LoadResult loadModel(const QString &path);
    void unloadModel();
    /// Frees the model without a word, for the end.
    void release();
    void setLanguage(const QString &code);
    void setCustomDictionary(const QStringList &words);
    TranscriptionResult transcribe(const std::vector<float> &samples);
    void startStreaming(TranscriptionCallback callback);
    void stopStreaming();

private:
    /// What one streamed recording has led to so far.
    struct Streaming
    {
        TranscriptionCallback transcriptionCallback;
        StreamingWindow window;
        LocalAgreement agreement;
    };

    /// Samples that came while the executor was busy, and the future of their callers.
    struct Batch
    {
        StreamingWindow audio;
        uint64_t generation = 0;
        QPromise<void> promise;
    };

    void post(std::function<void()> job);
    void drain(const std::shared_ptr<Batch> &batch);
    /// One recognition pass; nothing without a model and when the library fails.
    [[nodiscard]] std::optional<TranscriptionSegment> processCurrentBuffer(Streaming &streaming);
    void deliver(const TranscriptionSegment &segment, const std::shared_ptr<Batch> &batch);

    /// The texts of the segments, without the absent ones, as UTF-8; or the library's result code.
    [[nodiscard]] tl::expected<QByteArrayList, int>
    recognise(const std::vector<float> &samples, const QString &prompt, bool noContext);
    [[nodiscard]] bool isModelLoaded() const { return m_state != nullptr; }

    std::shared_ptr<const ProcessInfo> m_processInfo;
    const int m_threads;

    // On the executor only. The decoding state goes before the context that it belongs to.
    std::unique_ptr<whisper_context, CustomDelete<whisper_free>> m_context;
    std::unique_ptr<whisper_state, CustomDelete<whisper_free_state>> m_state;
    QString m_language = u"en"_s;
    QStringList m_customDictionary;
    /// Absent while not streaming.
    std::optional<Streaming> m_streaming;

    // The inbox, filled on one thread and emptied on the other.
    std::mutex m_inboxMutex;
    /// The batch that takes samples: queued, not begun, and nothing queued behind it.
    std::shared_ptr<Batch> m_openBatch;
    uint64_t m_generation = 0;

    SerialExecutor m_executor;
};

template <typename Work>
auto WhisperContext::Executor::run(Work work) -> QFuture<std::invoke_result_t<Work &, Executor &>>
{
    using Result = std::invoke_result_t<Work &, Executor &>;
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QFuture<Result> future = promise->future();
    post([self = shared_from_this(), promise, work = std::move(work)]() mutable {
        if constexpr (std::is_void_v<Result>)
            work(*self);
        else
            promise->addResult(work(*self));
        promise->finish();
    });
    return future;
}

} // namespace Velloro
