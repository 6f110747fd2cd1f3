#pragma once

#include <QString>

namespace Velloro {

/// Desktop notifications. Main thread only; delivery is asynchronous and its failure silent.
class UserNotifications
{
public:
    virtual ~UserNotifications() = default;

    /// Shows a notification without a sound.
    virtual void deliver(const QString &title, const QString &informativeText) = 0;
};

} // namespace Velloro
