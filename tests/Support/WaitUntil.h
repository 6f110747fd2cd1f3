#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

namespace Velloro {

/// Runs the event loop until the condition holds; false when it does not within the limit.
template <typename Condition>
[[nodiscard]] bool waitUntil(Condition condition,
                             std::chrono::milliseconds limit = std::chrono::seconds(10))
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        // Events wake the loop at once; the timer is for what other threads change silently.
        QEventLoop loop;
        QTimer::singleShot(std::chrono::milliseconds(5), &loop, &QEventLoop::quit);
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace Velloro
