#include "Views/Tray/MenuBarExtra.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/WindowTestBase.h"

#include <QApplication>
#include <QLineEdit>
#include <QScreen>
#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

/// The panel as the window that it is.
class Panel : public MenuBarExtra
{
public:
    using MenuBarExtra::MenuBarExtra;
    void open() { openPanel(); }
    [[nodiscard]] QQuickWindow *window() const { return panel(); }
};

class MenuBarExtraTest : public WindowTestBase<Panel>
{
protected:
    /// What the screen reader is told of the control that has the keyboard.
    [[nodiscard]] QAccessibleInterface *focused() const
    {
        return QAccessible::queryAccessibleInterface(window()->activeFocusItem());
    }
};

TEST_F(MenuBarExtraTest, NothingOfThePanelIsMadeBeforeItIsOpened)
{
    controller.show();
    appState.setTranscriptionState(TranscriptionState::listening);
    EXPECT_FALSE(engine.isMade());
    EXPECT_FALSE(window());
}

TEST_F(MenuBarExtraTest, CanNotBeStretchedByADesktopThatPlacesWindows)
{
    memory.screenFrames->placesWindows = false;
    open();
    for (const int scale : {1, 2, 1}) {
        memory.appearance->scale = scale;
        Q_EMIT memory.appearance->changed();
        EXPECT_TRUE(waitUntil([&] {
            const QSize size = window()->size();
            return size.width() == 280 * scale && window()->minimumSize() == size
                && window()->maximumSize() == size;
        })) << scale;
    }
}

TEST_F(MenuBarExtraTest, IsReachedAndClosedWithTheKeyboardAlone)
{
    open();
    EXPECT_EQ(window()->width(), 280);
    EXPECT_EQ(probe().smallButtons(), QStringList());
    const QRect frame = window()->screen()->availableGeometry();
    EXPECT_TRUE(frame.contains(window()->geometry()));
    EXPECT_EQ(probe().focusedName(), u"Medium, Balanced");
    EXPECT_TRUE(focused()->state().checked);

    QStringList reached;
    for (int count = 0; count < 8; ++count) {
        probe().press(Qt::Key_Tab);
        reached << probe().focusedName();
        EXPECT_THAT(focused()->role(),
                    ::testing::AnyOf(QAccessible::Button, QAccessible::RadioButton));
    }
    reached.sort();
    EXPECT_EQ(reached,
              QStringList({u"Download model"_s, u"Download model"_s, u"Download model"_s,
                           u"Large, Accurate"_s, u"Medium, Balanced"_s, u"Quit"_s, u"Settings..."_s,
                           u"Small, Fast"_s}));

    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        appState.setSelectedModel(ModelPreset::medium);
        ASSERT_TRUE(probe().tabTo(u"Large, Accurate"_s));
        probe().press(key);
        EXPECT_EQ(appState.selectedModel(), ModelPreset::large) << key;
    }
    QAccessibleInterface *row = focused();
    EXPECT_TRUE(row->state().checked);
    appState.setSelectedModel(ModelPreset::medium);
    EXPECT_FALSE(row->state().checked);
    ASSERT_TRUE(row->actionInterface());
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(appState.selectedModel(), ModelPreset::large);
    probe().press(Qt::Key_Tab);
    ASSERT_EQ(probe().focusedName(), u"Download model");
    probe().press(Qt::Key_Space);
    ASSERT_EQ(memory.downloadSession->tasks.size(), 1);
    EXPECT_EQ(appState.selectedModel(), ModelPreset::large);

    QSignalSpy settings(&controller, &MenuBarExtra::openSettingsRequested);
    ASSERT_TRUE(probe().tabTo(u"Settings..."_s));
    probe().press(Qt::Key_Return);
    EXPECT_EQ(settings.count(), 1);
    EXPECT_FALSE(window()->isVisible()) << "the settings take the panel's place";

    open();
    EXPECT_EQ(probe().focusedName(), u"Large, Accurate")
        << "not where it was left, on the way to the end";
    probe().press(Qt::Key_Up);
    EXPECT_EQ(probe().focusedName(), u"Medium, Balanced");
    probe().press(Qt::Key_Down);
    probe().press(Qt::Key_Down);
    EXPECT_EQ(probe().focusedName(), u"Large, Accurate");
    EXPECT_EQ(appState.selectedModel(), ModelPreset::large);
    const QPoint place = window()->position();
    controller.openPanel();
    EXPECT_EQ(window()->position(), place) << "it is there already";
    probe().press(Qt::Key_Escape);
    EXPECT_FALSE(window()->isVisible());
}

