#pragma once

#include <QString>
#include <functional>

namespace Velloro {

/// Desktop notifications. Main thread only; delivery is asynchronous and its failure silent.
class UserNotifications
{
public:
    virtual ~UserNotifications() = default;

    /// Shows a notification without a sound. `onTaken` is called later, on the main thread, once
    /// the desktop has accepted it; never if it has not, or if this object is destroyed before.
    virtual void deliver(const QString &title, const QString &informativeText,
                         std::function<void()> onTaken = {})
        = 0;
};

} // namespace Velloro
