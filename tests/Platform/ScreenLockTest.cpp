#include "Platform/Linux/Desktop/LinuxScreenLock.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/X11KeyTestBase.h"
#include "Support/WaitUntil.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QSignalSpy>

using namespace std::chrono_literals;

namespace Velloro {
namespace {

/// Screen savers and a login manager on a connection of their own, which answer as the test wants.
class Desktop : public QDBusVirtualObject
{
public:
    Desktop() { bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath); }
    ~Desktop() override
    {
        bus = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(u"velloro-test-lock"_s);
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (!isAnswering)
            return true;
        QVariant answer;
        if (message.member() == u"GetActive")
            answer = isActive;
        else if (message.member() == u"GetSession" && message.arguments() == QVariantList{u"7"_s})
            answer = QVariant::fromValue(QDBusObjectPath(sessionPath));
        else if (message.arguments().value(1).toString() == u"Id")
            answer = QVariant::fromValue(QDBusVariant(u"7"_s));
        else if (message.arguments().value(1).toString() == u"LockedHint"
                 && message.path() == sessionPath)
            answer = QVariant::fromValue(QDBusVariant(isHinted));
        ++answers;
        connection.send(answer.isValid()
                            ? message.createReply(answer)
                            : message.createErrorReply(QDBusError::UnknownMethod, u""_s));
        return true;
    }

    void tellActive(const QString &name, bool active)
    {
        QDBusMessage signal = QDBusMessage::createSignal(u"/somewhere"_s, name, u"ActiveChanged"_s);
        signal << active;
        bus.send(signal);
    }
    void tellHint(const QString &path, bool hint)
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, u"org.freedesktop.DBus.Properties"_s,
                                                         u"PropertiesChanged"_s);
        signal << u"org.freedesktop.login1.Session"_s << QVariantMap{{u"LockedHint"_s, hint}}
               << QStringList();
        bus.send(signal);
    }

    const QString sessionPath = u"/org/freedesktop/login1/session/_37"_s;
    QDBusConnection bus
        = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"velloro-test-lock"_s);
    bool isAnswering = true;
    bool isActive = false;
    bool isHinted = false;
    int answers = 0;
};

class DBusLockStateTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QDBusConnection::sessionBus().isConnected())
            GTEST_SKIP() << "needs a session bus";
        ASSERT_TRUE(desktop.bus.registerService(mate));
        ASSERT_TRUE(desktop.bus.registerService(u"org.freedesktop.login1"_s));
    }
    /// One bus is both.
    void start()
    {
        state = std::make_unique<DBusLockState>(QDBusConnection::sessionBus(),
                                                qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
        locks = std::make_unique<QSignalSpy>(state.get(), &DBusLockState::locked);
    }
    bool becomes(bool isLocked)
    {
        return waitUntil([&] { return state->isLocked() == isLocked; });
    }

    const QString mate = u"org.mate.ScreenSaver"_s;
    Desktop desktop;
    std::unique_ptr<DBusLockState> state;
    std::unique_ptr<QSignalSpy> locks;
};

TEST_F(DBusLockStateTest, followsScreenSaversAndTheLoginManager)
{
    start();
    ASSERT_TRUE(waitUntil([&] { return desktop.answers == 4; })) << "all have been asked";
    EXPECT_FALSE(state->isLocked());
    int times = 0;
    for (const char *name : {"org.freedesktop.ScreenSaver", "org.cinnamon.ScreenSaver",
                             "org.mate.ScreenSaver", "org.xfce.ScreenSaver"}) {
        for (const bool active : {true, false}) {
            desktop.tellActive(QString::fromLatin1(name), active);
            EXPECT_TRUE(becomes(active)) << name;
        }
        EXPECT_EQ(locks->count(), ++times);
    }

    // Another user's session says nothing about this one.
    desktop.tellHint(u"/org/freedesktop/login1/session/_38"_s, true);
    for (const bool active : {true, false}) {
        desktop.tellActive(mate, active);
        EXPECT_TRUE(becomes(active));
    }
    // When two say so it is locked once, and until the last one, which ends here, holds no lock.
    desktop.tellHint(desktop.sessionPath, true);
    EXPECT_TRUE(becomes(true));
    desktop.tellActive(mate, true);
    desktop.tellHint(desktop.sessionPath, false);
    desktop.bus.unregisterService(mate);
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(locks->count(), times + 2);
    desktop.isActive = true;
    desktop.bus.registerService(mate);
    EXPECT_TRUE(becomes(true));
}

TEST_F(DBusLockStateTest, aBlankedScreenIsNotLockedWhereTheLoginManagerTellsOfLocks)
{
    const QString gnome = u"org.gnome.ScreenSaver"_s;
    start();
    ASSERT_TRUE(waitUntil([&] { return desktop.answers == 4; }));
    for (const bool isBlanked : {false, true}) {
        desktop.tellActive(gnome, isBlanked);
        for (const bool hint : {true, false}) {
            desktop.tellHint(desktop.sessionPath, hint);
            EXPECT_TRUE(becomes(hint));
        }
    }
    // The other's word comes after the one that is not counted.
    desktop.tellActive(mate, true);
    EXPECT_TRUE(becomes(true));
    desktop.tellActive(mate, false);
    EXPECT_TRUE(becomes(false));
    EXPECT_EQ(locks->count(), 3);

    desktop.bus.unregisterService(u"org.freedesktop.login1"_s);
    start();
    desktop.tellActive(gnome, true);
    EXPECT_TRUE(becomes(true)) << "there is nobody else to tell";
}

TEST_F(DBusLockStateTest, knowsWhatWasLockedBefore)
{
    for (bool Desktop::*lock : {&Desktop::isActive, &Desktop::isHinted}) {
        desktop.*lock = true;
        start();
        EXPECT_TRUE(becomes(true));
        desktop.*lock = false;
    }
}

