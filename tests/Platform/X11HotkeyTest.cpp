#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"

#include "Base/StringLiterals.h"
#include "Platform/KeyWindow.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"
#include "Platform/Linux/X11/Keyboard/XcbKeyboardExtension.h"
#include "Platform/Linux/X11/X11UserInput.h"
#include "Platform/X11KeyTestBase.h"
#include "Support/WaitUntil.h"

#include <QCoreApplication>
#include <QProcess>
#include <algorithm>
#include <functional>

namespace Velloro {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using namespace ClassicMask;

constexpr uint32_t spaceBar = 49;
constexpr HotkeyIdentifier identifier{1, 7};

class X11HotkeyTest : public X11KeyTestBase
{
protected:
    void SetUp() override
    {
        X11KeyTestBase::SetUp();
        if (IsSkipped())
            return;
        hotkeys = std::make_unique<X11HotkeyRegistration>(connection);
        listen(*hotkeys);
    }

    void listen(X11HotkeyRegistration &registration)
    {
        registration.setPressedHandler([this](const HotkeyIdentifier *which) {
            events << (which && *which == identifier ? u"press"_s : u"wrong press"_s);
        });
        registration.setReleasedHandler([this](const HotkeyIdentifier *which) {
            events << (which && *which == identifier ? u"release"_s : u"wrong release"_s);
        });
    }

    void tapOptionSpace()
    {
        keyboard.press({Key::leftAlt, Key::space});
        keyboard.release({Key::space, Key::leftAlt});
    }

    /// What has been delivered since the last call, once everything sent has arrived.
    std::string take()
    {
        for (int i = 0; i < 3; ++i) {
            XcbReply<xcb_get_input_focus_reply_t>(xcb_get_input_focus_reply(
                connection->xcb(), xcb_get_input_focus(connection->xcb()), nullptr));
            QCoreApplication::processEvents();
        }
        return std::exchange(events, {}).join(u", "_s).toStdString();
    }

    void moveAltToModifier3()
    {
        xcb_connection_t *xcb = connection->xcb();
        const XcbReply<xcb_get_modifier_mapping_reply_t> mapping(
            xcb_get_modifier_mapping_reply(xcb, xcb_get_modifier_mapping(xcb), nullptr));
        const uint8_t width = mapping->keycodes_per_modifier;
        uint8_t *const keycodes = xcb_get_modifier_mapping_keycodes(mapping.get());
        std::fill_n(keycodes + 3 * width, width, 0);
        std::fill_n(keycodes + 5 * width, width, 0);
        keycodes[5 * width] = Key::leftAlt;
        const XcbReply<xcb_set_modifier_mapping_reply_t> set(xcb_set_modifier_mapping_reply(
            xcb, xcb_set_modifier_mapping(xcb, width, keycodes), nullptr));
        ASSERT_TRUE(set && set->status == XCB_MAPPING_STATUS_SUCCESS);
    }

    /// Whether a modifier that is tapped holds for the next key.
    void setStickyKeys(bool sticky)
    {
        constexpr uint32_t control = XCB_XKB_BOOL_CTRL_STICKY_KEYS;
        constexpr uint8_t repeats[32] = {};
        xcb_xkb_set_controls(connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                             0, 0, control, sticky ? control : 0, XCB_XKB_CONTROL_CONTROLS_ENABLED,
                             0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, repeats);
        take();
    }

    HotkeyRegistration::Reference registerOptionSpace()
    {
        const auto reference = hotkeys->registerHotkey({spaceBar, option}, identifier);
        EXPECT_TRUE(reference) << (reference ? 0 : reference.error());
        return reference.value_or(0);
    }

