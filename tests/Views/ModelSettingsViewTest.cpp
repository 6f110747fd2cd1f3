#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Settings/SettingsWindowController.h"
#include "Views/WindowTestBase.h"

#include <QDir>
#include <QFileInfo>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

/// The models pane in the settings window.
class ModelSettingsViewTest : public WindowTestBase<SettingsWindowController>
{
protected:
    void open()
    {
        WindowTestBase::open();
        ASSERT_TRUE(window());
        probe().item(u"tab0"_s)->forceActiveFocus();
        probe().press(Qt::Key_Right);
    }
    /// A file of the model is there, for all but the recogniser.
    void addFile(const QString &modelId)
    {
        WhisperManager &manager = appState.whisperManager();
        memory.fileSystem->files.insert(manager.modelURL(modelId));
        manager.refreshModelStates();
    }
    void writeFile(const QString &modelId)
    {
        QFile file(appState.whisperManager().modelURL(modelId));
        ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("model");
    }
    [[nodiscard]] double menuPosition() const
    {
        return probe().item(u"menuEntries"_s)->property("contentY").toDouble();
    }
};

TEST_F(ModelSettingsViewTest, AMenuOfModelsIsScrolledAndChosenFromWithTheKeyboard)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Model of Small: Base"_s));
    const auto openMenu = [this] {
        probe().press(Qt::Key_Space);
        ASSERT_TRUE(waitUntil([this] {
            QQuickItem *entries = probe().item(u"menuEntries"_s);
            return entries && entries->hasActiveFocus() && entries->height() > 100;
        }));
    };
    openMenu();
    EXPECT_EQ(menuPosition(), 0);
    probe().press(Qt::Key_Down);
    const double line = menuPosition();
    EXPECT_GT(line, 0) << "without an entry to choose, the keys scroll";
    probe().press(Qt::Key_PageDown);
    EXPECT_GT(menuPosition(), 4 * line);
    probe().press(Qt::Key_End);
    const double end = menuPosition();
    probe().press(Qt::Key_Up);
    EXPECT_DOUBLE_EQ(menuPosition(), end - line);
    probe().press(Qt::Key_Home);
    EXPECT_EQ(menuPosition(), 0);
    probe().press(Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([this] { return probe().focusedName() == u"Model of Small: Base"; }));
    EXPECT_TRUE(probe().showsFocus());

    addFile(u"medium"_s);
    addFile(u"small"_s);
    openMenu();
    EXPECT_EQ(probe().focusedName(), u"Small");
    probe().press(Qt::Key_Down);
    EXPECT_EQ(probe().focusedName(), u"Medium");
    probe().press(Qt::Key_Down);
    EXPECT_GT(menuPosition(), 0) << "after the last entry to choose come those to read";
    EXPECT_EQ(probe().focusedName(), u"Medium");
    probe().press(Qt::Key_Home);
    probe().press(Qt::Key_Up);
    EXPECT_EQ(probe().focusedName(), u"Small");
    probe().press(Qt::Key_Return);
    EXPECT_EQ(appState.modelId(ModelPreset::small), u"small");
}

TEST_F(ModelSettingsViewTest, TheKeyboardStaysWithTheRowWhoseControlChanges)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Tiny"_s));
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(probe().tabTo(u"Download"_s));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(probe().focusedName(), u"Downloading Tiny Q5");
    EXPECT_TRUE(probe().showsFocus());
    memory.downloadSession->delegate.downloadDidComplete(
        DownloadTaskId(1), PlatformError{1, u"The server went away"_s});
    EXPECT_EQ(probe().focusedName(), u"Retry");
    EXPECT_TRUE(probe().showsFocus());
    addFile(u"tiny-q5_1"_s);
    EXPECT_EQ(probe().focusedName(), u"Select");
    writeFile(u"tiny-q5_1"_s);
    probe().press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil(
        [this] { return appState.whisperManager().selectedModelId() == u"tiny-q5_1"_s; }));
    EXPECT_EQ(probe().focusedName(), u"Tiny Q5") << "the row, and not its trash";
    EXPECT_TRUE(probe().showsFocus());
    probe().press(Qt::Key_Return);
    probe().press(Qt::Key_Tab);
    EXPECT_EQ(probe().focusedName(), u"Delete model");
    probe().press(Qt::Key_Space);
    EXPECT_EQ(probe().focusedName(), u"Download");
    EXPECT_TRUE(probe().showsFocus());
}

TEST_F(ModelSettingsViewTest, AGroupStaysWhereItIsPressedWhenTheOneAboveCloses)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Tiny"_s));
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(probe().tabTo(u"Small"_s));
    EXPECT_EQ(probe().smallButtons(), QStringList());
    const QQuickItem *header = window()->activeFocusItem();
    const auto inWindow = [header] { return header->mapToScene({}).y(); };
    const double before = inWindow();
    const QQuickItem *group = header->parentItem()->parentItem();
    const double place = group->y();
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([&] { return group->y() < place - 50; }));
    EXPECT_NEAR(inWindow(), before, 1);
}

TEST_F(ModelSettingsViewTest, AMouseDoesNotDragThePaneAndItsWheelScrolls)
{
    open();
    const auto position = [this] {
        auto *pane = probe().item(u"pane"_s)->property("item").value<QQuickItem *>();
        return pane->property("contentY").toDouble();
    };
    QTest::mousePress(window(), Qt::LeftButton, {}, {250, 330});
    for (int y = 320; y > 150; y -= 10)
        QTest::mouseMove(window(), {250, y}, 5);
    QTest::mouseRelease(window(), Qt::LeftButton, {}, {250, 150});
    EXPECT_EQ(position(), 0);
    for (quint64 time = 1000; time < 1060; time += 20) {
        QWheelEvent wheel({250, 330}, window()->mapToGlobal(QPointF(250, 330)), {}, {0, -120}, {},
                          {}, Qt::NoScrollPhase, false);
        wheel.setTimestamp(time);
        QCoreApplication::sendEvent(window(), &wheel);
    }
    EXPECT_TRUE(waitUntil([&] { return position() > 20; }));
}

} // namespace
} // namespace Velloro
