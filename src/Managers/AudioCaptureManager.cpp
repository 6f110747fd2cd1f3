#include "Managers/AudioCaptureManager.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Managers/AudioProcessing.h"

#include <QCoroFuture>
#include <QLocale>
#include <QPromise>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr uint32_t tapBufferSize = 4096;

// The shortest decimal form that reads back to the same number, always with a fractional part.
QString rateText(double rate)
{
    QString text = QString::number(rate, 'f', QLocale::FloatingPointShortest);
    if (!text.contains(u'.'))
        text += u".0"_s;
    return text;
}

// The handler is kept alive here: when it is a coroutine lambda, its captures are its own.
QCoro::Task<void>
runChunkHandler(std::shared_ptr<const AudioCaptureManager::AsyncChunkHandler> handler,
                std::vector<float> chunk)
{
    co_await (*handler)(std::move(chunk));
}

} // namespace

AudioCaptureManager::AudioCaptureManager(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
{
    m_durationTimer.setInterval(100ms);
    connect(&m_durationTimer, &QTimer::timeout, this, [this] {
        setRecordingDuration(static_cast<double>(m_recordingStartTime.nsecsElapsed()) / 1e9);
        refresh();
    });
}

AudioCaptureManager::~AudioCaptureManager()
{
    // The audio thread runs as long as the engine lives.
    m_audioEngine.reset();
}

bool AudioCaptureManager::hasPermission() const
{
    return m_platform.captureAuthorization->authorizationStatus()
        == AuthorizationStatus::authorized;
}

QCoro::Task<bool> AudioCaptureManager::requestPermission()
{
    const auto promise = std::make_shared<QPromise<bool>>();
    promise->start();
    const QFuture<bool> answer = promise->future();
    m_platform.captureAuthorization->requestAccess([promise](bool granted) {
        promise->addResult(granted);
        promise->finish();
    });
    co_return co_await answer;
}

AudioCaptureManager::StartResult
AudioCaptureManager::startRecording(StreamingCallback streamingCallback)
{
    if (m_isRecording)
        return {};

    setupAudioEngineIfNeeded();
    if (!m_audioEngine)
        return tl::unexpected(CaptureStartError(AudioCaptureError::engineNotInitialized));

    const AudioFormat format = m_audioEngine->inputFormat();
    m_processor = std::make_shared<CaptureProcessor>(format.sampleRate, tapBufferSize,
                                                     std::move(streamingCallback));

    m_audioEngine->installTap(tapBufferSize, format,
                              [processor = std::weak_ptr(m_processor)](const AudioBuffer &buffer) {
                                  if (const auto target = processor.lock())
                                      target->process(buffer);
                              });
    if (auto started = m_audioEngine->start(); !started) {
        m_audioEngine->removeTap();
        m_processor.reset();
        return tl::unexpected(CaptureStartError(std::move(started.error())));
    }

    m_isRecording = true;
    m_recordingStartTime.start();
    m_durationTimer.start();
    Log::line(u"AudioCapture",
              u"Started recording at %1Hz, resampling to %2Hz"_s.arg(
                  rateText(format.sampleRate), rateText(AudioProcessing::targetSampleRate)));
    Q_EMIT isRecordingChanged();
    return {};
}

AudioCaptureManager::StartResult
AudioCaptureManager::startRecordingWithAsyncStreaming(AsyncChunkHandler onChunk)
{
    if (m_isRecording)
        return {};

    m_chunkHandler = std::make_shared<const AsyncChunkHandler>(std::move(onChunk));
    m_chunks = std::make_shared<ChunkQueue>();
    // There is room: the processor hands off no more than the queue takes until the next refresh.
    auto started = startRecording(
        [chunks = m_chunks](std::vector<float> chunk) { chunks->push(std::move(chunk)); });
    if (!started) {
        m_chunks.reset();
        m_chunkHandler.reset();
    }
    return started;
}

std::vector<float> AudioCaptureManager::stopRecording()
{
    if (!m_isRecording || !m_audioEngine)
        return {};

    m_audioEngine->removeTap();
    m_audioEngine->stop();
    m_isRecording = false;
    m_durationTimer.stop();
    collectChunks();
    m_chunks.reset();
    m_chunkHandler.reset();
    const auto processor = std::exchange(m_processor, nullptr);
    std::vector<float> recording = processor->finish();
    deliver(processor->takeReport());
    Log::line(u"AudioCapture", u"Stopped recording, captured %1 samples"_s.arg(recording.size()));
    setRecordingDuration(0);
    Q_EMIT isRecordingChanged();
    return recording;
}

void AudioCaptureManager::refresh()
{
    if (!m_processor)
        return;
    collectChunks();
    m_processor->replenish();
    deliver(m_processor->takeReport());
}

void AudioCaptureManager::setupAudioEngineIfNeeded()
{
    if (m_audioEngine || !m_platform.makeAudioEngine)
        return;
    m_audioEngine = m_platform.makeAudioEngine();
    if (!m_audioEngine)
        return;
    m_audioEngine->setInterruptionHandler([this] {
        if (m_isRecording)
            Q_EMIT captureInterrupted();
    });
}

void AudioCaptureManager::collectChunks()
{
    // A handler runs in a turn of its own: it may stop the recording, and a stop waits for none.
    while (auto chunk = m_chunks ? m_chunks->pop() : std::nullopt) {
        QMetaObject::invokeMethod(
            this,
            [handler = m_chunkHandler, chunk = std::move(*chunk)]() mutable {
                runChunkHandler(handler, std::move(chunk));
            },
            Qt::QueuedConnection);
    }
}

void AudioCaptureManager::deliver(const CaptureProcessor::Report &report)
{
    for (const float decibels : report.sampledDecibels) {
        Log::line(u"AudioCapture",
                  QString::asprintf("Audio Level: %.2f dB", static_cast<double>(decibels)));
    }
    if (report.level && *report.level != m_audioLevel) {
        m_audioLevel = *report.level;
        Q_EMIT audioLevelChanged();
    }
}

void AudioCaptureManager::setRecordingDuration(double seconds)
{
    if (seconds == m_recordingDuration)
        return;
    m_recordingDuration = seconds;
    Q_EMIT recordingDurationChanged();
}

} // namespace Velloro
