#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Files/LinuxFileSystem.h"
#include "Platform/Linux/Desktop/SessionBus.h"

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
    DBusCall::whenAnswered(
        SessionBus::connection().asyncCall(notify(title, informativeText)), &m_waiting,
        [support, folder, seen](const QDBusMessage &reply) {
            if (reply.type() != QDBusMessage::ReplyMessage || support.isEmpty())
                return;
            // Where the file can't be made, the notification comes again.
            QFile file(seen);
            if (LinuxFileSystem().createDirectory(folder))
                (void)file.open(QIODevice::WriteOnly);
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
