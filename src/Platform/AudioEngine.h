#pragma once

#include "Platform/PlatformError.h"

#include <cstdint>
#include <functional>
#include <span>
#include <tl/expected.hpp>

namespace Velloro {

/// What the input device delivers.
struct AudioFormat
{
    /// Frames per second.
    double sampleRate = 0;
    uint32_t channelCount = 0;

    friend bool operator==(const AudioFormat &, const AudioFormat &) = default;
};

/// One buffer of captured audio, valid during the tap's call only.
struct AudioBuffer
{
    /// One non-interleaved array of `frameLength` 32-bit floats per channel, nominally -1.0 to
    /// 1.0; empty when the buffer carries no float data.
    std::span<const float *const> floatChannelData;
    /// Frames in this buffer, that is samples per channel.
    uint32_t frameLength = 0;
    AudioFormat format;
};

/// The default microphone as a node that can be tapped.
///
/// All operations are called on the main thread and wait for the sound server for a bounded time.
/// The tap is called on the engine's own audio thread. The microphone is open between a successful
/// `start` and `stop` only.
class AudioEngine
{
public:
    using Tap = std::function<void(const AudioBuffer &)>;
    using InterruptionHandler = std::function<void()>;

    /// Stops the engine and removes the tap.
    virtual ~AudioEngine() = default;

    /// The default input device's format as it is now, asked anew at every call. Without a device
    /// the sample rate is 0.
    [[nodiscard]] virtual AudioFormat inputFormat() = 0;

    /// Calls `tap` with successive buffers of exactly `bufferSize` frames in `format` while the
    /// engine runs, whatever pieces the sound server delivers; what is left at the stop arrives as
    /// one shorter buffer. Replaces a tap that is there already.
    virtual void installTap(uint32_t bufferSize, const AudioFormat &format, Tap tap) = 0;

    /// Hands the frames that still wait to the tap, then removes it. The tap is not running any
    /// more, and never called again, when this returns.
    virtual void removeTap() = 0;

    /// Opens the default input device and starts capture.
    [[nodiscard]] virtual tl::expected<void, PlatformError> start() = 0;

    /// Closes the input device; harmless when nothing runs.
    virtual void stop() = 0;

    /// Called on the main thread, at most once per start, when capture ended by itself: the device
    /// vanished or the sound server went away. What was captured until then has reached the tap.
    virtual void setInterruptionHandler(InterruptionHandler handler) = 0;
};

} // namespace Velloro
