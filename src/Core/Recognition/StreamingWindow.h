#pragma once

#include <QtGlobal>
#include <span>
#include <vector>

namespace Velloro {

/// The part of a streamed recording that a recognition pass hears: its last 15 seconds.
///
/// Audio is mono 32-bit float at 16,000 Hz.
class StreamingWindow
{
public:
    void append(std::span<const float> samples);
    /// Appends what another window was given, including what it no longer holds.
    void append(const StreamingWindow &later);

    /// Whether 1.5 s of audio have come since the last `markProcessed`.
    [[nodiscard]] bool isPassDue() const;
    /// Before a pass: drops what is older than 15 s.
    void trim();
    /// After a pass: what is held now counts as processed.
    void markProcessed();

    /// At most twice as many as a pass hears, and no more than that after `trim`.
    [[nodiscard]] const std::vector<float> &samples() const { return m_audioBuffer; }
    /// Recording time at which the window starts, in seconds.
    [[nodiscard]] double startTime() const;
    /// Recording time at which the window ends, in seconds.
    [[nodiscard]] double endTime() const;

private:
    [[nodiscard]] qsizetype end() const;

    std::vector<float> m_audioBuffer;
    // Counted in samples from the start of the recording.
    qsizetype m_start = 0;
    qsizetype m_lastProcessedSamples = 0;
};

} // namespace Velloro
