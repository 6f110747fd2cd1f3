#include "Platform/Linux/Wayland/Hotkeys/SwayHotkeys.h"

#include "Platform/HotkeyEvents.h"
#include "Platform/Linux/Wayland/Sway/SwayConfig.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"
#include "Platform/WaylandKeyboard.h"
#include "Support/SwayCompositor.h"

#include <QDir>
#include <QFile>

namespace Velloro {
namespace {

constexpr KeyCombination altSpace{49, ClassicMask::option};

class SwayHotkeysTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (const auto missing = SwayCompositor::missing(); !missing.isEmpty())
            GTEST_SKIP() << missing.join(u", "_s).toStdString() << " not installed";
        ASSERT_TRUE(sway.start());
        keyboard = std::make_unique<WaylandKeyboard>();
        user = SwaySocket::open();
        ASSERT_TRUE(user);
        QObject::connect(user.get(), &SwaySocket::eventReceived,
                         [this](SwaySocket::Event, const QJsonObject &content) {
                             bound << content[u"binding"_s][u"command"_s].toString();
                         });
        bool isHeard = false;
        user->subscribe({u"binding"_s}, [&](bool) { isHeard = true; });
        ASSERT_TRUE(user->dispatchUntil([&] { return isHeard; }, QDeadlineTimer(10'000)));
    }
    void start()
    {
        hotkeys = std::make_unique<SwayHotkeys>(
            std::make_shared<WaylandKeymap>(WaylandConnection::open()));
        events.follow(*hotkeys);
        bool isOffered = false;
        hotkeys->look([&](bool offered) { isOffered = offered; });
        ASSERT_TRUE(waitUntil([&] { return isOffered; }));
    }
    /// Has sway do something, and waits until it has done it.
    void command(const QByteArray &text)
    {
        bool isDone = false;
        user->send(SwaySocket::Request::runCommand, text,
                   [&](const QJsonDocument &) { isDone = true; });
        ASSERT_TRUE(user->dispatchUntil([&] { return isDone; }, QDeadlineTimer(10'000)));
    }
    /// Gives sway this configuration besides its own.
    void configure(const QByteArray &text)
    {
        QFile file(sway.path(u"config"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("xwayland disable\n" + text);
        file.close();
        command("reload");
    }
    /// The command of the binding that the user's press sets off.
    QString commandOf(std::initializer_list<uint8_t> keys)
    {
        bound.clear();
        keyboard->tap(keys);
        (void)waitUntil([this] { return !bound.isEmpty(); });
        return bound.value(0);
    }

    SwayCompositor sway;
    std::unique_ptr<WaylandKeyboard> keyboard;
    std::unique_ptr<SwaySocket> user;
    QStringList bound;
    std::unique_ptr<SwayHotkeys> hotkeys;
    HotkeyEvents events;
};

TEST_F(SwayHotkeysTest, tellsPressAndReleaseWhicheverKeyComesUpFirst)
{
    start();
    // In whichever mode sway is at the time.
    command("mode \"resize\" bindsym x nop; mode \"resize\"");
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    command("mode \"default\"");
    keyboard->press({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press"));
    keyboard->release({Key::space, Key::leftAlt});
    EXPECT_TRUE(events.become(u"release"));
    keyboard->press({Key::leftAlt, Key::space});
    keyboard->release({Key::leftAlt});
    EXPECT_TRUE(events.become(u"press"));
    keyboard->release({Key::space});
    EXPECT_TRUE(events.become(u"release"));
    // With another modifier it is another combination.
    keyboard->tap({Key::leftShift, Key::leftAlt, Key::space});

    hotkeys->bind({2, ClassicMask::command | ClassicMask::control | ClassicMask::shift});
    EXPECT_TRUE(events.become(u"status 0"));
    keyboard->tap({Key::leftAlt, Key::space});
    constexpr uint8_t d = 40;
    keyboard->tap({Key::leftControl, Key::leftShift, Key::leftSuper, d});
    EXPECT_TRUE(events.become(u"press, release"));

    hotkeys->bind({105 + 0x1000, 0});
    EXPECT_TRUE(events.become(u"status 2"));
}

TEST_F(SwayHotkeysTest, makesUpForALostRelease)
{
    start();
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    keyboard->press({Key::leftAlt, Key::space});
    keyboard->tap({Key::a});
    keyboard->release({Key::space, Key::leftAlt});
    keyboard->tap({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press, release, press, release"));
    EXPECT_EQ(
        bound,
        QStringList({u"nop velloro press"_s, u"nop velloro press"_s, u"nop velloro release"_s}))
        << "sway tells of every release";

    // Nor is one told when the bindings are gone meanwhile.
    keyboard->press({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press"));
    hotkeys->unbind();
    EXPECT_TRUE(events.become(u"release"));
}

TEST_F(SwayHotkeysTest, leavesToTheUserWhatHisConfigurationBinds)
{
    QDir(sway.path(u""_s)).mkdir(u"more"_s);
    QFile included(sway.path(u"more/keys"_s));
    ASSERT_TRUE(included.open(QIODevice::WriteOnly));
    included.write("bindsym Alt+space nop user\n");
    included.close();
    configure("bindsym Mod1+space nop user\n");
    start();
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 10"));
    EXPECT_EQ(commandOf({Key::leftAlt, Key::space}), u"nop user");
    hotkeys->bind({96, 0});
    EXPECT_TRUE(events.become(u"status 0"));
    EXPECT_EQ(commandOf({Key::f5}), u"nop velloro press");
    EXPECT_TRUE(events.become(u"press, release"));

    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 10"));
    for (const char *config :
         {"set $mod Mod1\nset $modifier Mod4\nbindsym --no-repeat $mod+space exec x\n",
          "bindcode {\n  Mod1+65 nop user\n}\n", "include more/*\n"}) {
        configure(config);
        EXPECT_TRUE(events.become(u"status 10")) << config;
    }
    configure("bindsym Mod1+Shift+space nop user\nbindsym Mod1+b nop user\n"
              "mode \"m\" {\n  bindsym Mod1+space nop user\n}\n");
    EXPECT_TRUE(events.become(u"status 0"));
    hotkeys->bind({11, ClassicMask::option});
    EXPECT_TRUE(events.become(u"status 10"));
}

TEST_F(SwayHotkeysTest, goesByTheLayoutInWhatTheUserHasBound)
{
    configure("bindsym Mod1+y nop user\n");
    keyboard->tap({Key::a});
    start();
    hotkeys->bind({6, ClassicMask::option});
    EXPECT_TRUE(events.become(u"status 0"));
    // Another keyboard, on which that place is a Y.
    WaylandKeyboard german("de");
    german.tap({Key::a});
    EXPECT_TRUE(events.become(u"status 10"));
    keyboard->tap({Key::a});
    EXPECT_TRUE(events.become(u"status 0"));
}

TEST_F(SwayHotkeysTest, bindsAgainAfterAReloadAndGivesBackAtTheEnd)
{
    start();
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    keyboard->press({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press"));
    command("reload");
    EXPECT_TRUE(events.become(u"release, status 0"));
    keyboard->release({Key::space, Key::leftAlt});
    keyboard->tap({Key::leftAlt, Key::space});
    EXPECT_TRUE(events.become(u"press, release"));

    // The user's own binding, of which a configuration says nothing, is in force again.
    command("bindsym Mod1+space nop user");
    EXPECT_EQ(commandOf({Key::leftAlt, Key::space}), u"nop velloro press");
    hotkeys.reset();
    EXPECT_EQ(commandOf({Key::leftAlt, Key::space}), u"nop user");
}

TEST_F(SwayHotkeysTest, letsCombinationsThroughWhileOneIsRecorded)
{
    configure("bindsym Mod1+b nop user\n");
    constexpr uint8_t b = 56;
    start();
    hotkeys->bind(altSpace);
    EXPECT_TRUE(events.become(u"status 0"));
    auto through = hotkeys->letShortcutsThrough();
    ASSERT_TRUE(through);
    // Has been dealt with once another connection is answered.
    command("nop");
    bound.clear();
    keyboard->tap({Key::leftAlt, b});
    keyboard->tap({Key::leftAlt, Key::space});
    command("nop");
    EXPECT_EQ(bound, QStringList());
    // A combination that is registered meanwhile is for the time after it.
    hotkeys->bind({96, 0});
    EXPECT_TRUE(events.become(u"status 0"));
    keyboard->tap({Key::f5});
    through.reset();
    command("nop");
    EXPECT_EQ(commandOf({Key::leftAlt, b}), u"nop user");
    EXPECT_EQ(bound.size(), 1);
    keyboard->tap({Key::f5});
    EXPECT_TRUE(events.become(u"press, release"));

    // One that was killed in the midst of it leaves nobody without his combinations.
    (void)new std::shared_ptr<void>(hotkeys->letShortcutsThrough());
    command("nop");
    start();
    EXPECT_EQ(commandOf({Key::leftAlt, b}), u"nop user");
}

} // namespace
} // namespace Velloro
