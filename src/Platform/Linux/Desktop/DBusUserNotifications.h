#pragma once

#include "Platform/UserNotifications.h"

#include <QDBusMessage>
#include <QObject>

namespace Velloro {

/// Desktop notifications through the desktop's notification service on the session bus.
class DBusUserNotifications final : public UserNotifications
{
public:
    void deliver(const QString &title, const QString &informativeText,
                 std::function<void()> onTaken) override;

private:
    [[nodiscard]] static QDBusMessage notify(const QString &title, const QString &informativeText);

    /// The parent of those who wait for an answer.
    QObject m_waiting;
};

} // namespace Velloro
