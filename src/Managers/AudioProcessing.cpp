#include "Managers/AudioProcessing.h"

#include <algorithm>
#include <cmath>

namespace Velloro::AudioProcessing {

void mixDown(const AudioBuffer &buffer, std::vector<float> &mono)
{
    const auto channels = buffer.floatChannelData;
    mono.resize(buffer.frameLength);
    if (channels.size() == 1) {
        std::copy_n(channels[0], buffer.frameLength, mono.begin());
        return;
    }

    const auto count = static_cast<float>(channels.size());
    for (size_t i = 0; i < mono.size(); ++i) {
        float sum = 0;
        for (const float *channel : channels)
            sum += channel[i];
        mono[i] = sum / count;
    }
}

void resampleChunk(std::span<const float> input, double ratio, std::vector<float> &output)
{
    if (ratio == 1.0) {
        output.assign(input.begin(), input.end());
        return;
    }
    output.clear();
    if (!(ratio > 0.0))
        return;

    output.resize(static_cast<size_t>(static_cast<double>(input.size()) / ratio));
    for (size_t i = 0; i < output.size(); ++i) {
        const double position = ratio * static_cast<double>(i);
        const auto current = static_cast<size_t>(position);
        const size_t next = current + 1;
        if (next < input.size()) {
            const auto fraction = static_cast<float>(position - static_cast<double>(current));
            output[i] = (1.0F - fraction) * input[current] + input[next] * fraction;
        } else if (current < input.size()) {
            output[i] = input[current];
        }
    }
}

float decibels(std::span<const float> samples)
{
    constexpr float floor = 1e-10F;
    float sum = 0;
    for (const float sample : samples)
        sum += sample * sample;
    const float rms = std::sqrt(sum / static_cast<float>(samples.size()));
    // Written so that a device's NaN reads as silence.
    return 20.0F * std::log10(rms > floor ? rms : floor);
}

float normalizedLevel(float decibels)
{
    return std::clamp((decibels + 60.0F) / 60.0F, 0.0F, 1.0F);
}

} // namespace Velloro::AudioProcessing
