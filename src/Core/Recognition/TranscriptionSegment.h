#pragma once

#include <QString>
#include <functional>

namespace Velloro {

/// What a streaming pass heard, split into what will not change any more and the rest.
struct TranscriptionSegment
{
    /// All confirmed words, joined with single spaces.
    QString text;
    /// The words of the latest pass beyond the confirmed ones, joined with single spaces.
    QString uncommitted;
    /// Recording time at which the current window starts, in seconds.
    double startTime = 0;
    /// Recording time at which the current window ends, in seconds.
    double endTime = 0;
    /// Whether the uncommitted tail holds at least one word.
    bool isPartial = false;

    friend bool operator==(const TranscriptionSegment &, const TranscriptionSegment &) = default;
};

/// A consumer of segments, called on the main thread.
using TranscriptionCallback = std::function<void(const TranscriptionSegment &)>;

} // namespace Velloro
