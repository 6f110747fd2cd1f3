#pragma once

#include "Base/StringLiterals.h"
#include "Platform/AudioEngine.h"

#include <QStringList>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace Velloro {

/// An engine whose microphone is the test. Buffers may be delivered from any thread.
class InMemoryAudioEngine : public AudioEngine
{
public:
    using Channels = std::vector<std::vector<float>>;

    // Script.
    AudioFormat format{48000.0, 1};
    std::optional<PlatformError> startError;
    /// Delivered as the last buffer when the tap is removed.
    Channels remainder;

    // What was asked of it, in order: "inputFormat", "installTap", "start", "removeTap", "stop".
    QStringList calls;
    uint32_t bufferSize = 0;
    AudioFormat tapFormat;
    bool isRunning = false;

    /// Hands one buffer to the tap, if there is one; false when there is none.
    bool deliver(const Channels &channels)
    {
        std::vector<const float *> pointers;
        for (const auto &channel : channels)
            pointers.push_back(channel.data());
        const auto frames = channels.empty() ? 0 : static_cast<uint32_t>(channels.front().size());
        const std::lock_guard lock(m_mutex);
        return callTap({pointers, frames, tapFormat});
    }

    bool deliver(const AudioBuffer &buffer)
    {
        const std::lock_guard lock(m_mutex);
        return callTap(buffer);
    }

    [[nodiscard]] bool hasTap()
    {
        const std::lock_guard lock(m_mutex);
        return bool(m_tap);
    }

    /// The microphone vanishes.
    void interrupt()
    {
        isRunning = false;
        if (m_interruptionHandler)
            m_interruptionHandler();
    }

    AudioFormat inputFormat() override
    {
        calls << u"inputFormat"_s;
        return format;
    }

    void installTap(uint32_t frames, const AudioFormat &newFormat, Tap tap) override
    {
        calls << u"installTap"_s;
        const std::lock_guard lock(m_mutex);
        bufferSize = frames;
        tapFormat = newFormat;
        m_tap = std::move(tap);
    }

    void removeTap() override
    {
        calls << u"removeTap"_s;
        if (!remainder.empty())
            deliver(std::exchange(remainder, {}));
        const std::lock_guard lock(m_mutex);
        m_tap = nullptr;
    }

    tl::expected<void, PlatformError> start() override
    {
        calls << u"start"_s;
        if (startError)
            return tl::unexpected(*startError);
        isRunning = true;
        return {};
    }

    void stop() override
    {
        calls << u"stop"_s;
        isRunning = false;
    }

    void setInterruptionHandler(InterruptionHandler handler) override
    {
        m_interruptionHandler = std::move(handler);
    }

private:
    bool callTap(const AudioBuffer &buffer)
    {
        if (m_tap)
            m_tap(buffer);
        return bool(m_tap);
    }

    std::mutex m_mutex;
    Tap m_tap;
    InterruptionHandler m_interruptionHandler;
};

} // namespace Velloro
