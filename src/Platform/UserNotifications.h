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
    /// Shows a notification that this user has not seen yet. It counts as seen, for later runs too,
    /// once the desktop has taken it. `identifier` is its name, of letters and hyphens.
    virtual void deliverOnce(const QString &identifier, const QString &title,
                             const QString &informativeText)
        = 0;
};

} // namespace Velloro
