#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace Velloro {

/// Handles the events of this thread until `done` says so; false when the deadline came first.
template <typename Condition>
bool loopUntil(Condition done, const QDeadlineTimer &deadline)
{
    QEventLoop loop;
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QTimer end;
        end.setSingleShot(true);
        end.start(static_cast<int>(deadline.remainingTime()));
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace Velloro
