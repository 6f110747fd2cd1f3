#pragma once

#include "Platform/UserNotifications.h"

namespace Velloro {

/// Desktop notifications through the desktop's notification service on the session bus.
class DBusUserNotifications final : public UserNotifications
{
public:
    void deliver(const QString &title, const QString &informativeText) override;
};

} // namespace Velloro
