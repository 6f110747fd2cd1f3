#include "Platform/Linux/X11/Keyboard/X11KeyboardEvents.h"

#include "Base/StringLiterals.h"
#include "Platform/KeyWindow.h"
#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"
#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/X11KeyTestBase.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <gmock/gmock.h>
#include <set>

namespace Velloro {
namespace {

constexpr uint32_t keyV = 9, keyDelete = 51;

const std::string controlV = "+Control_L, +v with Control, -v, -Control_L";
const std::string controlShiftV = "+Control_L, +Shift_L with Control, +v with Shift+Control, "
                                  "-v, -Shift_L, -Control_L";
const std::string shiftInsert = "+Shift_L, +Insert with Shift, -Insert, -Shift_L";

/// The other parts of a paste.
class OtherParts final : public PasteCoordinator::Lender, public PasteCoordinator::Reader
{
public:
    explicit OtherParts(const std::unique_ptr<KeyWindow> &window)
        : m_window(window)
    {
    }

    bool isTerminal = false;
    bool mayPaste = true;
    int primaryPastes = 0;
    /// What had arrived whenever a paste before was to be waited for.
    std::vector<std::string> arrived;

    bool isTerminalFocused() override { return isTerminal; }
    void lendToPrimarySelection() override { ++primaryPastes; }
    bool beginPaste(const PasteTarget &) override { return mayPaste; }
    bool awaitPaste() override
    {
        arrived.push_back(m_window->take());
        return true;
    }

private:
    const std::unique_ptr<KeyWindow> &m_window;
};

class X11KeyboardEventsTest : public X11KeyTestBase
{
protected:
    void SetUp() override
    {
        X11KeyTestBase::SetUp();
        if (IsSkipped())
            return;
        window = std::make_unique<KeyWindow>();
        ASSERT_TRUE(window->isReady);
        pasting->join(static_cast<PasteCoordinator::Lender &>(others));
        pasting->join(static_cast<PasteCoordinator::Reader &>(others));
        strokes = std::make_unique<X11KeyboardEvents>(connection, pasting);
    }

    void stroke(uint32_t keyCode, uint64_t flags)
    {
        EXPECT_TRUE(strokes->post(keyCode, true, flags));
        EXPECT_TRUE(strokes->post(keyCode, false, flags));
        sync();
    }
    /// Waits until the server has had what was sent.
    void sync() { (void)X11Keyboards(connection).logicallyHeld(); }
    std::string pasted()
    {
        stroke(keyV, KeyboardEvents::commandFlag);
        return window->take();
    }
    /// No key is down any more, on any device.
    bool isEverythingReleased()
    {
        const X11Keyboards keyboards(connection);
        return waitUntil([&] {
            QCoreApplication::processEvents();
            return keyboards.logicallyHeld().none() && keyboards.heldOnAnyKeyboard().none();
        });
    }

