#include "Platform/Linux/DBusUserNotifications.h"

#include "Platform/Linux/SessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QVariantMap>

namespace Velloro {

void DBusUserNotifications::deliver(const QString &title, const QString &informativeText)
{
    constexpr uint replacesNothing = 0;
    constexpr int serversOwnTimeout = -1;
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    message.setArguments(
        {QStringLiteral("Velloro"), replacesNothing, QStringLiteral("velloro"), title,
         informativeText, QStringList(),
         QVariantMap{{QStringLiteral("suppress-sound"), true}}, serversOwnTimeout});
    // Nobody waits for the answer, which is the notification's number or an error.
    SessionBus::connection().asyncCall(message);
}

} // namespace Velloro
