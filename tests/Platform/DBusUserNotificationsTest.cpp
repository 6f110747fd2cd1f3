#include "Platform/Linux/Desktop/DBusUserNotifications.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
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
        connection.send(refuses ? message.createErrorReply(QDBusError::LimitsExceeded, u"No"_s)
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
    auto bus
        = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QString::fromLatin1(name));
    ASSERT_TRUE(bus.registerVirtualObject(u"/org/freedesktop/Notifications"_s, &service));
    if (!bus.registerService(u"org.freedesktop.Notifications"_s))
        GTEST_SKIP() << "another notification service runs on this session bus";

    DBusUserNotifications notifications;
    notifications.deliver(u"Velloro"_s, u"Click – on a field."_s, {});
    ASSERT_TRUE(waitUntil([&] { return !service.messages.isEmpty(); }));
    ASSERT_EQ(service.messages.size(), 1);
    const QDBusMessage message = service.messages.first();
    EXPECT_EQ(message.member(), u"Notify"_s);
    EXPECT_EQ(message.signature(), u"susssasa{sv}i"_s);
    const QVariantList arguments = message.arguments();
    ASSERT_EQ(arguments.size(), 8);
    EXPECT_EQ(arguments.at(0).toString(), u"Velloro"_s);
    EXPECT_EQ(arguments.at(2).toString(), u"velloro"_s);
    EXPECT_EQ(arguments.at(3).toString(), u"Velloro"_s);
    EXPECT_EQ(arguments.at(4).toString(), u"Click – on a field."_s);
    EXPECT_EQ(qdbus_cast<QVariantMap>(arguments.at(6)).value(u"suppress-sound"_s), true);

    // What the desktop refused has not been taken.
    QStringList taken;
    const auto deliver = [&](const QString &text) {
        notifications.deliver(u"Velloro"_s, text, [&taken, text] { taken << text; });
    };
    service.refuses = true;
    deliver(u"refused"_s);
    ASSERT_TRUE(waitUntil([&] { return service.messages.size() == 2; }));
    service.refuses = false;
    deliver(u"accepted"_s);
    ASSERT_TRUE(waitUntil([&] { return !taken.isEmpty(); }));
    EXPECT_EQ(taken, QStringList{u"accepted"_s});

    bus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
}

} // namespace
} // namespace Velloro