TEST_F(MenuBarExtraTest, TheKeyboardDoesNotComeToATrashByItself)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Download model"_s));
    probe().hold(Qt::Key_Return);
    ASSERT_EQ(memory.downloadSession->tasks.size(), 1);
    EXPECT_TRUE(probe().focusedName().startsWith(u"Downloading"));
    memory.fileSystem->files.insert(u"/tmp/part"_s);
    memory.downloadSession->delegate.downloadDidFinish(DownloadTaskId(1), u"/tmp/part"_s);
    EXPECT_EQ(focused()->role(), QAccessible::RadioButton) << probe().focusedName().toStdString();
    probe().press(Qt::Key_Tab);
    EXPECT_EQ(probe().focusedName(), u"Delete model");
    probe().hold(Qt::Key_Return);
    EXPECT_EQ(probe().focusedName(), u"Download model");
    EXPECT_EQ(memory.downloadSession->tasks.size(), 1);
}

TEST_F(MenuBarExtraTest, ClosesWhenAnotherWindowTakesTheFocus)
{
    QLineEdit other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    open();
    other.activateWindow();
    EXPECT_TRUE(waitUntil([this] { return !window()->isVisible(); }));
}

TEST_F(MenuBarExtraTest, StaysWhenTheFocusOnlyPassesBy)
{
    open();
    QFocusEvent away(QEvent::FocusOut);
    QCoreApplication::sendEvent(window(), &away);
    QTest::qWait(200);
    EXPECT_TRUE(window()->isVisible());
}

TEST_F(MenuBarExtraTest, AnOpenPanelFollowsTheState)
{
    open();
    EXPECT_EQ(text(u"recordingModeText"_s), u"Hold to Talk");
    const int height = window()->height();
    appState.setRecordingMode(RecordingMode::toggle);
    appState.setTranscriptionState(TranscriptionState::transcribing);
    EXPECT_EQ(text(u"recordingModeText"_s), u"Toggle");
    EXPECT_EQ(text(u"stateText"_s), u"Transcribing...");
    memory.hotkeyRegistration->refusal = 10;
    hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey);
    EXPECT_THAT(text(u"hotkeyProblem"_s).toStdString(), ::testing::HasSubstr("⌘D is taken"));
    EXPECT_TRUE(waitUntil([&] { return window()->height() > height; }));
    EXPECT_TRUE(window()->screen()->availableGeometry().contains(window()->geometry()));

    const auto menu = [] {
        const QWidgetList widgets = QApplication::topLevelWidgets();
        return *std::ranges::find_if(widgets, [](QWidget *one) { return one->inherits("QMenu"); });
    };
    EXPECT_GT(menu()->palette().color(QPalette::Base).lightness(), 200);
    memory.appearance->dark = true;
    Q_EMIT memory.appearance->changed();
    EXPECT_LT(menu()->palette().color(QPalette::Base).lightness(), 100);
    EXPECT_GT(menu()->palette().color(QPalette::Text).lightness(), 200);
    EXPECT_TRUE(
        waitUntil([this] { return window()->grabWindow().pixelColor(140, 10).lightness() < 80; }));
}

TEST_F(MenuBarExtraTest, TellsThatTheDesktopHasNoTray)
{
    if (QSystemTrayIcon::isSystemTrayAvailable())
        GTEST_SKIP() << "this desktop has a tray";
    controller.show();
    ASSERT_TRUE(waitUntil([this] { return !memory.userNotifications->delivered.empty(); },
                          std::chrono::seconds(20)));
    controller.openPanel();
    controller.closePanel();
    EXPECT_EQ(memory.userNotifications->delivered.size(), 1U);
}

} // namespace
} // namespace Velloro
