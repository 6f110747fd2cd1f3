#pragma once

#include "Core/Recognition/TranscriptionSegment.h"
#include "Core/Recognition/WhisperContextError.h"
#include "Platform/ProcessInfo.h"

#include <QFuture>
#include <QString>
#include <QStringList>
#include <memory>
#include <span>
#include <tl/expected.hpp>
#include <vector>

namespace Velloro {

/// One loaded speech model and every transcription on it.
///
/// The operations run one at a time, in the order in which they were called, on the context's own
/// executor (one thread); each returns a future that its caller awaits. They are called
/// on the main thread. Audio is mono 32-bit float at 16,000 Hz. The model is freed on unload, on a
/// reload, and at destruction, which does not wait for work that is still queued or running.
class WhisperContext
{
public:
    using LoadResult = tl::expected<void, WhisperContextError>;
    using TranscriptionResult = tl::expected<QString, WhisperContextError>;

    /// Silences whisper.cpp's own log for the whole process. `processInfo` is kept until the work
    /// that the context has begun is done.
    explicit WhisperContext(std::shared_ptr<const ProcessInfo> processInfo);
    ~WhisperContext();
    WhisperContext(const WhisperContext &) = delete;
    WhisperContext &operator=(const WhisperContext &) = delete;

    /// Loads the model file at `path`. `modelNotFound` leaves the loaded model as it is;
    /// `modelLoadFailed` leaves none.
    QFuture<LoadResult> loadModel(const QString &path);
    /// Frees the model; harmless when none is loaded.
    QFuture<void> unloadModel();
    /// The language code of every later pass, or "auto".
    QFuture<void> setLanguage(const QString &code);
    /// The words that later passes are biased to.
    QFuture<void> setCustomDictionary(const QStringList &words);
    /// The text of a whole recording, trimmed; empty when nothing was heard. Fails with `notReady`
    /// without a model and with `transcriptionFailed` when the recogniser does.
    QFuture<TranscriptionResult> transcribe(std::vector<float> samples);

    /// Begins streaming afresh. The callback is called on the main thread after each pass.
    QFuture<void> startStreaming(TranscriptionCallback callback);
    /// Appends samples and, when 1.5 s of new audio have come together, runs a pass before the
    /// future finishes. Ignored while not streaming.
    QFuture<void> addAudioSamples(std::vector<float> samples);
    /// Ends streaming; a segment that is built already is still delivered.
    QFuture<void> stopStreaming();

private:
    class Executor;
    std::shared_ptr<Executor> m_executor;
};

} // namespace Velloro
