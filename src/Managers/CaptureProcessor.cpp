#include "Managers/CaptureProcessor.h"

#include "Managers/AudioProcessing.h"

#include <utility>

namespace Velloro {

namespace {

// More of them wait only when the main thread has been busy for minutes.
constexpr size_t maximumSampledDecibels = 16;

} // namespace

CaptureProcessor::CaptureProcessor(double inputSampleRate, size_t bufferSize,
                                   ChunkCallback streamingCallback,
                                   std::function<void()> reportReady)
    : m_resampleRatio(inputSampleRate / AudioProcessing::targetSampleRate)
    , m_samplesPerBuffer(m_resampleRatio > 0 ? static_cast<size_t>(bufferSize / m_resampleRatio) : 0)
    , m_reportReady(std::move(reportReady))
{
    if (streamingCallback)
        m_streamingCallback = std::make_shared<const ChunkCallback>(std::move(streamingCallback));
    m_mono.reserve(bufferSize);
    m_resampled.reserve(m_samplesPerBuffer);
    m_chunk = makeChunk();
    m_report.sampledDecibels.reserve(maximumSampledDecibels);
}

void CaptureProcessor::process(const AudioBuffer &buffer)
{
    if (buffer.floatChannelData.empty() || buffer.frameLength == 0)
        return;

    AudioProcessing::mixDown(buffer, m_mono);
    AudioProcessing::resampleChunk(m_mono, m_resampleRatio, m_resampled);
    const float decibels =
        AudioProcessing::decibels({buffer.floatChannelData[0], buffer.frameLength});
    const bool sampled = std::uniform_int_distribution(0, 50)(m_random) == 0;

    bool report = false;
    std::vector<float> chunk;
    std::shared_ptr<const ChunkCallback> streamingCallback;
    {
        const std::lock_guard lock(m_mutex);
        if (m_finished)
            return;
        m_recording.append(m_resampled);
        m_chunk.insert(m_chunk.end(), m_resampled.begin(), m_resampled.end());
        m_report.level = AudioProcessing::normalizedLevel(decibels);
        if (sampled && m_report.sampledDecibels.size() < maximumSampledDecibels)
            m_report.sampledDecibels.push_back(decibels);
        report = !std::exchange(m_reportPending, true);
        if (m_chunk.size() >= chunkSize) {
            streamingCallback = m_streamingCallback;
            if (streamingCallback)
                chunk = std::exchange(m_chunk, makeChunk());
            else
                m_chunk.clear();
        }
    }

    if (report)
        m_reportReady();
    if (streamingCallback)
        (*streamingCallback)(std::move(chunk));
}

CaptureProcessor::Report CaptureProcessor::takeReport()
{
    Report report;
    report.sampledDecibels.reserve(maximumSampledDecibels);
    bool wantsBlock = false;
    {
        const std::lock_guard lock(m_mutex);
        std::swap(report, m_report);
        m_reportPending = false;
        wantsBlock = !m_finished && m_recording.wantsSpareBlock();
    }
    if (wantsBlock) {
        auto block = SampleStore::makeBlock();
        const std::lock_guard lock(m_mutex);
        m_recording.addSpareBlock(std::move(block));
    }
    return report;
}

std::vector<float> CaptureProcessor::finish()
{
    std::shared_ptr<const ChunkCallback> released;
    const std::lock_guard lock(m_mutex);
    m_finished = true;
    m_chunk = {};
    released.swap(m_streamingCallback);
    return m_recording.take();
}

std::vector<float> CaptureProcessor::makeChunk() const
{
    std::vector<float> chunk;
    chunk.reserve(chunkSize + m_samplesPerBuffer);
    return chunk;
}

} // namespace Velloro
