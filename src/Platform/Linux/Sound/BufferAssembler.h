#pragma once

#include "Platform/AudioEngine.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Velloro {

/// Cuts a stream of interleaved samples, arriving in pieces of any length, into buffers of fixed
/// length with one array per channel. Not synchronised; allocates at construction only.
class BufferAssembler
{
public:
    /// `bufferSize` in frames, at least 1.
    BufferAssembler(uint32_t bufferSize, const AudioFormat &format, AudioEngine::Tap tap);

    void append(std::span<const float> samples);
    /// The same for samples that were lost on the way: the time that they took stays.
    void appendSilence(size_t sampleCount);

    /// Hands the frames that wait for a full buffer to the tap as a shorter one.
    void flush();

private:
    void append(float sample);
    void deliver();

    const AudioFormat m_format;
    const AudioEngine::Tap m_tap;
    const uint32_t m_bufferSize;
    std::vector<std::vector<float>> m_channels;
    std::vector<const float *> m_channelData;
    // Where the next sample goes.
    uint32_t m_frame = 0;
    size_t m_channel = 0;
};

} // namespace Velloro
