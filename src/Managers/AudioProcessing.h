#pragma once

#include "Platform/AudioEngine.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Velloro {

/// The arithmetic between an input buffer and the recording: stateless, 32-bit floats, linear in
/// the buffer's length. Results go into arrays that the caller keeps, so that nothing is allocated
/// once these have grown to the buffer size.
namespace AudioProcessing {

/// What the recogniser expects, in samples per second.
inline constexpr double targetSampleRate = 16000.0;

/// Replaces `mono` by the mean of the buffer's channels, frame by frame.
void mixDown(const AudioBuffer &buffer, std::vector<float> &mono);

/// Replaces `output` by `input` at `ratio` input samples per output sample, interpolated linearly.
/// The output holds the integer part of the input count divided by the ratio; nothing is carried
/// from one call to the next. A ratio of exactly 1 copies, one that is not positive gives nothing.
void resampleChunk(std::span<const float> input, double ratio, std::vector<float> &output);

/// The root mean square of the samples in dBFS, at least -200.
[[nodiscard]] float decibels(std::span<const float> samples);

/// 0 at -60 dBFS and below, 1 at 0 dBFS and above, linear in decibels between.
[[nodiscard]] float normalizedLevel(float decibels);

} // namespace AudioProcessing
} // namespace Velloro
