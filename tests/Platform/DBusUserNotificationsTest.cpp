#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

/// A notification service that remembers what it is asked to show.
class NotificationService : public QDBusVirtualObject
{
public:
    QList<QDBusMessage> messages;
    bool refuses = false;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        messages.append(message);
        connection.send(refuses ? message.createErrorReply(QDBusError::LimitsExceeded, u"No"_qs)
                                : message.createReply(QVariant(1U)));
        return true;
    }
};

TEST(DBusUserNotificationsTest, AsksTheDesktopForASilentNotification)
{
    constexpr auto name = "velloro-test-notifications";
    if (!QDBusConnection::sessionBus().isConnected())
        GTEST_SKIP() << "needs a session bus";
    NotificationService service;
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                             QString::fromLatin1(name));
    ASSERT_TRUE(bus.registerVirtualObject(u"/org/freedesktop/Notifications"_qs, &service));
    if (!bus.registerService(u"org.freedesktop.Notifications"_qs))
        GTEST_SKIP() << "another notification service runs on this session bus";

    DBusUserNotifications notifications;
    notifications.deliver(u"Velloro"_qs, u"Click – on a field."_qs);
    ASSERT_TRUE(waitUntil([&] { return !service.messages.isEmpty(); }));
    ASSERT_EQ(service.messages.size(), 1);
    const QDBusMessage message = service.messages.first();
    EXPECT_EQ(message.member(), u"Notify"_qs);
    EXPECT_EQ(message.signature(), u"susssasa{sv}i"_qs);
    const QVariantList arguments = message.arguments();
    ASSERT_EQ(arguments.size(), 8);
    EXPECT_EQ(arguments.at(0).toString(), u"Velloro"_qs);
    EXPECT_EQ(arguments.at(2).toString(), u"velloro"_qs);
    EXPECT_EQ(arguments.at(3).toString(), u"Velloro"_qs);
    EXPECT_EQ(arguments.at(4).toString(), u"Click – on a field."_qs);
    EXPECT_EQ(qdbus_cast<QVariantMap>(arguments.at(6)).value(u"suppress-sound"_qs), true);

    // What is to be said once is said again only until the desktop has taken it, in later runs too.
    const QTemporaryDir data;
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", data.path().toUtf8());
    const auto deliverOnce = [&] {
        DBusUserNotifications ofThisRun;
        const qsizetype count = service.messages.size();
        ofThisRun.deliverOnce(u"missing-tray"_qs, u"Velloro"_qs, u"There is no tray."_qs);
        ofThisRun.deliver(u"Velloro"_qs, u"after it"_qs);
        const auto isLast = [&] {
            return service.messages.last().arguments().at(4).toString() == u"after it";
        };
        EXPECT_TRUE(waitUntil([&] { return service.messages.size() > count && isLast(); }));
        const QString seen = data.filePath(u"Velloro/Notifications/missing-tray"_qs);
        EXPECT_EQ(waitUntil([&] { return QFile::exists(seen); },
                            std::chrono::milliseconds(service.refuses ? 200 : 5000)),
                  !service.refuses);
        return service.messages.size() - count == 2;
    };
    service.refuses = true;
    EXPECT_TRUE(deliverOnce());
    service.refuses = false;
    EXPECT_TRUE(deliverOnce());
    EXPECT_FALSE(deliverOnce());
    qputenv("XDG_DATA_HOME", before);

    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
}

} // namespace
} // namespace Velloro
