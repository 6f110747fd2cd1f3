#pragma once

#include "Base/HandOffQueue.h"
#include "Managers/SampleStore.h"
#include "Platform/AudioEngine.h"

#include <atomic>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace Velloro {

/// The audio thread's half of one recording: mixes down, resamples, meters, stores and cuts chunks.
///
/// `process` is called on the audio thread, everything else on the main thread. There is no lock
/// between the two, and nothing wakes the main thread: it asks with `takeReport`, and provides with
/// `replenish` what `process` would otherwise have to allocate.
class CaptureProcessor
{
public:
    using ChunkCallback = std::function<void(std::vector<float> chunk)>;

    /// What the main thread has not heard of yet.
    struct Report
    {
        /// Normalised level of the latest buffer, if there was one since the last report.
        std::optional<float> level;
        /// Levels in dBFS that the log is to have, oldest first.
        std::vector<float> sampledDecibels;
    };

    /// A chunk is handed off as soon as it holds this many samples, half a second.
    static constexpr size_t chunkSize = 8000;
    /// So many chunks can be handed off without a `replenish`; what is more waits in the recording.
    static constexpr size_t spareChunks = 8;
    /// No more chunks than these are handed off between the beginnings of two calls of `replenish`.
    static constexpr size_t maximumChunksPerReplenish = 2 * spareChunks;

    /// `streamingCallback` may be empty; it is called on the audio thread. Buffers hold at most
    /// `bufferSize` frames; longer ones cost an allocation.
    CaptureProcessor(double inputSampleRate, size_t bufferSize, ChunkCallback streamingCallback);

    /// Takes one input buffer; one without float data or without frames is ignored. Neither waits
    /// nor allocates, see `SampleStore::append` for the exception.
    void process(const AudioBuffer &buffer);

    [[nodiscard]] Report takeReport();

    /// Leaves memory for what comes next; to be called a few times a second.
    void replenish();

    /// Ends the recording and returns it: an unfinished chunk is dropped. `process` has returned
    /// and is not called any more, nor is `replenish`.
    [[nodiscard]] std::vector<float> finish();

private:
    void handOffChunks();
    void addSpareChunks();

    const double m_resampleRatio;
    const size_t m_chunkCapacity;
    const ChunkCallback m_streamingCallback;

    // The audio thread's own.
    std::vector<float> m_mono;
    std::vector<float> m_resampled;
    std::minstd_rand m_random{std::random_device{}()};
    SampleStore m_recording;
    // Of the recording, in samples.
    size_t m_handedOff = 0;

    // From the main thread.
    HandOffQueue<std::vector<float>, spareChunks> m_spareChunks;
    // To the main thread. More levels wait only when that has been busy for minutes.
    HandOffQueue<float, 16> m_sampledDecibels;
    // Not a number when there is no new one.
    std::atomic<float> m_level;
};

} // namespace Velloro