using X11ScreenLockTest = X11KeyTestBase;

TEST_F(X11ScreenLockTest, tellsWhetherTheKeyboardIsTaken)
{
    X11KeyboardGrab grab(connection);
    EXPECT_FALSE(grab.isHeldByAnother());
    const auto locker = X11Connection::open();
    const auto sync = [&] { (void)X11Keyboards(locker).logicallyHeld(); };
    const XcbReply<xcb_grab_keyboard_reply_t> taken(xcb_grab_keyboard_reply(
        locker->xcb(),
        xcb_grab_keyboard(locker->xcb(), 0, locker->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC),
        nullptr));
    ASSERT_EQ(taken->status, XCB_GRAB_STATUS_SUCCESS);
    // What the user holds then is not released for the application that sees it held.
    keyboard.press({Key::leftShift});
    EXPECT_TRUE(grab.isHeldByAnother());
    EXPECT_TRUE(X11Keyboards(connection).logicallyHeld()[Key::leftShift]);
    keyboard.release({Key::leftShift});

    // At a press of the hotkey, too, whose own grab does not hide it.
    X11HotkeyRegistration hotkeys(connection);
    std::vector<bool> answers;
    hotkeys.setPressedHandler([&](auto) { answers.push_back(grab.isHeldByAnother()); });
    ASSERT_TRUE(hotkeys.registerHotkey({49, ClassicMask::command}, {1, 1}));
    const auto press = [&] {
        keyboard.press({Key::leftSuper, Key::space});
        const size_t count = answers.size();
        EXPECT_TRUE(waitUntil([&] { return answers.size() > count; }));
        keyboard.release({Key::space, Key::leftSuper});
    };
    press();
    xcb_ungrab_keyboard(locker->xcb(), XCB_CURRENT_TIME);
    sync();
    press();
    // A desktop that waits for a tap on Super has the keyboard only while Super is held.
    xcb_grab_key(locker->xcb(), 1, locker->root(), XCB_MOD_MASK_ANY, Key::leftSuper,
                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    sync();
    press();
    xcb_ungrab_key(locker->xcb(), Key::leftSuper, locker->root(), XCB_MOD_MASK_ANY);
    // As window managers have it.
    const uint32_t keys = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const uint32_t modifiers = 0;
    XcbReply<xcb_input_xi_passive_grab_device_reply_t>(xcb_input_xi_passive_grab_device_reply(
        locker->xcb(),
        xcb_input_xi_passive_grab_device(
            locker->xcb(), XCB_CURRENT_TIME, locker->root(), 0, Key::leftSuper,
            X11Keyboards(locker).masterKeyboards().front(), 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
            XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
            XCB_INPUT_GRAB_OWNER_NO_OWNER, &keys, &modifiers),
        nullptr));
    press();
    EXPECT_EQ(answers, (std::vector<bool>{true, false, false, false}));
    EXPECT_FALSE(grab.isHeldByAnother());
    EXPECT_TRUE(X11Keyboards(connection).logicallyHeld().none());
}

/// Another program's window, which may be a locker's.
class CoveringWindow
{
public:
    CoveringWindow(bool isManaged, bool isLarge, bool takesKeyboard)
    {
        xcb_connection_t *xcb = m_client->xcb();
        const XcbReply<xcb_get_geometry_reply_t> screen(
            xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, m_client->root()), nullptr));
        const uint16_t height = isLarge ? screen->height : screen->height / 2;
        const uint32_t overridesRedirection = 1;
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, m_window, m_client->root(), 0, 0,
                          screen->width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overridesRedirection);
        if (isManaged) {
            const xcb_window_t inFrame = xcb_generate_id(xcb);
            xcb_create_window(xcb, XCB_COPY_FROM_PARENT, inFrame, m_window, 0, 0, 1, 1, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            const xcb_atom_t state = m_client->atom("WM_STATE");
            const uint32_t normal = 1;
            xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, inFrame, state, state, 32, 1, &normal);
        }
        xcb_map_window(xcb, m_window);
        if (takesKeyboard) {
            xcb_grab_keyboard(xcb, 0, m_client->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                              XCB_GRAB_MODE_ASYNC);
        }
        (void)X11Keyboards(m_client).logicallyHeld();
    }

private:
    std::shared_ptr<X11Connection> m_client = X11Connection::open();
    xcb_window_t m_window = xcb_generate_id(m_client->xcb());
};

TEST_F(X11ScreenLockTest, noticesALockerThatTellsNobody)
{
    const struct
    {
        const char *description;
        bool isManaged;
        bool isLarge;
        bool takesKeyboard;
        bool isLocker;
    } cases[] = {
        {"a splash screen", false, true, false, false},
        {"a menu", false, false, true, false},
        {"a virtual machine", true, true, true, false},
        {"a locker", false, true, true, true},
    };
    X11LockerWatch watch(connection, 10ms);
    QSignalSpy lockers(&watch, &X11LockerWatch::lockerAppeared);
    for (const auto &[description, isManaged, isLarge, takesKeyboard, isLocker] : cases) {
        SCOPED_TRACE(description);
        const CoveringWindow window(isManaged, isLarge, takesKeyboard);
        if (isLocker) {
            EXPECT_TRUE(waitUntil([&] { return lockers.count() == 1; }));
            continue;
        }
        bool hasLooked = false;
        QTimer::singleShot(200ms, [&] { hasLooked = true; });
        ASSERT_TRUE(waitUntil([&] { return hasLooked; }));
        EXPECT_EQ(lockers.count(), 0);
    }
}

} // namespace
} // namespace Velloro
