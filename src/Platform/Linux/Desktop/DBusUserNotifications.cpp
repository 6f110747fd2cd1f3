#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Base/StringLiterals.h"
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
    const QString service = u"org.freedesktop.Notifications"_s;
    return DBusCall::make(service, u"/org/freedesktop/Notifications"_s, service, u"Notify"_s,
                          {u"Velloro"_s, replacesNothing, u"velloro"_s, title, informativeText,
                           QStringList(), QVariantMap{{u"suppress-sound"_s, true}},
                           serversOwnTimeout});
}

} // namespace Velloro
