#include "Views/Shared/HotkeyRecorderViewModel.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Keyboard/WindowKeyEvents.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/PhysicalKeyboard.h"
#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"
#include "Views/Windows/ViewEngine.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

/// Either recorder in a window of a private desktop, and the keys of that desktop's keyboard.
class HotkeyRecorderTest : public ::testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        if (QGuiApplication::platformName() != u"xcb" || !keyboard.isThere())
            GTEST_SKIP() << "there is no private X server with a keyboard of its own";
        view.setInitialProperties({{u"model"_s, QVariant::fromValue(&model)}});
        view.setSource(ViewEngine::url(QLatin1StringView(GetParam())));
        ASSERT_EQ(view.status(), QQuickView::Ready);
        view.resize(300, 100);
        view.show();
        view.requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
        button().forceActiveFocus();
    }
    void TearDown() override { setKeyboardLayout({u"us"_s}); }

    QQuickItem &button()
    {
        return *view.rootObject()->findChild<QQuickItem *>(u"hotkeyRecorder"_s);
    }
    /// The text once it is this one.
    std::string text(const char16_t *expected)
    {
        (void)waitUntil(
            [&] { return button().property("text").toString() == QString::fromUtf16(expected); },
            std::chrono::seconds(3));
        return button().property("text").toString().toStdString();
    }
    void start()
    {
        if (!model.isRecording())
            QMetaObject::invokeMethod(&button(), "clicked");
        ASSERT_TRUE(model.isRecording());
    }
    /// Presses keys while the recorder records and gives what it shows afterwards.
    std::string record(std::initializer_list<uint8_t> keys, const char16_t *expected)
    {
        start();
        keyboard.press(keys);
        (void)waitUntil([this] { return !model.isRecording(); }, std::chrono::seconds(3));
        keyboard.release(keys);
        QTest::qWait(50); // nothing that follows may start it again
        EXPECT_FALSE(model.isRecording());
        return text(expected);
    }

    InMemoryPlatform memory;
    std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(memory.platform);
    WindowKeyEvents keyEvents{X11Connection::open()};
    HotkeyRecorderViewModel model{*hotkeyManager, keyEvents};
    ViewEngine engine{*memory.appearance};
    QQuickView view{&engine.engine(), nullptr};
    PhysicalKeyboard keyboard;
};

TEST_P(HotkeyRecorderTest, TakesAnyKeyWithItsModifiers)
{
    constexpr uint8_t tab = 23;
    constexpr uint8_t enter = 36;
    constexpr uint8_t f4 = 70;
    constexpr uint8_t rightSuper = 134;
    EXPECT_EQ(record({Key::f5}, u"F5"), "F5");
    EXPECT_EQ(record({Key::escape}, u"Esc"), "Esc");
    EXPECT_EQ(record({tab}, u"Tab"), "Tab");
    EXPECT_EQ(record({enter}, u"Return"), "Return");
    EXPECT_EQ(record({Key::space}, u"Space"), "Space");
    EXPECT_EQ(record({Key::leftControl, Key::space}, u"⌃Space"), "⌃Space");
    EXPECT_EQ(record({Key::leftShift, tab}, u"⇧Tab"), "⇧Tab");
    EXPECT_EQ(record({Key::leftShift, Key::leftAlt, Key::k}, u"⌥⇧K"), "⌥⇧K");
    EXPECT_EQ(record({Key::leftAlt, f4}, u"⌥F4"), "⌥F4") << "the desktop's own";
    EXPECT_EQ(record({rightSuper, Key::k}, u"⌘K"), "⌘K");
}

TEST_P(HotkeyRecorderTest, GoesByPositionInAnyLayout)
{
    constexpr uint8_t deadAcute = 21;
    constexpr uint8_t z = 29;
    setKeyboardLayout({u"de"_s});
    EXPECT_EQ(record({Key::leftControl, z}, u"⌃Y"), "⌃Y");
    EXPECT_EQ(record({deadAcute}, u"="), "=");
    setKeyboardLayout({u"ru"_s});
    EXPECT_EQ(record({Key::leftSuper, Key::a}, u"⌘A"), "⌘") << "the key at code 0 has no name";
    EXPECT_EQ(hotkeyManager->currentKeyCode(), 0U);
}

