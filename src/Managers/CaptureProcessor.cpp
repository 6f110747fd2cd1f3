#include "Managers/CaptureProcessor.h"

#include "Managers/AudioProcessing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Velloro {

namespace {

constexpr float noLevel = std::numeric_limits<float>::quiet_NaN();
static_assert(std::atomic<float>::is_always_lock_free);

size_t resampledSize(size_t frames, double ratio)
{
    return ratio > 0 ? static_cast<size_t>(static_cast<double>(frames) / ratio) : 0;
}

} // namespace

CaptureProcessor::CaptureProcessor(double inputSampleRate, size_t bufferSize,
                                   ChunkCallback streamingCallback)
    : m_resampleRatio(inputSampleRate / AudioProcessing::targetSampleRate)
    , m_chunkCapacity(chunkSize + resampledSize(bufferSize, m_resampleRatio))
    , m_streamingCallback(std::move(streamingCallback))
    , m_level(noLevel)
{
    m_mono.reserve(bufferSize);
    m_resampled.reserve(resampledSize(bufferSize, m_resampleRatio));
    addSpareChunks();
}

void CaptureProcessor::process(const AudioBuffer &buffer)
{
    if (buffer.floatChannelData.empty() || buffer.frameLength == 0)
        return;

    AudioProcessing::mixDown(buffer, m_mono);
    AudioProcessing::resampleChunk(m_mono, m_resampleRatio, m_resampled);
    m_recording.append(m_resampled);

    float decibels = AudioProcessing::decibels({buffer.floatChannelData[0], buffer.frameLength});
    m_level.store(AudioProcessing::normalizedLevel(decibels), std::memory_order_relaxed);
    if (std::uniform_int_distribution(0, 50)(m_random) == 0)
        m_sampledDecibels.push(std::move(decibels));

    if (m_streamingCallback)
        handOffChunks();
}

void CaptureProcessor::handOffChunks()
{
    while (m_recording.size() - m_handedOff >= chunkSize) {
        auto chunk = m_spareChunks.pop();
        if (!chunk)
            return; // the main thread is busy; the next buffer tries again
        // All that there is, unless much has been waiting.
        const size_t count = std::min(m_recording.size() - m_handedOff,
                                      std::max(m_chunkCapacity, chunkSize + m_resampled.size()));
        m_recording.copy(m_handedOff, count, *chunk);
        m_handedOff += count;
        m_streamingCallback(std::move(*chunk));
    }
}

CaptureProcessor::Report CaptureProcessor::takeReport()
{
    Report report;
    while (const auto decibels = m_sampledDecibels.pop())
        report.sampledDecibels.push_back(*decibels);
    if (const float level = m_level.exchange(noLevel, std::memory_order_relaxed);
        !std::isnan(level)) {
        report.level = level;
    }
    return report;
}

void CaptureProcessor::replenish()
{
    m_recording.replenish();
    addSpareChunks();
}

void CaptureProcessor::addSpareChunks()
{
    // The audio thread may take them as fast as they come, so they are counted.
    for (size_t i = 0; i < spareChunks && m_streamingCallback && !m_spareChunks.isFull(); ++i) {
        std::vector<float> chunk;
        chunk.reserve(m_chunkCapacity);
        m_spareChunks.push(std::move(chunk));
    }
}

std::vector<float> CaptureProcessor::finish()
{
    return m_recording.take();
}

} // namespace Velloro
