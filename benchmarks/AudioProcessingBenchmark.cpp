#include "Managers/AudioProcessing.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

using namespace Velloro;

constexpr double inputRate = 48000.0;

/// One second of stereo sound.
const std::array<std::vector<float>, 2> &channels()
{
    static const auto sound = [] {
        std::array<std::vector<float>, 2> each;
        for (size_t channel = 0; channel < each.size(); ++channel) {
            each[channel].resize(static_cast<size_t>(inputRate));
            for (size_t i = 0; i < each[channel].size(); ++i) {
                each[channel][i] = 0.3F
                    * std::sin(static_cast<float>(i) * 0.05F * static_cast<float>(channel + 1));
            }
        }
        return each;
    }();
    return sound;
}

void processSecond(benchmark::State &state)
{
    const std::array<const float *, 2> pointers = {channels()[0].data(), channels()[1].data()};
    const AudioBuffer buffer{.floatChannelData = pointers,
                             .frameLength = static_cast<uint32_t>(channels()[0].size()),
                             .format = {}};
    std::vector<float> mono;
    std::vector<float> resampled;
    for ([[maybe_unused]] auto iteration : state) {
        AudioProcessing::mixDown(buffer, mono);
        AudioProcessing::resampleChunk(mono, inputRate / AudioProcessing::targetSampleRate,
                                       resampled);
        benchmark::DoNotOptimize(resampled.data());
        benchmark::DoNotOptimize(AudioProcessing::decibels(channels()[0]));
        benchmark::ClobberMemory();
    }
}

/// What moving the same data costs.
void copySecond(benchmark::State &state)
{
    std::array<std::vector<float>, 2> copies = channels();
    for ([[maybe_unused]] auto iteration : state) {
        for (size_t channel = 0; channel < copies.size(); ++channel) {
            std::memcpy(copies[channel].data(), channels()[channel].data(),
                        copies[channel].size() * sizeof(float));
            benchmark::DoNotOptimize(copies[channel].data());
        }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(processSecond);
BENCHMARK(copySecond);

} // namespace

BENCHMARK_MAIN();