    const std::string once = "press, release";
    std::unique_ptr<X11HotkeyRegistration> hotkeys;
    QStringList events;
};

TEST_F(X11HotkeyTest, autoRepeatIsNoPress)
{
    registerOptionSpace();
    int repeats = 0;
    QObject context;
    QObject::connect(
        connection.get(), &X11Connection::eventReceived, &context,
        [&](const xcb_generic_event_t *event) {
            const auto *key = reinterpret_cast<const xcb_input_key_press_event_t *>(event);
            if (event->response_type == XCB_GE_GENERIC && key->event_type == XCB_INPUT_KEY_PRESS
                && key->flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT)
                ++repeats;
        });
    keyboard.press({Key::leftAlt, Key::space});
    ASSERT_TRUE(waitUntil([&] { return repeats >= 3; }));
    EXPECT_EQ(take(), "press");
    keyboard.release({Key::space, Key::leftAlt});
    EXPECT_EQ(take(), "release");
}

TEST_F(X11HotkeyTest, worksWhateverIsLockedOrLaidOut)
{
    registerOptionSpace();
    const auto expectOnce = [&](const char *state) {
        tapOptionSpace();
        EXPECT_EQ(take(), once) << state;
    };
    keyboard.tap(Key::capsLock);
    expectOnce("Caps Lock");
    keyboard.tap(Key::numLock);
    expectOnce("Caps and Num Lock");
    keyboard.tap(Key::capsLock);
    expectOnce("Num Lock");
    keyboard.tap(Key::numLock);

    setKeyboardLayout({u"us,de,ru"_s, u"-option"_s, u"grp:menu_toggle"_s});
    for (const char *group : {"first group", "second group", "third group"}) {
        expectOnce(group);
        keyboard.tap(Key::menu);
    }
    for (const auto &layout : {u"de"_s, u"ru"_s, u"fr"_s, u"us"_s}) {
        setKeyboardLayout({layout});
        expectOnce(qPrintable(layout));
    }
}

TEST_F(X11HotkeyTest, onlyTheCombinationItself)
{
    ASSERT_TRUE(hotkeys->registerHotkey({spaceBar, control | shift}, identifier));
    const std::vector<uint8_t> others[] = {
        {}, {Key::leftControl}, {Key::leftShift}, {Key::leftControl, Key::leftShift, Key::leftAlt}};
    for (const auto &modifiers : others) {
        for (const uint8_t modifier : modifiers)
            keyboard.press({modifier});
        keyboard.tap(Key::space);
        for (const uint8_t modifier : modifiers)
            keyboard.release({modifier});
        EXPECT_EQ(take(), "") << modifiers.size() << " modifiers";
    }
    keyboard.press({Key::leftControl, Key::leftShift});
    keyboard.tap(Key::space);
    keyboard.release({Key::leftControl, Key::leftShift});
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, aKeyWithoutModifiersAndOneWithSuper)
{
    ASSERT_TRUE(hotkeys->registerHotkey({96, 0}, identifier));
    ASSERT_TRUE(hotkeys->registerHotkey({40, command}, identifier));
    keyboard.tap(Key::f5);
    EXPECT_EQ(take(), once);
    keyboard.press({Key::leftSuper});
    keyboard.tap(Key::k);
    keyboard.release({Key::leftSuper});
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, theModifierMayGoUpFirst)
{
    KeyWindow window;
    ASSERT_TRUE(window.isReady);
    registerOptionSpace();
    keyboard.press({Key::leftAlt, Key::space});
    keyboard.release({Key::leftAlt});
    EXPECT_EQ(take(), "press");
    EXPECT_FALSE(window.isAnyKeyDown());
    keyboard.release({Key::space});
    EXPECT_EQ(take(), "release");
    EXPECT_FALSE(window.isAnyKeyDown());

    // The application saw no tap on Alt alone, which would open its menu, and no space.
    EXPECT_EQ(window.take(), "+Alt_L, +Control_L with Alt, -Control_L, -Alt_L");
    keyboard.tap(Key::a);
    EXPECT_EQ(window.take(), "+a, -a");
}

TEST_F(X11HotkeyTest, noMenuOpensAndControlIsTappedOnlyWhereThatIsAll)
{
    KeyWindow window;
    ASSERT_TRUE(window.isReady);
    registerOptionSpace();
    const auto seen = [&](const QStringList &layout) {
        setKeyboardLayout(layout);
        take();
        window.take();
        keyboard.press({Key::leftAlt, Key::space});
        EXPECT_EQ(take(), "press");
        keyboard.release({Key::space, Key::leftAlt});
        EXPECT_EQ(take(), "release");
        return window.take();
    };
    EXPECT_EQ(seen({u"us"_s}), "+Alt_L, +Control_L with Alt, -Control_L, -Alt_L");
    // Beside Alt the left one switches the layout, or either one.
    EXPECT_EQ(seen({u"us,ru"_s, u"-option"_s, u"grp:lctrl_lalt_toggle"_s}),
              "+Alt_L, +Control_R with Alt, -Control_R, -Alt_L");
    EXPECT_EQ(seen({u"us,ru"_s, u"-option"_s, u"grp:ctrl_alt_toggle"_s}),
              "+Alt_L, +none with Alt, -none, -Alt_L");

    // A tapped Control would hold for the next key.
    setStickyKeys(true);
    EXPECT_EQ(seen({u"us"_s}), "+Alt_L, +none with Alt, -none, -Alt_L");
    setStickyKeys(false);
}

TEST_F(X11HotkeyTest, theKeysOfTheCombinationMayBeOnDifferentKeyboards)
{
    KeyWindow window;
    ASSERT_TRUE(window.isReady);
    PhysicalKeyboard other(nullptr, onScreenKeyboard);
    ASSERT_TRUE(other.isThere());
    ASSERT_TRUE(hotkeys->registerHotkey({spaceBar, control}, {1, 8}));
    registerOptionSpace();
    const std::pair<PhysicalKeyboard *, PhysicalKeyboard *> cases[]
        = {{&keyboard, &other}, {&other, &keyboard}, {&other, &other}};
    for (const auto &[modifiers, key] : cases) {
        modifiers->press({Key::leftAlt});
        key->press({Key::space});
        EXPECT_EQ(take(), "press");
        // Both keyboards have the key now.
        PhysicalKeyboard &second = key == &keyboard ? other : keyboard;
        second.tap(Key::space);
        EXPECT_EQ(take(), "");
        key->release({Key::space});
        EXPECT_EQ(take(), "release");
        modifiers->release({Key::leftAlt});
        EXPECT_THAT(window.take(), Not(HasSubstr("space")));
        EXPECT_FALSE(window.isAnyKeyDown());
    }
}

TEST_F(X11HotkeyTest, theUsersOtherPressesAreCounted)
{
    KeyWindow window;
    ASSERT_TRUE(window.isReady);
    PhysicalKeyboard other(nullptr, onScreenKeyboard);
    X11KeyboardEvents strokes(connection, std::make_shared<PasteCoordinator>());
    X11UserInput input(connection);
    registerOptionSpace();
    keyboard.tap(Key::a);
    EXPECT_EQ(input.presses(), 0U) << "not followed yet";
    input.follow();

    const auto click = [&] {
        // A button that does nothing anywhere.
        for (const uint8_t type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
            xcb_test_fake_input(connection->xcb(), type, 9, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0,
                                0);
    };
    const auto stroke = [&](uint32_t keyCode, uint64_t flags) {
        EXPECT_TRUE(strokes.post(keyCode, true, flags));
        EXPECT_TRUE(strokes.post(keyCode, false, flags));
    };
    struct Case
    {
        const char *what;
        std::function<void()> act;
        uint64_t presses;
    };
    const Case cases[] = {
        {"a key", [&] { keyboard.tap(Key::a); }, 1},
        {"a key of an on-screen keyboard", [&] { other.tap(Key::a); }, 1},
        {"a button", click, 1},
        {"a modifier alone", [&] { keyboard.tap(Key::leftShift); }, 0},
        {"a key with a modifier",
         [&] {
             keyboard.press({Key::leftShift, Key::a});
             keyboard.release({Key::a, Key::leftShift});
         },
         1},
        {"a backspace of our own", [&] { stroke(51, 0); }, 0},
        {"a paste of our own", [&] { stroke(9, KeyboardEvents::commandFlag); }, 0},
        {"a backspace of the user's", [&] { keyboard.tap(Key::backspace); }, 1},
        {"the hotkey", [&] { tapOptionSpace(); }, 0},
        {"the hotkey on an on-screen keyboard",
         [&] {
             other.press({Key::leftAlt, Key::space});
             other.release({Key::space, Key::leftAlt});
         },
         0},
        {"the hotkey on two keyboards, and what was typed with it held",
         [&] {
             keyboard.press({Key::leftAlt, Key::space});
             EXPECT_EQ(take(), "press");
             other.tap(Key::space);
             stroke(51, 0);
             keyboard.tap(Key::a); // nobody hears of it
             other.tap(Key::a);
             keyboard.release({Key::space, Key::leftAlt});
         },
         1},
        {"the key of the hotkey alone", [&] { keyboard.tap(Key::space); }, 1},
    };
    for (const auto &[what, act, presses] : cases) {
        const uint64_t before = input.presses();
        act();
        EXPECT_EQ(input.presses() - before, presses) << what;
        take();
    }
    input.unfollow();
    const uint64_t before = input.presses();
    keyboard.tap(Key::a);
    EXPECT_EQ(input.presses(), before);
    X11UserInput(nullptr).follow();
    EXPECT_EQ(X11UserInput(nullptr).presses(), 0U);
}

TEST_F(X11HotkeyTest, anotherProgramsCombinationIsTaken)
{
    const auto other = X11Connection::open();
    X11Keyboards keyboards(other);
    const auto sync = [&] { (void)keyboards.logicallyHeld(); };
    const auto status = [&] {
        const auto result = hotkeys->registerHotkey({spaceBar, option}, identifier);
        if (result)
            hotkeys->unregisterHotkey(*result);
        return result ? 0 : result.error();
    };

    for (const uint16_t state : {8, 8 | 2}) { // Alt, and Alt with Caps Lock
        xcb_grab_key(other->xcb(), 1, other->root(), state, Key::space, XCB_GRAB_MODE_ASYNC,
                     XCB_GRAB_MODE_ASYNC);
        sync();
        EXPECT_EQ(status(), XCB_ACCESS) << state;
        xcb_ungrab_key(other->xcb(), Key::space, other->root(), state);
        sync();
        EXPECT_EQ(status(), 0) << state;
    }

    // The newer kind of grab, as window managers have it, and a second one of our own.
    const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const uint32_t modifiers = XCB_MOD_MASK_1;
    const uint16_t master = keyboards.masterKeyboards().front();
    XcbReply<xcb_input_xi_passive_grab_device_reply_t>(xcb_input_xi_passive_grab_device_reply(
        other->xcb(),
        xcb_input_xi_passive_grab_device(other->xcb(), XCB_CURRENT_TIME, other->root(), 0,
                                         Key::space, master, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                         XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                         XCB_INPUT_GRAB_OWNER_NO_OWNER, &mask, &modifiers),
        nullptr));
    EXPECT_EQ(status(), XCB_ACCESS);
    xcb_input_xi_passive_ungrab_device(other->xcb(), other->root(), Key::space, master, 1,
                                       XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    sync();

    X11HotkeyRegistration second(other);
    const auto registered = second.registerHotkey({spaceBar, option}, identifier);
    ASSERT_TRUE(registered) << registered.error();
    EXPECT_EQ(status(), XCB_ACCESS);
}

TEST_F(X11HotkeyTest, isGivenBack)
{
    KeyWindow window;
    ASSERT_TRUE(window.isReady);
    const auto reference = registerOptionSpace();
    hotkeys->unregisterHotkey(reference);
    hotkeys->unregisterHotkey(reference);
    tapOptionSpace();
    EXPECT_EQ(take(), "");
    EXPECT_THAT(window.take(), HasSubstr("+space with Alt"));

    // Given back while it is held: the press ends there.
    const auto again = registerOptionSpace();
    keyboard.press({Key::leftAlt, Key::space});
    EXPECT_EQ(take(), "press");
    hotkeys->unregisterHotkey(again);
    EXPECT_EQ(take(), "release");
    keyboard.release({Key::space, Key::leftAlt});
    EXPECT_EQ(take(), "");
    EXPECT_FALSE(window.isAnyKeyDown());
}

TEST_F(X11HotkeyTest, followsModifiersThatMove)
{
    registerOptionSpace();
    setKeyboardLayout({u"us"_s, u"-option"_s, u"altwin:swap_lalt_lwin"_s});
    take();
    keyboard.press({Key::leftSuper});
    keyboard.tap(Key::space);
    keyboard.release({Key::leftSuper});
    EXPECT_EQ(take(), once);
    // Alt on another modifier altogether: the grab itself must change.
    setKeyboardLayout({u"us"_s});
    moveAltToModifier3();
    take();
    tapOptionSpace();
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, aLostCombinationIsToldAndHadAgain)
{
    const auto other = X11Connection::open();
    const auto grabForOther = [&](bool grabs) {
        if (grabs)
            xcb_grab_key(other->xcb(), 1, other->root(), XCB_MOD_MASK_3, Key::space,
                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        else
            xcb_ungrab_key(other->xcb(), Key::space, other->root(), XCB_MOD_MASK_3);
        (void)X11Keyboards(other).logicallyHeld();
    };
    std::vector<HotkeyRegistration::Status> statuses;
    const auto reference = registerOptionSpace();
    hotkeys->setStatusHandler([&](HotkeyRegistration::Reference which, auto status) {
        if (which == reference)
            statuses.push_back(status);
    });

    grabForOther(true);
    moveAltToModifier3();
    ASSERT_TRUE(waitUntil([&] { return !statuses.empty(); }));
    keyboard.setEnabled(false);
    keyboard.setEnabled(true);
    take();
    EXPECT_THAT(statuses, ElementsAre(XCB_ACCESS));

    // The next change of the keyboards finds it free.
    grabForOther(false);
    keyboard.setEnabled(false);
    keyboard.setEnabled(true);
    ASSERT_TRUE(waitUntil([&] { return statuses.size() == 2; }));
    EXPECT_THAT(statuses, ElementsAre(XCB_ACCESS, 0));
    tapOptionSpace();
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, withoutAKeyboardItIsRefusedUntilOneComes)
{
    keyboard.setEnabled(false);
    take();
    EXPECT_EQ(hotkeys->registerHotkey({spaceBar, option}, identifier).error(), XCB_VALUE);
    bool isRegistered = false;
    hotkeys->setStatusHandler([&](HotkeyRegistration::Reference which, auto) {
        if (which == 0 && !isRegistered)
            isRegistered = hotkeys->registerHotkey({spaceBar, option}, identifier).has_value();
    });
    keyboard.setEnabled(true);
    ASSERT_TRUE(waitUntil([&] { return isRegistered; }));
    tapOptionSpace();
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, aKeyboardThatGoesAwayReleasesAndOneThatComesCounts)
{
    registerOptionSpace();
    keyboard.press({Key::leftAlt, Key::space});
    EXPECT_EQ(take(), "press");
    keyboard.setEnabled(false);
    EXPECT_EQ(take(), "release");
    keyboard.setEnabled(true);
    keyboard.release({Key::space, Key::leftAlt});
    take();

    tapOptionSpace();
    EXPECT_EQ(take(), once);
}

TEST_F(X11HotkeyTest, whatCanNotBeHadHasAStatus)
{
    EXPECT_EQ(hotkeys->registerHotkey({127, option}, identifier).error(), XCB_VALUE);
    EXPECT_EQ(X11HotkeyRegistration(nullptr).registerHotkey({spaceBar, option}, identifier).error(),
              XCB_REQUEST);
}

TEST(X11HotkeyServerTest, theServersEndReleases)
{
    QProcess server;
    server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s});
    if (!server.waitForStarted())
        GTEST_SKIP() << "there is no Xvfb";
    ASSERT_TRUE(waitUntil([&] { return server.bytesAvailable() > 0 && server.canReadLine(); }));
    const QByteArray display = ':' + server.readLine().trimmed();

    const auto connection = X11Connection::open(display);
    ASSERT_TRUE(connection);
    X11HotkeyRegistration hotkeys(connection);
    QStringList events;
    hotkeys.setPressedHandler([&](auto) { events << u"press"_s; });
    hotkeys.setReleasedHandler([&](auto) { events << u"release"_s; });
    const auto reference = hotkeys.registerHotkey({spaceBar, option}, identifier);
    ASSERT_TRUE(reference);
    PhysicalKeyboard keyboard(display.constData());
    keyboard.press({Key::leftAlt, Key::space});
    ASSERT_TRUE(waitUntil([&] { return events.size() == 1; }));

    server.kill();
    server.waitForFinished();
    EXPECT_TRUE(waitUntil([&] { return events.size() == 2; }));
    hotkeys.unregisterHotkey(*reference);
    EXPECT_EQ(hotkeys.registerHotkey({spaceBar, option}, identifier).error(), XCB_REQUEST);
    EXPECT_EQ(events, (QStringList{u"press"_s, u"release"_s}));
}

} // namespace
} // namespace Velloro