TEST_P(HotkeyRecorderTest, RefusesAKeyWithAltGrButNotWithALock)
{
    constexpr uint8_t altGr = 108;
    setKeyboardLayout({u"de"_s});
    start();
    keyboard.press({altGr});
    keyboard.tap(Key::space);
    keyboard.release({altGr});
    EXPECT_TRUE(waitUntil([this] { return model.problem().contains(u"AltGr"_s); }));
    EXPECT_TRUE(model.isRecording());
    EXPECT_EQ(hotkeyManager->currentModifiers(), 2048U);

    for (const uint8_t lock : {Key::numLock, Key::capsLock})
        keyboard.tap(lock);
    EXPECT_EQ(record({Key::f5}, u"F5"), "F5");
    for (const uint8_t lock : {Key::numLock, Key::capsLock})
        keyboard.tap(lock);
}

TEST_P(HotkeyRecorderTest, ShowsTheHeldModifiersAndItsPrompt)
{
    const char16_t *prompt = GetParam()[0] == 'S' ? u"Press keys..." : u"Press your hotkey...";
    EXPECT_EQ(text(u"⌥Space"), "⌥Space");
    start();
    EXPECT_EQ(text(prompt), QString::fromUtf16(prompt).toStdString());
    keyboard.press({Key::leftSuper, Key::leftShift});
    EXPECT_EQ(text(u"⌘⇧"), "⌘⇧");
    keyboard.press({Key::leftAlt});
    EXPECT_EQ(text(u"⌘⌥⇧"), "⌘⌥⇧");
    keyboard.release({Key::leftSuper, Key::leftAlt});
    EXPECT_EQ(text(u"⇧"), "⇧");
    constexpr uint8_t rightShift = 62;
    keyboard.press({rightShift, Key::leftControl});
    EXPECT_EQ(text(u"⌃⇧"), "⌃⇧");
    keyboard.release({Key::leftShift, Key::leftControl});
    EXPECT_EQ(text(u"⇧"), "⇧") << "the right one is still down";
    keyboard.release({rightShift});
    EXPECT_EQ(text(prompt), QString::fromUtf16(prompt).toStdString());
    EXPECT_TRUE(model.isRecording());

    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&button());
    ASSERT_TRUE(interface);
    EXPECT_EQ(interface->role(), QAccessible::Button);
    EXPECT_EQ(interface->text(QAccessible::Name), u"Hotkey: "_s + QString::fromUtf16(prompt));
    interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_FALSE(model.isRecording());
    EXPECT_EQ(text(u"⌥Space"), "⌥Space");
}

TEST_P(HotkeyRecorderTest, EndsWhenItIsHiddenOrLeft)
{
    start();
    view.rootObject()->setVisible(false);
    EXPECT_FALSE(model.isRecording());
    view.rootObject()->setVisible(true);

    start();
    {
        QWindow other;
        other.resize(50, 50);
        other.show();
        other.requestActivate();
        EXPECT_TRUE(waitUntil([this] { return !model.isRecording(); }));
    }
    view.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));

    start();
    view.setSource({});
    EXPECT_TRUE(waitUntil([this] { return !model.isRecording(); }));
    EXPECT_FALSE(hotkeyManager->isPaused());
}

INSTANTIATE_TEST_SUITE_P(Both, HotkeyRecorderTest,
                         ::testing::Values("Settings/General/HotkeyRecorder.qml",
                                           "Onboarding/OnboardingHotkeyRecorder.qml"),
                         [](const auto &info) {
                             const std::string path = info.param;
                             return path.substr(0, path.find('/'));
                         });

} // namespace
} // namespace Velloro
