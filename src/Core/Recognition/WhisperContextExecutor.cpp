#include "Core/Recognition/WhisperContextExecutor.h"

#include "Base/Graphemes.h"
#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Core/Recognition/ModelFile.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <algorithm>
#include <exception>
#include <limits>
#include <utility>
#include <whisper.h>

namespace Velloro {

namespace {

constexpr int stackLines = 10;
/// The library mirrors the first 200 samples after the first one, without asking for their number.
constexpr size_t samplesLookedAt = 201;
/// A result code that the library does not give.
constexpr int exceptionThrown = -1000;
/// Of a prompt the library uses the last 224 tokens at most, which no text spreads over more bytes
/// than these; but it splits the whole of it, and a word of some ten thousand letters takes more of
/// the stack than there is.
constexpr qsizetype promptLimit = 4000;

void log(const QString &message)
{
    Log::line(u"WhisperContext", message);
}

void silenceLibrary()
{
    static std::once_flag once;
    std::call_once(once,
                   [] { whisper_log_set([](ggml_log_level, const char *, void *) {}, nullptr); });
}

/// The end of the prompt that the library can use, as UTF-8, from the beginning of a word where
/// there is one.
QByteArray usablePrompt(const QString &prompt)
{
    const QByteArray whole = prompt.toUtf8();
    if (whole.size() <= promptLimit)
        return whole;
    qsizetype start = whole.indexOf(' ', whole.size() - promptLimit) + 1;
    if (start == 0) {
        start = whole.size() - promptLimit;
        while ((whole.at(start) & 0xC0) == 0x80)
            ++start;
    }
    return whole.sliced(start);
}

} // namespace

WhisperContext::Executor::Executor(std::shared_ptr<const ProcessInfo> processInfo)
    : m_processInfo(std::move(processInfo))
    , m_threads(std::clamp(m_processInfo->processorCount() - 2, 1, 8))
{
    silenceLibrary();
}

void WhisperContext::Executor::post(std::function<void()> job)
{
    const std::lock_guard lock(m_inboxMutex);
    // Samples that come after this job must not be appended before it.
    m_openBatch.reset();
    m_executor.submit(std::move(job));
}

QFuture<void> WhisperContext::Executor::feed(const std::vector<float> &samples)
{
    const std::lock_guard lock(m_inboxMutex);
    if (!m_openBatch) {
        m_openBatch = std::make_shared<Batch>();
        m_openBatch->generation = m_generation;
        m_openBatch->promise.start();
        m_executor.submit([self = shared_from_this(), batch = m_openBatch] { self->drain(batch); });
    }
    m_openBatch->audio.append(samples);
    return m_openBatch->promise.future();
}

void WhisperContext::Executor::dropWaitingSamples()
{
    const std::lock_guard lock(m_inboxMutex);
    ++m_generation;
    m_openBatch.reset();
}

WhisperContext::LoadResult WhisperContext::Executor::loadModel(const QString &path)
{
    if (!QFileInfo::exists(path))
        return tl::unexpected(WhisperContextError::modelNotFound);
    if (isModelLoaded())
        unloadModel();

    whisper_context_params parameters = whisper_context_default_params();
    parameters.flash_attn = true;
    try {
        if (!ModelFile::isDamaged(path))
            m_context.reset(
                whisper_init_from_file_with_params_no_state(path.toUtf8().constData(), parameters));
        SerialExecutor::checkpoint();
        if (m_context)
            m_state.reset(whisper_init_state(m_context.get()));
    } catch (const std::exception &) {
        // The model is too large for the machine.
    }
    SerialExecutor::checkpoint();
    if (!m_context) {
        log(u"Couldn't load model at "_s + path);
        return tl::unexpected(WhisperContextError::modelLoadFailed);
    }
    if (!m_state) {
        m_context.reset();
        return tl::unexpected(WhisperContextError::modelLoadFailed);
    }
    log(u"Model loaded: "_s + path);
    return {};
}

void WhisperContext::Executor::unloadModel()
{
    release();
    SerialExecutor::checkpoint();
    log(u"Model unloaded. Stack trace:"_s);
    const QStringList stack = m_processInfo->callStackSymbols().mid(0, stackLines);
    for (const QString &frame : stack)
        log(frame);
}

void WhisperContext::Executor::release()
{
    m_state.reset();
    m_context.reset();
    m_streaming.reset();
}

void WhisperContext::Executor::setLanguage(const QString &code)
{
    m_language = code;
    log(u"Language set to: "_s + code);
}

void WhisperContext::Executor::setCustomDictionary(const QStringList &words)
{
    m_customDictionary = words;
    log(u"Custom dictionary set with %1 words"_s.arg(words.size()));
}

WhisperContext::TranscriptionResult
WhisperContext::Executor::transcribe(const std::vector<float> &samples)
{
    if (!isModelLoaded()) {
        log(u"Cannot transcribe: model not loaded"_s);
        return tl::unexpected(WhisperContextError::notReady);
    }
    if (samples.empty())
        return QString();
    if (samples.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        log(u"Cannot transcribe: %1 samples are too many"_s.arg(samples.size()));
        return tl::unexpected(WhisperContextError::transcriptionFailed);
    }
    log(u"Transcribing %1 samples in batch..."_s.arg(samples.size()));

    const auto heard = recognise(samples, m_customDictionary.join(u", "_s), true);
    if (!heard) {
        log(u"Batch transcription failed with code %1"_s.arg(heard.error()));
        return tl::unexpected(WhisperContextError::transcriptionFailed);
    }
    // Decoded as a whole: a character may begin in one segment and end in the next.
    const QString text = QString::fromUtf8(heard->join()).trimmed();
    log(u"Batch transcription complete: '"_s + Graphemes::prefix(text, 50) + u"...'"_s);
    return text;
}

void WhisperContext::Executor::startStreaming(TranscriptionCallback callback)
{
    m_streaming
        = Streaming{.transcriptionCallback = std::move(callback), .window = {}, .agreement = {}};
    log(u"Streaming started with LocalAgreement"_s);
}

void WhisperContext::Executor::stopStreaming()
{
    log(u"Streaming stopped"_s);
    m_streaming.reset();
}

void WhisperContext::Executor::drain(const std::shared_ptr<Batch> &batch)
{
    bool dropped = false;
    {
        const std::lock_guard lock(m_inboxMutex);
        if (m_openBatch == batch)
            m_openBatch.reset();
        dropped = batch->generation != m_generation;
    }
    if (!dropped && m_streaming) {
        m_streaming->window.append(batch->audio);
        batch->audio = {};
        if (m_streaming->window.isPassDue()) {
            if (const auto segment = processCurrentBuffer(*m_streaming)) {
                deliver(*segment, batch);
                return;
            }
        }
    }
    batch->promise.finish();
}

std::optional<TranscriptionSegment>
WhisperContext::Executor::processCurrentBuffer(Streaming &streaming)
{
    if (!isModelLoaded())
        return {};
    streaming.window.trim();

    LocalAgreement &agreement = streaming.agreement;
    QStringList promptParts
        = {agreement.confirmedWords().join(u' '), m_customDictionary.join(u", "_s)};
    promptParts.removeAll(QString());
    const auto texts = recognise(streaming.window.samples(), promptParts.join(u". "_s), false);
    if (!texts) {
        log(u"Streaming transcription failed with code %1"_s.arg(texts.error()));
        return {};
    }

    QStringList heard;
    for (const QByteArray &text : *texts)
        heard += LocalAgreement::words(QString::fromUtf8(text));
    agreement.addPass(heard);

    const QString confirmed = agreement.confirmedWords().join(u' ');
    const QString uncommitted = agreement.uncommittedWords().join(u' ');
    if (!confirmed.isEmpty() || !uncommitted.isEmpty()) {
        log(u"Streaming: confirmed='"_s + Graphemes::prefix(confirmed, 30) + u"...' uncommitted='"_s
            + Graphemes::prefix(uncommitted, 20) + u"...'"_s);
    }
    return TranscriptionSegment{.text = confirmed,
                                .uncommitted = uncommitted,
                                .startTime = streaming.window.startTime(),
                                .endTime = streaming.window.endTime(),
                                .isPartial = !uncommitted.isEmpty()};
}

void WhisperContext::Executor::deliver(const TranscriptionSegment &segment,
                                       const std::shared_ptr<Batch> &batch)
{
    // Without an application there is nobody left to tell; the batch's future ends with it.
    QCoreApplication *const application = QCoreApplication::instance();
    if (!application)
        return;
    // The executor serves others while the main thread gets to this.
    QMetaObject::invokeMethod(
        application,
        [self = shared_from_this(), callback = m_streaming->transcriptionCallback, segment, batch] {
            if (callback)
                callback(segment);
            self->post([self, batch] {
                if (self->m_streaming)
                    self->m_streaming->window.markProcessed();
                batch->promise.finish();
            });
        },
        Qt::QueuedConnection);
}

tl::expected<QByteArrayList, int>
WhisperContext::Executor::recognise(const std::vector<float> &samples, const QString &prompt,
                                    bool noContext)
{
    // The library reads both during the call.
    const QByteArray language = m_language.toUtf8();
    const QByteArray initialPrompt = usablePrompt(prompt);

    whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
    parameters.n_threads = m_threads;
    parameters.offset_ms = 0;
    parameters.translate = false;
    parameters.no_context = noContext;
    parameters.single_segment = false;
    parameters.print_special = false;
    parameters.print_progress = false;
    parameters.print_realtime = false;
    parameters.print_timestamps = false;
    parameters.language = language.constData();
    if (!initialPrompt.isEmpty())
        parameters.initial_prompt = initialPrompt.constData();

    // Whatever the count, the library looks at what would be the first samples.
    std::vector<float> lengthened;
    if (samples.size() < samplesLookedAt) {
        lengthened = samples;
        lengthened.resize(samplesLookedAt);
    }

    whisper_reset_timings(m_context.get());
    int code = exceptionThrown;
    try {
        code = whisper_full_with_state(m_context.get(), m_state.get(), parameters,
                                       lengthened.empty() ? samples.data() : lengthened.data(),
                                       static_cast<int>(samples.size()));
    } catch (const std::exception &) {
        // Mostly for want of memory; a failure like the library's own.
    }
    SerialExecutor::checkpoint();
    if (code != 0)
        return tl::unexpected(code);

    QByteArrayList texts;
    const int count = whisper_full_n_segments_from_state(m_state.get());
    for (int index = 0; index < count; ++index) {
        if (const char *text = whisper_full_get_segment_text_from_state(m_state.get(), index))
            texts += text;
    }
    return texts;
}

} // namespace Velloro
