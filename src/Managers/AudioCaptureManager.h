#pragma once

#include "Managers/AudioCaptureError.h"
#include "Managers/CaptureProcessor.h"
#include "Platform/Platform.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <tl/expected.hpp>
#include <vector>

namespace Velloro {

/// Records the default microphone, one dictation at a time, as mono 32-bit float samples at
/// 16,000 Hz, and meters its level. Public operations are called on the main thread; buffers are
/// processed on the engine's audio thread, which the main thread asks for news: at every refresh of
/// the duration, and whenever `refresh` is called.
class AudioCaptureManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY isRecordingChanged)
    Q_PROPERTY(float audioLevel READ audioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(double recordingDuration READ recordingDuration NOTIFY recordingDurationChanged)

public:
    using StartResult = tl::expected<void, CaptureStartError>;
    /// Receives a fresh array of 16 kHz mono samples on the audio thread; must neither block nor
    /// allocate.
    using StreamingCallback = std::function<void(std::vector<float> chunk)>;
    /// Receives a chunk on the main thread; what it awaits is awaited by nobody else.
    using AsyncChunkHandler = std::function<QCoro::Task<void>(std::vector<float> chunk)>;

    explicit AudioCaptureManager(Platform &platform, QObject *parent = nullptr);
    ~AudioCaptureManager() override;

    /// Whether the platform says that the microphone may be recorded.
    [[nodiscard]] bool hasPermission() const;
    /// Asks for microphone access; the answer is true when it was granted.
    QCoro::Task<bool> requestPermission();

    /// Begins a recording. While one runs already, returns at once and touches nothing. The
    /// callback, when there is one, receives chunks of 8,000 samples or somewhat more.
    StartResult startRecording(StreamingCallback streamingCallback = {});
    /// The same with a handler that runs on the main thread for every chunk.
    StartResult startRecordingWithAsyncStreaming(AsyncChunkHandler onChunk);
    /// Ends the recording and returns it whole; empty when nothing was recording.
    std::vector<float> stopRecording();

    /// Brings the level up to date and has the chunks that are ready handled, both of which happens
    /// 10 times a second anyway. For a display that wants it more often.
    void refresh();

    /// True from a successful start until the stop.
    [[nodiscard]] bool isRecording() const { return m_isRecording; }
    /// Level of the most recent input buffer, 0.0 (-60 dBFS and below) to 1.0 (0 dBFS).
    [[nodiscard]] float audioLevel() const { return m_audioLevel; }
    /// Seconds since the start, refreshed every 0.1 s; 0 after the stop.
    [[nodiscard]] double recordingDuration() const { return m_recordingDuration; }

Q_SIGNALS:
    void isRecordingChanged();
    void audioLevelChanged();
    void recordingDurationChanged();
    /// Capture ended by itself: the microphone vanished or the sound server went away. What was
    /// captured is still there; `stopRecording` returns it.
    void captureInterrupted();

private:
    using ChunkQueue
        = HandOffQueue<std::vector<float>, CaptureProcessor::maximumChunksPerReplenish>;

    void setupAudioEngineIfNeeded();
    void collectChunks();
    void deliver(const CaptureProcessor::Report &report);
    void setRecordingDuration(double seconds);

    Platform &m_platform;
    std::unique_ptr<AudioEngine> m_audioEngine;
    // The audio thread's half of the recording, shared with the tap; null between recordings.
    std::shared_ptr<CaptureProcessor> m_processor;
    // The rest of an asynchronous streaming recording, shared with its streaming callback and with
    // the handlers that run; null in any other.
    std::shared_ptr<ChunkQueue> m_chunks;
    std::shared_ptr<const AsyncChunkHandler> m_chunkHandler;
    bool m_isRecording = false;
    float m_audioLevel = 0;
    double m_recordingDuration = 0;
    QElapsedTimer m_recordingStartTime;
    QTimer m_durationTimer;
};

} // namespace Velloro
