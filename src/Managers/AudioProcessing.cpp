#include "Managers/AudioProcessing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace Velloro::AudioProcessing {

namespace {

/// How many of the first `outputs` samples lie between two samples of the input.
size_t successorCount(size_t inputs, double ratio, size_t outputs)
{
    while (outputs > 0
           && static_cast<size_t>(ratio * static_cast<double>(outputs - 1)) + 1 >= inputs)
        --outputs;
    return outputs;
}

} // namespace

void mixDown(const AudioBuffer &buffer, std::vector<float> &mono)
{
    const auto channels = buffer.floatChannelData;
    mono.resize(buffer.frameLength);
    if (channels.size() == 1) {
        std::copy_n(channels[0], buffer.frameLength, mono.begin());
        return;
    }

    // Channel by channel in one pass for the usual two; the sum of each frame has the same order
    // either way, and every loop is free of dependencies between frames.
    if (channels.size() == 2) {
        const float *const left = channels[0];
        const float *const right = channels[1];
        for (size_t i = 0; i < mono.size(); ++i)
            mono[i] = (left[i] + right[i]) * 0.5F; // as exact as the division
        return;
    }
    std::ranges::fill(mono, 0.0F);
    for (const float *channel : channels) {
        for (size_t i = 0; i < mono.size(); ++i)
            mono[i] += channel[i];
    }
    const auto count = static_cast<float>(channels.size());
    for (float &sample : mono)
        sample /= count;
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
    // All but the last few samples have a successor: what they need is looked at once.
    const size_t interpolated = successorCount(input.size(), ratio, output.size());
    for (size_t i = 0; i < interpolated; ++i) {
        const double position = ratio * static_cast<double>(i);
        const auto current = static_cast<size_t>(position);
        const auto fraction = static_cast<float>(position - static_cast<double>(current));
        output[i] = (1.0F - fraction) * input[current] + input[current + 1] * fraction;
    }
    for (size_t i = interpolated; i < output.size(); ++i) {
        const auto current = static_cast<size_t>(ratio * static_cast<double>(i));
        output[i] = current < input.size() ? input[current] : 0.0F;
    }
}

float decibels(std::span<const float> samples)
{
    constexpr float floor = 1e-10F;
    // A sum for each of some lanes: one alone would make every sample wait for the one before.
    std::array<float, 16> sums{};
    const size_t whole = samples.size() - samples.size() % sums.size();
    for (size_t i = 0; i < whole; i += sums.size()) {
        for (size_t lane = 0; lane < sums.size(); ++lane)
            sums[lane] += samples[i + lane] * samples[i + lane];
    }
    for (size_t i = whole; i < samples.size(); ++i)
        sums[i - whole] += samples[i] * samples[i];
    const float sum = std::accumulate(sums.begin(), sums.end(), 0.0F);
    const float rms = std::sqrt(sum / static_cast<float>(samples.size()));
    // Written so that a device's NaN reads as silence.
    return 20.0F * std::log10(rms > floor ? rms : floor);
}

float normalizedLevel(float decibels)
{
    return std::clamp((decibels + 60.0F) / 60.0F, 0.0F, 1.0F);
}

} // namespace Velloro::AudioProcessing