    std::unique_ptr<KeyWindow> window;
    OtherParts others{window};
    std::shared_ptr<PasteCoordinator> pasting = std::make_shared<PasteCoordinator>();
    std::unique_ptr<X11KeyboardEvents> strokes;
};

TEST_F(X11KeyboardEventsTest, eachStrokeWaitsForThePasteBefore)
{
    stroke(keyDelete, 0);
    stroke(keyV, KeyboardEvents::commandFlag);
    EXPECT_THAT(others.arrived, testing::ElementsAre("", "+BackSpace, -BackSpace"));
}

TEST_F(X11KeyboardEventsTest, pastesNothingThatIsNotToBePasted)
{
    others.mayPaste = false;
    keyboard.press({Key::leftShift});
    EXPECT_EQ(window->take(), "+Shift_L");
    EXPECT_FALSE(strokes->post(keyV, true, KeyboardEvents::commandFlag));
    EXPECT_FALSE(strokes->post(keyV, false, KeyboardEvents::commandFlag));
    sync();
    EXPECT_EQ(window->take(), "");
    keyboard.release({Key::leftShift});
}

TEST_F(X11KeyboardEventsTest, sendsKeysWithExactlyTheGivenModifiers)
{
    stroke(keyDelete, 0);
    EXPECT_EQ(window->take(), "+BackSpace, -BackSpace");
    stroke(0, EventFlag::shift | EventFlag::option);
    EXPECT_EQ(window->take(), "+Alt_L, +Shift_L with Alt, +a with Shift+Alt, -a, -Shift_L, -Alt_L");
    EXPECT_FALSE(strokes->post(keyDelete, false, 0));
    EXPECT_FALSE(strokes->post(127, true, 0));
    EXPECT_FALSE(
        X11KeyboardEvents(nullptr, std::make_shared<PasteCoordinator>()).post(keyDelete, true, 0));
    EXPECT_EQ(window->take(), "");

    // One that was left pressed does not outlive its sender.
    EXPECT_TRUE(strokes->post(keyDelete, true, 0));
    strokes.reset();
    EXPECT_TRUE(isEverythingReleased());
}

TEST_F(X11KeyboardEventsTest, arrivesPlainWhileTheHotkeyIsHeld)
{
    X11HotkeyRegistration hotkeys(connection);
    int presses = 0, releases = 0;
    hotkeys.setPressedHandler([&](auto) { ++presses; });
    hotkeys.setReleasedHandler([&](auto) { ++releases; });
    ASSERT_TRUE(hotkeys.registerHotkey({49, ClassicMask::option | ClassicMask::control}, {1, 1}));
    keyboard.press({Key::leftControl, Key::leftAlt, Key::space});
    ASSERT_TRUE(waitUntil([&] { return presses == 1; }));
    sync();
    EXPECT_EQ(window->take(), "+Control_L, +Alt_L with Control");

    const std::string lift = "-Control_L, -Alt_L, ";
    const std::string restore = ", +Control_L, +Alt_L with Control";
    for (int i = 0; i < 3; ++i) {
        stroke(keyDelete, 0);
        EXPECT_EQ(window->take(), lift + "+BackSpace, -BackSpace" + restore);
    }
    EXPECT_EQ(pasted(), lift + "+Control_L, +v with Control, -v, -Control_L" + restore);
    EXPECT_EQ(releases, 0);

    keyboard.release({Key::space, Key::leftAlt, Key::leftControl});
    ASSERT_TRUE(waitUntil([&] { return releases == 1; }));
    EXPECT_TRUE(isEverythingReleased());
    EXPECT_EQ(presses, 1);
    window->take();
    keyboard.tap(Key::a);
    EXPECT_EQ(window->take(), "+a, -a");
}

TEST_F(X11KeyboardEventsTest, liftingIsNoTapOnAModifier)
{
    const std::pair<uint8_t, std::string> cases[]
        = {{Key::leftAlt,
            "+Control_L with Alt, -Control_L, -Alt_L, +BackSpace, -BackSpace, +Alt_L, "
            "+Control_L with Alt, -Control_L"},
           // Control and Shift together switch input methods.
           {Key::leftShift,
            "+none with Shift, -none, -Shift_L, +BackSpace, -BackSpace, +Shift_L, "
            "+none with Shift, -none"}};
    for (const auto &[modifier, expected] : cases) {
        keyboard.press({modifier});
        window->take();
        stroke(keyDelete, 0);
        EXPECT_EQ(window->take(), expected);
        keyboard.release({modifier});
        EXPECT_TRUE(isEverythingReleased());
    }
}

TEST_F(X11KeyboardEventsTest, ownKeysAreNoHotkey)
{
    X11HotkeyRegistration hotkeys(connection);
    int presses = 0, releases = 0;
    hotkeys.setPressedHandler([&](auto) { ++presses; });
    hotkeys.setReleasedHandler([&](auto) { ++releases; });
    ASSERT_TRUE(hotkeys.registerHotkey({keyV, ClassicMask::control}, {1, 1}));
    PhysicalKeyboard onScreen(nullptr, onScreenKeyboard);
    constexpr uint8_t v = 55;
    for (int i = 1; i <= 2; ++i) {
        EXPECT_EQ(pasted(), "+Control_L, +v with Control, -v, -Control_L");
        EXPECT_EQ(presses, i - 1);
        onScreen.press({Key::leftControl, v});
        ASSERT_TRUE(waitUntil([&] { return presses == i; }));
        EXPECT_EQ(window->take(), "+Control_L");
        if (i == 2) {
            // While that one is held, too.
            stroke(keyDelete, 0);
            EXPECT_EQ(window->take(),
                      "+none with Control, -none, -Control_L, +BackSpace, -BackSpace");
        }
        onScreen.release({v, Key::leftControl});
        ASSERT_TRUE(waitUntil([&] { return releases == i; }));
        EXPECT_TRUE(isEverythingReleased());
        window->take();
    }
}

TEST_F(X11KeyboardEventsTest, restoresOnlyWhatIsStillHeld)
{
    keyboard.press({Key::leftAlt, Key::leftShift});
    EXPECT_TRUE(strokes->post(keyDelete, true, 0));
    keyboard.release({Key::leftAlt});
    EXPECT_TRUE(strokes->post(keyDelete, false, 0));
    sync();
    window->take();
    keyboard.tap(Key::a);
    EXPECT_EQ(window->take(), "+a with Shift, -a");
    keyboard.release({Key::leftShift});
    EXPECT_TRUE(isEverythingReleased());

    // A modifier that the user presses anew works as ever.
    window->take();
    keyboard.press({Key::leftShift});
    keyboard.tap(Key::a);
    keyboard.release({Key::leftShift});
    EXPECT_EQ(window->take(), "+Shift_L, +a with Shift, -a, -Shift_L");
}

TEST_F(X11KeyboardEventsTest, leavesLocksAlone)
{
    keyboard.tap(Key::capsLock);
    keyboard.press({Key::capsLock});
    window->take();
    EXPECT_EQ(pasted(), "+Control_L, +v with Control, -v, -Control_L");
    keyboard.release({Key::capsLock});
    EXPECT_TRUE(isEverythingReleased());
}

TEST_F(X11KeyboardEventsTest, pressesAnewWhatIsDownAlready)
{
    keyboard.press({Key::backspace});
    window->take();
    stroke(keyDelete, 0);
    EXPECT_EQ(window->take(), "-BackSpace, +BackSpace, -BackSpace");
}

TEST_F(X11KeyboardEventsTest, takesTheBackspaceFromWhereItIs)
{
    struct
    {
        QByteArray symbols;
        std::string keys;
    } const cases[] = {
        {"key <BKSP> {[Delete]}; key <CAPS> {[BackSpace]};", "+BackSpace, -BackSpace"},
        {"key <BKSP> {[Delete]};", ""},
    };
    for (const auto &c : cases) {
        setKeySymbols(c.symbols);
        EXPECT_EQ(strokes->post(keyDelete, true, 0), !c.keys.empty());
        strokes->post(keyDelete, false, 0);
        sync();
        EXPECT_EQ(window->take(), c.keys) << c.symbols.constData();
    }
}

TEST_F(X11KeyboardEventsTest, takesMetaForAltAndHyperForSuper)
{
    setKeySymbols("key <LALT> {[Meta_L]}; key <RALT> {[Meta_R]}; key <ALT> {[F13, F13]};"
                  "key <LWIN> {[Hyper_L]}; key <RWIN> {[Hyper_R]}; key <SUPR> {[F13, F13]};");
    stroke(0, EventFlag::option | EventFlag::command);
    EXPECT_EQ(window->take(),
              "+Hyper_L, +Meta_L with Super, +a with Alt+Super, -a, -Meta_L, -Hyper_L");
    setKeySymbols("key <LWIN> {[F13]}; key <RWIN> {[F13]}; key <SUPR> {[F13, F13]};"
                  "key <HYPR> {[F13, F13]};");
    EXPECT_FALSE(strokes->post(0, true, EventFlag::command));
}

TEST_F(X11KeyboardEventsTest, pastesAsTheApplicationWantsIt)
{
    struct
    {
        QByteArray instance, name;
        bool isTerminal;
        std::string expected;
    } const cases[] = {
        {"mousepad", "Mousepad", false, controlV},
        {"unheard-of", "Unheard-of", true, controlShiftV},
        {"my notes", "XTerm", true, shiftInsert},
        {"pangoterm", "my notes", false, controlShiftV},
        {"", "", false, controlV},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE((c.instance + ' ' + c.name).toStdString());
        window->setClass(c.instance + '\0' + c.name + '\0');
        others.isTerminal = c.isTerminal;
        others.primaryPastes = 0;
        EXPECT_EQ(pasted(), c.expected);
        EXPECT_EQ(others.primaryPastes, c.expected == shiftInsert ? 1 : 0);
    }
}

TEST_F(X11KeyboardEventsTest, pastesOnEveryLayout)
{
    for (const auto &layout : {QStringList{u"us"_s, u"-variant"_s, u"dvorak"_s},
                               {u"fr"_s},
                               {u"us,ru"_s},
                               {u"ru,us"_s}}) {
        setKeyboardLayout(layout);
        if (layout.first() == u"ru,us") {
            // The window names the first layout's letter at the position.
            EXPECT_EQ(pasted(), "+Control_L, +Cyrillic_em with Control, -Cyrillic_em, -Control_L");
            continue;
        }
        EXPECT_EQ(pasted(), controlV) << layout.join(u' ').toStdString();
    }
    // No letter v anywhere.
    setKeyboardLayout({u"ru"_s});
    EXPECT_EQ(pasted(), shiftInsert);
    EXPECT_EQ(others.primaryPastes, 1);

    // Of two layouts the one in force decides: on this one the position of v has another letter.
    setKeyboardLayout(
        {u"us,us"_s, u"-variant"_s, u",dvorak"_s, u"-option"_s, u"grp:menu_toggle"_s});
    EXPECT_EQ(pasted(), controlV);
    keyboard.tap(Key::menu);
    window->take();
    EXPECT_EQ(pasted(), "+Control_L, +period with Control, -period, -Control_L");
}

TEST_F(X11KeyboardEventsTest, pastesWithEveryMeaningOfTheModifierKeys)
{
    // The keys of the second and third column set the locks first.
    const std::string rightShift = "+Control_L, +Shift_R with Control, +v with Shift+Control, -v, "
                                   "-Shift_R, -Control_L";
    struct
    {
        QString option;
        std::vector<uint8_t> held, tapped;
        std::string inTerminal;
    } const cases[] = {
        {u"shift:both_capslock"_s, {}, {}, controlShiftV},
        {u"shift:both_capslock"_s, {Key::leftShift}, {Key::rightShift}, controlShiftV},
        {u"shift:both_capslock_cancel"_s, {}, {}, controlShiftV},
        {u"shift:both_capslock_cancel"_s, {}, {Key::capsLock}, controlShiftV},
        {u"shift:both_shiftlock"_s, {}, {}, controlShiftV},
        {u"shift:both_shiftlock"_s, {Key::leftShift}, {Key::rightShift}, controlShiftV},
        {u"grp:lctrl_lshift_toggle"_s, {}, {}, rightShift},
        {u"grp:ctrl_shift_toggle"_s, {}, {}, shiftInsert},
        // On this layout there is no v.
        {u"grp:menu_toggle"_s, {}, {Key::menu}, shiftInsert},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.option.toStdString());
        setKeyboardLayout({u"us,ru"_s, u"-option"_s, c.option});
        X11Keymap keymap(connection);
        for (const uint8_t key : c.held)
            keyboard.press({key});
        for (const uint8_t key : c.tapped)
            keyboard.tap(key);
        for (const uint8_t key : c.held)
            keyboard.release({key});
        const KeyboardLocks locks = keymap.locks();
        EXPECT_EQ(locks == KeyboardLocks{}, c.tapped.empty());
        window->take();

        window->setClass(QByteArray("editor\0Editor\0", 14));
        EXPECT_EQ(pasted(), controlV);
        window->setClass(QByteArray("kitty\0kitty\0", 12));
        EXPECT_EQ(pasted(), c.inTerminal);
        window->setClass(QByteArray("xterm\0XTerm\0", 12));
        EXPECT_EQ(pasted(), shiftInsert);
        EXPECT_EQ(keymap.locks(), locks);

        // The user's own Shift is lifted for it.
        keyboard.unlock();
        keyboard.press({Key::leftShift});
        window->setClass(QByteArray("editor\0Editor\0", 14));
        window->take();
        EXPECT_THAT(pasted(), testing::HasSubstr("-Shift_L, " + controlV));
        keyboard.release({Key::leftShift});
        EXPECT_TRUE(isEverythingReleased());
        EXPECT_EQ(keymap.locks(), KeyboardLocks{});
    }
}

TEST_F(X11KeyboardEventsTest, pressesNoKeyThatWorksBeyondItsRelease)
{
    setKeySymbols("key <LFSH> {[ISO_Level2_Latch]}; modifier_map Shift {<LFSH>};");
    window->setClass(QByteArray("xterm\0XTerm\0", 12));
    EXPECT_EQ(pasted(), "+Shift_R, +Insert with Shift, -Insert, -Shift_R");
}

TEST_F(X11KeyboardEventsTest, sendsKeysOfTheDeviceThatTheyAreSentFrom)
{
    keyboard.setLayout(
        {u"us"_s, u"-variant"_s, u"dvorak"_s, u"-option"_s, u"caps:ctrl_modifier"_s});
    window->take();
    EXPECT_EQ(pasted(), controlV);

    // What the hands hold is told by the keyboard under them; pressed on the other device it would
    // lock.
    keyboard.press({Key::capsLock});
    window->take();
    EXPECT_EQ(pasted(), "+none with Control, -none, -Caps_Lock, " + controlV);
    keyboard.release({Key::capsLock});
    EXPECT_TRUE(isEverythingReleased());
    EXPECT_EQ(X11Keymap(connection).locks(), KeyboardLocks{});
}

TEST_F(X11KeyboardEventsTest, awaitsTheReceiptOfWhatWasSent)
{
    // A window of the program itself could not answer while it waits.
    window->promiseAnswersToPings();
    stroke(keyDelete, 0);
    EXPECT_TRUE(strokes->awaitReceipt());
    EXPECT_EQ(window->take(), "+BackSpace, -BackSpace");

    QThread thread;
    QObject receiver;
    receiver.moveToThread(&thread);
    thread.start();
    const auto inThread = [&](const auto &work) {
        QMetaObject::invokeMethod(&receiver, work, Qt::BlockingQueuedConnection);
    };
    std::unique_ptr<KeyWindow> busy;
    std::atomic_int answers = 0;
    uint32_t pingsLate = 0;
    const auto answerLater = [&](xcb_client_message_event_t ping) {
        ping.data.data32[1] -= pingsLate;
        QTimer::singleShot(50, busy.get(), [&, ping] {
            ++answers;
            busy->answer(ping);
        });
    };
    inThread([&] {
        busy = std::make_unique<KeyWindow>();
        busy->promiseAnswersToPings();
        busy->pretendToBeElsewhere();
        busy->pinged = answerLater;
    });
    X11Workspace workspace(connection);
    ASSERT_TRUE(waitUntil([&] { return workspace.activeWindow() == busy->window(); }));
    std::string taken;
    const auto take = [&] { taken = busy->take(); };

    stroke(keyDelete, 0);
    EXPECT_TRUE(strokes->awaitReceipt());
    EXPECT_EQ(answers, 1);
    // Nothing was sent since.
    EXPECT_TRUE(strokes->awaitReceipt());
    inThread(take);
    EXPECT_EQ(taken, "+BackSpace, -BackSpace, ping");

    // The answer to an earlier ping is none.
    pingsLate = 1;
    stroke(keyDelete, 0);
    EXPECT_FALSE(strokes->awaitReceipt());
    EXPECT_EQ(answers, 2);

    inThread([&] { busy.reset(); });
    thread.quit();
    thread.wait();
}

TEST(VirtualKeyMapTest, isOneToOneAndAgreesWithTheServersNames)
{
    const auto connection = X11Connection::open();
    if (!connection)
        GTEST_SKIP() << "there is no X server";
    X11Keymap keymap(connection);
    std::set<uint8_t> keycodes;
    int keys = 0;
    for (uint32_t keyCode = 0; keyCode < 128; ++keyCode) {
        const auto keycode = VirtualKeyMap::keycode(keyCode);
        if (!keycode)
            continue;
        ++keys;
        keycodes.insert(*keycode);
        EXPECT_EQ(VirtualKeyMap::virtualKeyCode(*keycode), keyCode);
        EXPECT_EQ(keymap.keycodeAt(keyCode), *keycode) << keyCode;
    }
    EXPECT_EQ(keycodes.size(), static_cast<size_t>(keys));
    EXPECT_GE(keys, 66 + 4);
    EXPECT_EQ(VirtualKeyMap::keycode(49), Key::space);
    EXPECT_EQ(VirtualKeyMap::virtualKeyCode(7), std::nullopt);
}

} // namespace
} // namespace Velloro
