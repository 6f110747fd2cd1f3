#pragma once

#include <QString>
#include <chrono>
#include <deque>

namespace Velloro {

/// Speed and time left of one download, from its latest progress.
class DownloadEstimate
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `megabytes` is the size of the whole file.
    explicit DownloadEstimate(int megabytes);

    /// Takes the fraction that was received by then; a smaller one starts anew.
    void update(double progress, TimePoint now = std::chrono::steady_clock::now());

    /// "12.3 MB/s, 2 min left"; empty until the speed is known.
    [[nodiscard]] QString text() const;

private:
    struct Sample
    {
        TimePoint time;
        double progress = 0;
    };

    int m_megabytes;
    /// The latest seconds.
    std::deque<Sample> m_samples;
};

} // namespace Velloro
