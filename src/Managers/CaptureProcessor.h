#pragma once

#include "Managers/SampleStore.h"
#include "Platform/AudioEngine.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <vector>

namespace Velloro {

/// The audio thread's half of one recording: mixes down, resamples, meters and stores.
///
/// `process` is called on the audio thread, everything else on the main thread. The lock between
/// the two is held for copying samples only.
class CaptureProcessor
{
public:
    using ChunkCallback = std::function<void(std::vector<float> chunk)>;

    /// What the main thread has not heard of yet.
    struct Report
    {
        /// Normalised level of the latest buffer.
        std::optional<float> level;
        /// Levels in dBFS that the log is to have, oldest first.
        std::vector<float> sampledDecibels;
    };

    /// A chunk is handed off as soon as it holds this many samples, half a second.
    static constexpr size_t chunkSize = 8000;

    /// `streamingCallback` may be empty. `reportReady` is called on the audio thread when there is
    /// something to report, and not again before `takeReport`.
    CaptureProcessor(double inputSampleRate, size_t bufferSize, ChunkCallback streamingCallback,
                     std::function<void()> reportReady);

    /// Takes one input buffer; one without float data or without frames is ignored.
    void process(const AudioBuffer &buffer);

    [[nodiscard]] Report takeReport();

    /// Ends the recording and returns it: a buffer that comes later is ignored, an unfinished chunk
    /// is dropped, and the callback is released.
    [[nodiscard]] std::vector<float> finish();

private:
    /// Fresh storage for a chunk; none when nobody is to receive it.
    [[nodiscard]] std::vector<float> makeChunk() const;

    const double m_resampleRatio;
    const size_t m_samplesPerBuffer;
    const std::function<void()> m_reportReady;

    // The audio thread's own.
    std::vector<float> m_mono;
    std::vector<float> m_resampled;
    std::minstd_rand m_random{std::random_device{}()};

    std::mutex m_mutex;
    // Guarded by the mutex.
    bool m_finished = false;
    bool m_reportPending = false;
    SampleStore m_recording;
    std::vector<float> m_chunk;
    std::shared_ptr<const ChunkCallback> m_streamingCallback;
    Report m_report;
};

} // namespace Velloro
