#include "Platform/Linux/Wayland/Hotkeys/PortalHotkeys.h"

#include "Platform/HotkeyEvents.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/ScriptedService.h"
#include "Platform/WaylandKeyboard.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace Velloro {
namespace {

using ::testing::ElementsAre;

const QString root = u"/org/freedesktop/portal/desktop"_s;
const QString shortcuts = u"org.freedesktop.portal.GlobalShortcuts"_s;

/// The portal, whose dialogs the test answers.
class Portal : public ScriptedService
{
public:
    Portal()
        : ScriptedService(u"org.freedesktop.portal.Desktop"_s)
    {
    }

    /// What the user answers in the dialog: 1 declines; nothing leaves it open.
    std::optional<uint> confirmation = 0;
    uint version = 1;
    /// What was asked for in the last dialog.
    QString trigger;
    QString session;
    /// The objects of requests and sessions that were closed.
    QStringList closed;

    void key(const QString &what, const QString &id = u"dictate"_s)
    {
        emitSignal(
            root, shortcuts, what,
            {QVariant::fromValue(QDBusObjectPath(session)), id, qulonglong(1), QVariantMap()});
    }
    void closeSession()
    {
        emitSignal(session, u"org.freedesktop.portal.Session"_s, u"Closed"_s, {QVariantMap()});
    }

protected:
    bool answer(const QDBusMessage &message) override
    {
        if (message.member() == u"Get") {
            bus.send(version > 0 ? message.createReply(QVariant::fromValue(QDBusVariant(version)))
                                 : message.createErrorReply(QDBusError::InvalidArgs, u"none"_s));
            return true;
        }
        if (message.member() == u"Close")
            closed << message.path();
        if (message.member() != u"CreateSession" && message.member() != u"BindShortcuts") {
            bus.send(message.createReply());
            return true;
        }
        const auto options = qdbus_cast<QVariantMap>(message.arguments().constLast());
        const QString sender = message.service().mid(1).replace(u'.', u'_');
        const QString request
            = u"%1/request/%2/%3"_s.arg(root, sender, options.value(u"handle_token"_s).toString());
        if (message.member() == u"CreateSession") {
            session = u"%1/session/%2/%3"_s.arg(root, sender).arg(++m_sessions);
            // As from a portal that is quicker than its own reply.
            respond(request, 0, {{u"session_handle"_s, session}});
        } else {
            read(message.arguments().value(1).value<QDBusArgument>());
            // Confirmed is what was asked for.
            if (confirmation)
                respond(request, *confirmation, {{u"shortcuts"_s, message.arguments().value(1)}});
        }
        bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        return true;
    }

private:
    void respond(const QString &request, uint code, const QVariantMap &results)
    {
        emitSignal(request, u"org.freedesktop.portal.Request"_s, u"Response"_s, {code, results});
    }
    void read(const QDBusArgument &argument)
    {
        argument.beginArray();
        argument.beginStructure();
        QString id;
        QVariantMap properties;
        argument >> id >> properties;
        EXPECT_EQ(id, u"dictate");
        trigger = properties.value(u"preferred_trigger"_s).toString();
    }

    int m_sessions = 0;
};

class PortalHotkeysTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDBusConnection::sessionBus().isConnected())
            GTEST_SKIP() << "needs a session bus";
        ASSERT_TRUE(portal.start());
    }
    void TearDown() override
    {
        hotkeys.reset();
        QDBusConnection::disconnectFromBus(u"velloro-test"_s);
    }
    bool look()
    {
        hotkeys = std::make_unique<PortalHotkeys>(
            std::make_shared<WaylandKeymap>(keymapText("us")),
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"velloro-test"_s));
        events.follow(*hotkeys);
        std::optional<bool> isOffered;
        hotkeys->look([&](bool offered) { isOffered = offered; });
        EXPECT_TRUE(waitUntil([&] { return isOffered.has_value(); }));
        return isOffered.value_or(false);
    }
    /// Has the combination bound, and gives what became of it.
    void bind()
    {
        ASSERT_TRUE(look());
        hotkeys->bind(altSpace);
        ASSERT_TRUE(events.become(u"status 0"));
    }

    Portal portal;
    HotkeyEvents events;
    std::unique_ptr<PortalHotkeys> hotkeys;
    static constexpr KeyCombination altSpace{49, ClassicMask::option};
};

