#include "Views/MenuBarExtra.h"

#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QAccessible>
#include <QLineEdit>
#include <QQuickItem>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class MenuBarExtraTest : public ::testing::Test
{
protected:
    void open()
    {
        extra.openPanel();
        ASSERT_TRUE(extra.panel());
        ASSERT_TRUE(QTest::qWaitForWindowActive(extra.panel()));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(extra.panel(), key, modifiers);
    }
    /// The item and everything in it.
    static void collect(QQuickItem *item, QList<QQuickItem *> &items)
    {
        items << item;
        for (QQuickItem *child : item->childItems())
            collect(child, items);
    }
    [[nodiscard]] static QAccessibleInterface *accessible(QQuickItem *item)
    {
        return QAccessible::queryAccessibleInterface(item);
    }
    [[nodiscard]] QString focusedName() const
    {
        QAccessibleInterface *interface = accessible(extra.panel()->activeFocusItem());
        return interface ? interface->text(QAccessible::Name) : QString();
    }
    [[nodiscard]] QString text(const char *name) const
    {
        return extra.panel()
            ->contentItem()
            ->findChild<QQuickItem *>(QLatin1StringView(name))
            ->property("text")
            .toString();
    }

    InMemoryPlatform memory;
    AppState appState{memory.platform};
    std::unique_ptr<HotkeyManager> hotkeyManager = HotkeyManager::makeShared(memory.platform);
    ViewEngine engine{*memory.appearance};
    MenuBarExtra extra{memory.platform, appState, *hotkeyManager, engine};
};

TEST_F(MenuBarExtraTest, NothingOfThePanelIsMadeBeforeItIsOpened)
{
    extra.show();
    appState.setTranscriptionState(TranscriptionState::listening);
    EXPECT_FALSE(engine.isMade());
    EXPECT_FALSE(extra.panel());
}

TEST_F(MenuBarExtraTest, IsReachedAndClosedWithTheKeyboardAlone)
{
    open();
    EXPECT_EQ(extra.panel()->width(), 280);
    const QRect frame = extra.panel()->screen()->availableGeometry();
    EXPECT_TRUE(frame.contains(extra.panel()->geometry()));

    QStringList reached;
    for (int count = 0; count < 8; ++count) {
        press(Qt::Key_Tab);
        reached << focusedName();
    }
    reached.sort();
    EXPECT_EQ(reached, QStringList({QStringLiteral("Download model"), QStringLiteral("Download model"),
                                    QStringLiteral("Download model"), QStringLiteral("Large, Accurate"),
                                    QStringLiteral("Medium, Balanced"), QStringLiteral("Quit"),
                                    QStringLiteral("Settings..."), QStringLiteral("Small, Fast")}));

    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        appState.setSelectedModel(ModelPreset::medium);
        for (int count = 0; count < 8 && focusedName() != u"Large, Accurate"; ++count)
            press(Qt::Key_Tab);
        press(key);
        EXPECT_EQ(appState.selectedModel(), ModelPreset::large) << key;
    }
    press(Qt::Key_Tab);
    ASSERT_EQ(focusedName(), u"Download model");
    press(Qt::Key_Space);
    ASSERT_EQ(memory.downloadSession->tasks.size(), 1);
    EXPECT_EQ(appState.selectedModel(), ModelPreset::large);

    QSignalSpy settings(&extra, &MenuBarExtra::openSettingsRequested);
    for (int count = 0; count < 8 && focusedName() != u"Settings..."; ++count)
        press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_EQ(settings.count(), 1);
    EXPECT_FALSE(extra.panel()->isVisible()) << "the settings take the panel's place";

    open();
    const QPoint place = extra.panel()->position();
    extra.openPanel();
    EXPECT_EQ(extra.panel()->position(), place) << "it is there already";
    press(Qt::Key_Escape);
    EXPECT_FALSE(extra.panel()->isVisible());
}

TEST_F(MenuBarExtraTest, EveryControlHasANameAndARoleAndCanBePressed)
{
    open();
    int controls = 0;
    QList<QQuickItem *> items;
    collect(extra.panel()->contentItem(), items);
    for (QQuickItem *item : items) {
        if (!item->isVisible() || !(item->activeFocusOnTab()))
            continue;
        QAccessibleInterface *interface = accessible(item);
        ASSERT_TRUE(interface) << item->metaObject()->className();
        EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << item->metaObject()->className();
        EXPECT_THAT(interface->role(),
                    ::testing::AnyOf(QAccessible::Button, QAccessible::RadioButton));
        ++controls;
    }
    EXPECT_EQ(controls, 8);

    const auto large = std::find_if(items.begin(), items.end(), [](QQuickItem *item) {
        QAccessibleInterface *interface = accessible(item);
        return interface && interface->text(QAccessible::Name) == u"Large, Accurate";
    });
    ASSERT_NE(large, items.end());
    QAccessibleInterface *row = accessible(*large);
    EXPECT_FALSE(row->state().checked);
    ASSERT_TRUE(row->actionInterface());
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(appState.selectedModel(), ModelPreset::large);
    EXPECT_TRUE(row->state().checked);
}

TEST_F(MenuBarExtraTest, ClosesWhenAnotherWindowTakesTheFocus)
{
    QLineEdit other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    open();
    other.activateWindow();
    EXPECT_TRUE(waitUntil([this] { return !extra.panel()->isVisible(); }));
}

TEST_F(MenuBarExtraTest, AnOpenPanelFollowsTheState)
{
    open();
    EXPECT_EQ(text("recordingModeText"), u"Hold to Talk");
    const int height = extra.panel()->height();
    appState.setRecordingMode(RecordingMode::toggle);
    appState.setTranscriptionState(TranscriptionState::transcribing);
    EXPECT_EQ(text("recordingModeText"), u"Toggle");
    EXPECT_EQ(text("stateText"), u"Transcribing...");
    memory.hotkeyRegistration->refusal = 10;
    hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey);
    EXPECT_THAT(text("hotkeyProblem").toStdString(), ::testing::HasSubstr("⌘D is taken"));
    EXPECT_TRUE(waitUntil([&] { return extra.panel()->height() > height; }));
    EXPECT_TRUE(extra.panel()->screen()->availableGeometry().contains(extra.panel()->geometry()));

    memory.appearance->dark = true;
    Q_EMIT memory.appearance->changed();
    EXPECT_TRUE(waitUntil([this] {
        return extra.panel()->grabWindow().pixelColor(140, 10).lightness() < 80;
    }));
}

TEST_F(MenuBarExtraTest, TellsOnceThatTheDesktopHasNoTray)
{
    if (QSystemTrayIcon::isSystemTrayAvailable())
        GTEST_SKIP() << "this desktop has a tray";
    extra.show();
    ASSERT_TRUE(waitUntil([this] { return !memory.userNotifications->delivered.empty(); },
                          std::chrono::seconds(20)));
    extra.openPanel();
    extra.closePanel();
    EXPECT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_EQ(memory.userNotifications->seen.size(), 1) << "and not again at the next start";
}

} // namespace
} // namespace Velloro
