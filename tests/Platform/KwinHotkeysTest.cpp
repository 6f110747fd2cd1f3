#include "Platform/HotkeyEvents.h"
#include "Platform/Linux/Wayland/Hotkeys/KGlobalAccelHotkeys.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/PhysicalKeyboard.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <csignal>
#include <fake-input-client.h>
#include <gmock/gmock.h>
#include <sys/prctl.h>

namespace Velloro {
namespace {

/// KDE's compositor with its own service for shortcuts, on which the test presses keys.
class KwinHotkeysTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QString program = QStandardPaths::findExecutable(u"kwin_wayland"_s);
        if (program.isEmpty())
            GTEST_SKIP() << "kwin_wayland not installed";
        if (!QDBusConnection::sessionBus().isConnected())
            GTEST_SKIP() << "needs a session bus";
        qputenv("XDG_RUNTIME_DIR", directory.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", directory.path().toLocal8Bit());
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"DISPLAY"_s);
        environment.remove(u"QT_QPA_PLATFORM"_s);
        environment.insert(u"KWIN_WAYLAND_NO_PERMISSION_CHECKS"_s, u"1"_s);
        environment.insert(u"LIBGL_ALWAYS_SOFTWARE"_s, u"1"_s);
        kwin.setProcessEnvironment(environment);
        kwin.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        // A copy has none of the file's capabilities, which a container may not be allowed.
        const QString copy = directory.filePath(u"kwin_wayland"_s);
        ASSERT_TRUE(QFile::copy(program, copy));
        kwin.setProcessChannelMode(QProcess::MergedChannels);
        kwin.start(copy, {u"--virtual"_s, u"--no-lockscreen"_s, u"--socket"_s, u"wayland-0"_s});
        const QString socket = directory.filePath(u"wayland-0"_s);
        ASSERT_TRUE(waitUntil(
            [&] { return kwin.state() == QProcess::NotRunning || QFile::exists(socket); }));
        if (kwin.state() == QProcess::NotRunning)
            GTEST_SKIP() << kwin.readAll().toStdString();
        display = WaylandConnection::open(QDeadlineTimer(10'000), socket.toLocal8Bit());
        ASSERT_TRUE(display);
        input = display->bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface, 4);
        ASSERT_TRUE(input);
        org_kde_kwin_fake_input_authenticate(input, "test", "keys");
    }
    void TearDown() override
    {
        if (input)
            org_kde_kwin_fake_input_destroy(input);
        kwin.kill();
        kwin.waitForFinished();
    }
    /// Until it has dealt with the calls before.
    static void awaitKwin()
    {
        (void)QDBusConnection::sessionBus().call(
            QDBusMessage::createMethodCall(u"org.kde.kglobalaccel"_s, u"/kglobalaccel"_s,
                                           u"org.freedesktop.DBus.Peer"_s, u"Ping"_s));
    }
    void press(std::initializer_list<uint8_t> keys) { move(keys, 1); }
    void release(std::initializer_list<uint8_t> keys) { move(keys, 0); }
    void move(std::initializer_list<uint8_t> keys, uint32_t state)
    {
        for (const uint8_t key : keys)
            org_kde_kwin_fake_input_keyboard_key(input, key - 8U, state);
        display->roundtrip(QDeadlineTimer(10'000));
    }

    QTemporaryDir directory;
    QProcess kwin;
    std::shared_ptr<WaylandConnection> display;
    org_kde_kwin_fake_input *input = nullptr;
};

TEST_F(KwinHotkeysTest, tellsOfPressesAndOfWhatIsTaken)
{
    // The seat has a keyboard once a key was pressed.
    press({Key::menu});
    release({Key::menu});
    const auto keymap = std::make_shared<WaylandKeymap>(display);
    KGlobalAccelHotkeys hotkeys(keymap, QDBusConnection::sessionBus());
    HotkeyEvents events;
    events.follow(hotkeys);
    std::optional<bool> isOffered;
    ASSERT_TRUE(waitUntil([&] {
        isOffered.reset();
        hotkeys.look([&](bool offered) { isOffered = offered; });
        return waitUntil([&] { return isOffered.has_value(); }) && *isOffered;
    }));
    hotkeys.bind({49, ClassicMask::option});
    ASSERT_TRUE(events.become(u"status 0"));
    press({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press"));
    release({Key::space, Key::leftAlt});
    EXPECT_TRUE(events.become(u"release"));
    press({Key::leftAlt, Key::space});
    release({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press, release"));

    // Of KDE's own.
    hotkeys.bind({118, ClassicMask::option});
    EXPECT_TRUE(events.become(u"status 10"));
    hotkeys.bind({96, ClassicMask::control | ClassicMask::shift});
    ASSERT_TRUE(events.become(u"status 0"));
    auto through = hotkeys.letShortcutsThrough();
    awaitKwin();
    press({Key::leftControl, Key::leftShift, Key::f5});
    release({Key::f5, Key::leftShift, Key::leftControl});
    through.reset();
    awaitKwin();
    press({Key::leftControl, Key::leftShift, Key::f5});
    release({Key::f5, Key::leftShift, Key::leftControl});
    EXPECT_TRUE(events.become(u"press, release"));
    hotkeys.bind({97, 0});
    EXPECT_TRUE(events.become(u"status 0")) << "what was blocked came after all";
}

} // namespace
} // namespace Velloro