TEST_F(PortalHotkeysTest, isOfferedByAPortalThatHasShortcuts)
{
    portal.version = 0;
    EXPECT_FALSE(look());
    portal.version = 1;
    EXPECT_TRUE(look());
    portal.stop();
    EXPECT_FALSE(look());
}

TEST_F(PortalHotkeysTest, tellsPressAndReleaseOfItsOwnShortcut)
{
    bind();
    EXPECT_EQ(portal.trigger, u"ALT+space");
    EXPECT_EQ(portal.calls.first(), u"Register") << "known by its name before all else";
    portal.key(u"Activated"_s, u"another"_s);
    for (const char16_t *what : {u"Activated", u"Deactivated", u"Activated", u"Activated"})
        portal.key(QString::fromUtf16(what));
    EXPECT_TRUE(events.become(u"press, release, press, release, press"));

    const QString first = portal.session;
    hotkeys->bind({2, ClassicMask::command | ClassicMask::control | ClassicMask::shift});
    EXPECT_TRUE(events.become(u"release, status 0"));
    EXPECT_EQ(portal.trigger, u"CTRL+SHIFT+LOGO+d");
    EXPECT_THAT(portal.closed, ElementsAre(first));
    const QString second = portal.session;
    hotkeys.reset();
    EXPECT_TRUE(waitUntil([&] { return portal.closed.contains(second); }));
}

TEST_F(PortalHotkeysTest, saysThatTheUserDeclined)
{
    portal.confirmation = 1;
    ASSERT_TRUE(look());
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 256"));
    // A dialog that is still open goes with what it was for.
    portal.confirmation.reset();
    portal.trigger.clear();
    hotkeys->bind(altSpace);
    EXPECT_TRUE(waitUntil([this] { return !portal.trigger.isEmpty(); }));
    portal.confirmation = 0;
    hotkeys->bind({96, 0});
    EXPECT_TRUE(events.become(u"status 0"));
    EXPECT_THAT(portal.closed,
                ::testing::Contains(
                    ::testing::Property(&QString::toStdString, ::testing::HasSubstr("/request/"))));
}

TEST_F(PortalHotkeysTest, bindsAgainOnceWhenTheSessionIsClosed)
{
    bind();
    portal.key(u"Activated"_s);
    portal.closeSession();
    EXPECT_TRUE(events.become(u"press, release, status 0"));
    portal.closeSession();
    EXPECT_TRUE(events.become(u"status 1"));
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    portal.closeSession();
    EXPECT_TRUE(events.become(u"status 0"));
    portal.key(u"Activated"_s);
    portal.closeSession();
    EXPECT_TRUE(events.become(u"press, release, status 0")) << "that one has served";
}

TEST_F(PortalHotkeysTest, bindsAgainAtAPortalThatIsStartedAgain)
{
    bind();
    portal.key(u"Activated"_s);
    EXPECT_TRUE(events.become(u"press"));
    portal.stop();
    EXPECT_TRUE(events.become(u"release, status 1"));
    portal.calls.clear();
    ASSERT_TRUE(portal.start());
    EXPECT_TRUE(events.become(u"status 0"));
    EXPECT_THAT(portal.calls, ElementsAre(u"Register"_s, u"CreateSession"_s, u"BindShortcuts"_s));
    portal.key(u"Activated"_s);
    EXPECT_TRUE(events.become(u"press"));
}

} // namespace
} // namespace Velloro
