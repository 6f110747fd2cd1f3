#pragma once

#include "Platform/AudioEngine.h"
#include "Platform/Linux/Sound/BufferAssembler.h"
#include "Platform/Linux/Sound/PulseConnection.h"
#include "Platform/Linux/Sound/PulseMicrophoneQuery.h"

#include <QObject>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace Velloro {

/// The default microphone through the sound server, PulseAudio or one that speaks its protocol.
/// The audio thread is the connection's. A recording stays with the source that it began with and
/// ends when that goes away.
class PulseAudioEngine final : public AudioEngine
{
public:
    explicit PulseAudioEngine(std::shared_ptr<PulseConnection> connection);
    ~PulseAudioEngine() override;

    [[nodiscard]] AudioFormat inputFormat() override;
    void installTap(uint32_t bufferSize, const AudioFormat &format, Tap tap) override;
    void removeTap() override;
    [[nodiscard]] tl::expected<void, PlatformError> start() override;
    void stop() override;
    void setInterruptionHandler(InterruptionHandler handler) override;

private:
    // With the connection's lock held.
    void streamStateChanged();
    void streamMoved();
    void readStream();
    void awaitCapturedFrames();
    void interrupted();

    const std::shared_ptr<PulseConnection> m_connection;
    InterruptionHandler m_interruptionHandler;
    AudioFormat m_format;
    // The latest answer of `inputFormat`.
    PulseMicrophoneQuery::Answer m_microphone;
    // What that has left of the connection's patience for the start that follows it.
    std::chrono::milliseconds m_patience = PulseConnection::patience;
    std::optional<BufferAssembler> m_assembler;
    PulseConnection::Stream m_stream;
    bool m_isRunning = false;
    uint64_t m_bytesReceived = 0;
    // Counts starts and stops: an interruption that is reported later than the stop is dropped.
    unsigned m_generation = 0;
    // Takes reports to the main thread.
    QObject m_mainThread;
};

} // namespace Velloro
