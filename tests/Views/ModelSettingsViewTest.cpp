#include "Support/WaitUntil.h"
#include "Views/SettingsWindowController.h"
#include "Views/WindowTestBase.h"

#include <algorithm>
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
        probe().item(u"tab0"_qs)->forceActiveFocus();
        probe().press(Qt::Key_Right);
    }
    /// Whether the ring of what has the keyboard is to be seen.
    [[nodiscard]] bool showsFocus() const
    {
        QQuickItem *item = window()->activeFocusItem();
        return item && hasVisibleRing(*item);
    }
    [[nodiscard]] static bool hasVisibleRing(const QQuickItem &item)
    {
        if (QByteArrayView(item.metaObject()->className()).startsWith("FocusRing"))
            return item.isVisible();
        const QList<QQuickItem *> children = item.childItems();
        return std::ranges::any_of(children,
                                   [](const QQuickItem *child) { return hasVisibleRing(*child); });
    }
    /// A file of the model is there.
    void addFile(const QString &modelId)
    {
        WhisperManager &manager = appState.whisperManager();
        memory.fileSystem->files.insert(manager.modelURL(modelId));
        manager.refreshModelStates();
    }
    [[nodiscard]] double menuPosition() const
    {
        return probe().item(u"menuEntries"_qs)->property("contentY").toDouble();
    }
};

TEST_F(ModelSettingsViewTest, AMenuOfModelsIsScrolledAndChosenFromWithTheKeyboard)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Model of Small: Base"_qs));
    const auto openMenu = [this] {
        probe().press(Qt::Key_Space);
        ASSERT_TRUE(waitUntil([this] {
            QQuickItem *entries = probe().item(u"menuEntries"_qs);
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
    EXPECT_TRUE(showsFocus());

    addFile(u"medium"_qs);
    addFile(u"small"_qs);
    openMenu();
    probe().press(Qt::Key_Down);
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
    ASSERT_TRUE(probe().tabTo(u"Tiny"_qs));
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(probe().tabTo(u"Download"_qs));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(probe().focusedName(), u"Downloading Tiny Q5");
    EXPECT_TRUE(showsFocus());
    memory.downloadSession->delegate.downloadDidComplete(
        DownloadTaskId(1), PlatformError{1, u"The server went away"_qs});
    EXPECT_EQ(probe().focusedName(), u"Retry");
    EXPECT_TRUE(showsFocus());
    addFile(u"tiny-q5_1"_qs);
    EXPECT_EQ(probe().focusedName(), u"Select");
    ASSERT_TRUE(probe().tabTo(u"Delete model"_qs));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(probe().focusedName(), u"Download");
    EXPECT_TRUE(showsFocus());
}

} // namespace
} // namespace Velloro
