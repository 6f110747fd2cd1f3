#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Platform/Linux/Desktop/SessionBus.h"

#include <QDBusPendingCallWatcher>
#include <QVariantMap>

namespace Velloro {

void DBusUserNotifications::deliver(const QString &title, const QString &informativeText,
                                    std::function<void()> onTaken)
{
    auto *watcher = new QDBusPendingCallWatcher(
        SessionBus::connection().asyncCall(notify(title, informativeText)), &m_waiting);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_waiting,
                     [watcher, onTaken = std::move(onTaken)] {
                         watcher->deleteLater();
                         // The answer is the notification's number, or an error.
                         if (onTaken && !watcher->isError())
                             onTaken();
                     });
}

QDBusMessage DBusUserNotifications::notify(const QString &title, const QString &informativeText)
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
    return message;
}

} // namespace Velloro
