#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Platform/Linux/Files/LinuxFileSystem.h"
#include "Platform/Linux/Desktop/SessionBus.h"

#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QVariantMap>

namespace Velloro {

void DBusUserNotifications::deliver(const QString &title, const QString &informativeText)
{
    // Nobody waits for the answer, which is the notification's number or an error.
    SessionBus::connection().asyncCall(notify(title, informativeText));
}

void DBusUserNotifications::deliverOnce(const QString &identifier, const QString &title,
                                        const QString &informativeText)
{
    LinuxFileSystem fileSystem;
    const QString support = fileSystem.applicationSupportDirectory().value_or(QString());
    const QString folder = support + QStringLiteral("/Velloro/Notifications");
    const QString seen = folder + u'/' + identifier;
    if (!support.isEmpty() && fileSystem.fileExists(seen))
        return;
    auto *watcher = new QDBusPendingCallWatcher(
        SessionBus::connection().asyncCall(notify(title, informativeText)), &m_waiting);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_waiting,
                     [watcher, support, folder, seen] {
                         watcher->deleteLater();
                         if (watcher->isError() || support.isEmpty())
                             return;
                         // Where the file is unavailable, the notification is sent again.
                         QFile file(seen);
                         if (LinuxFileSystem().createDirectory(folder))
                             (void)file.open(QIODevice::WriteOnly);
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
