#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Desktop/SessionBus.h"

#include <QVariantMap>

namespace Velloro {

void DBusUserNotifications::deliver(const QString &title, const QString &informativeText,
                                    std::function<void()> onTaken)
{
    DBusCall::whenAnswered(SessionBus::connection().asyncCall(notify(title, informativeText)),
                           &m_waiting, [onTaken = std::move(onTaken)](const QDBusMessage &reply) {
                               // The answer is the notification's number, or an error.
                               if (onTaken && reply.type() == QDBusMessage::ReplyMessage)
                                   onTaken();
                           });
}

QDBusMessage DBusUserNotifications::notify(const QString &title, const QString &informativeText)
{
    constexpr uint replacesNothing = 0;
    constexpr int serversOwnTimeout = -1;
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    return DBusCall::make(
        service, QStringLiteral("/org/freedesktop/Notifications"), service,
        QStringLiteral("Notify"),
        {QStringLiteral("Velloro"), replacesNothing, QStringLiteral("velloro"), title,
         informativeText, QStringList(),
         QVariantMap{{QStringLiteral("suppress-sound"), true}}, serversOwnTimeout});
}

} // namespace Velloro
