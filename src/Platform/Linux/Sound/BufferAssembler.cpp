#include "Platform/Linux/Sound/BufferAssembler.h"

#include <utility>

namespace Velloro {

BufferAssembler::BufferAssembler(uint32_t bufferSize, const AudioFormat &format,
                                 AudioEngine::Tap tap)
    : m_format(format)
    , m_tap(std::move(tap))
    , m_bufferSize(bufferSize)
    , m_channels(format.channelCount, std::vector<float>(bufferSize))
{
    for (const auto &channel : m_channels)
        m_channelData.push_back(channel.data());
}

void BufferAssembler::append(std::span<const float> samples)
{
    for (const float sample : samples)
        append(sample);
}

void BufferAssembler::appendSilence(size_t sampleCount)
{
    for (size_t i = 0; i < sampleCount; ++i)
        append(0.0F);
}

void BufferAssembler::flush()
{
    if (m_frame > 0)
        deliver();
}

void BufferAssembler::append(float sample)
{
    m_channels[m_channel][m_frame] = sample;
    if (++m_channel < m_channels.size())
        return;
    m_channel = 0;
    if (++m_frame == m_bufferSize)
        deliver();
}

void BufferAssembler::deliver()
{
    const uint32_t frames = std::exchange(m_frame, 0);
    m_tap({m_channelData, frames, m_format});
}

} // namespace Velloro
