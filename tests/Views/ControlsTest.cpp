#include "Base/StringLiterals.h"
#include "Support/InMemoryAppearance.h"
#include "Views/WindowProbe.h"
#include "Views/Windows/ViewEngine.h"

#include <QQmlComponent>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

constexpr auto scene = R"qml(
import QtQuick
import QtQuick.Layouts
import Velloro

FocusScope {
    id: scene
    width: 400
    height: 400
    property int count: 0
    property bool isOpen: false
    property alias chosen: popUp.currentIndex
    ColumnLayout {
        x: 40
        width: 300
        height: 400
        CapsuleButton { objectName: "capsule"; text: "capsule"; onClicked: ++scene.count }
        IconButton { objectName: "icon"; text: "icon"; symbol: "trash"; onClicked: ++scene.count }
        DisclosureGroup {
            title: "group"
            isOpen: scene.isOpen
            onToggled: { scene.isOpen = !scene.isOpen; ++scene.count }
        }
        ModeOptionCard { objectName: "card"; title: "card"; onClicked: ++scene.count }
        PopUpButton {
            id: popUp
            label: "menu"
            entries: ["Fish", "Heron", "Hare"]
            currentIndex: 1
            onActivated: index => { currentIndex = index; ++scene.count }
        }
        CapsuleButton { objectName: "passing"; text: "passing" }
        IconButton { text: "destroyer"; symbol: "trash"; destroys: true }
        CapsuleButton { text: "harmless" }
    }
}
)qml";

/// The controls on their own, in a window that has the focus.
class ControlsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QQmlComponent component(&engine.engine());
        component.setData(scene, QUrl(u"qrc:/Scene.qml"_s));
        root.reset(qobject_cast<QQuickItem *>(component.create()));
        ASSERT_TRUE(root) << component.errorString().toStdString();
        root->setParentItem(window.contentItem());
        window.resize(400, 400);
        window.show();
        window.requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        root->forceActiveFocus();
    }
    /// What was pressed since it was last asked.
    int presses()
    {
        const int count = root->property("count").toInt();
        root->setProperty("count", 0);
        return count;
    }

    InMemoryAppearance appearance;
    ViewEngine engine{appearance};
    QQuickWindow window;
    std::unique_ptr<QQuickItem> root;
    WindowProbe probe{&window};
};

TEST_F(ControlsTest, AKeyPressesOnceHoweverLongItIsHeld)
{
    for (const char *name : {"capsule", "icon", "group", "card"}) {
        ASSERT_TRUE(probe.tabTo(QLatin1StringView(name))) << name;
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
            probe.hold(key);
            EXPECT_EQ(presses(), 1) << name << ' ' << key;
        }
    }
    ASSERT_TRUE(probe.tabTo(u"group"_s));
    ASSERT_TRUE(root->property("isOpen").toBool());
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right}) {
        probe.hold(key);
        EXPECT_LE(presses(), 1);
    }
    EXPECT_TRUE(root->property("isOpen").toBool());
}

TEST_F(ControlsTest, ADoubleClickIsOneClick)
{
    for (const char *name : {"capsule", "icon", "card"}) {
        probe.doubleClick(QLatin1StringView(name));
        EXPECT_EQ(presses(), 1) << name;
        probe.click(QLatin1StringView(name));
        EXPECT_EQ(presses(), 1) << name << " is clicked again a while later";
    }
}

TEST_F(ControlsTest, AMenuOpensAtWhatIsChosenAndIsChosenFromByArrowsAndLetters)
{
    ASSERT_TRUE(probe.tabTo(u"menu: Heron"_s));
    const struct
    {
        Qt::Key opening;
        QList<Qt::Key> keys;
        int chosen;
    } ways[] = {{Qt::Key_Return, {}, 1},         {Qt::Key_Space, {Qt::Key_Down}, 2},
                {Qt::Key_Down, {Qt::Key_F}, 0},  {Qt::Key_Up, {Qt::Key_H}, 1},
                {Qt::Key_Enter, {Qt::Key_H}, 2}, {Qt::Key_Return, {Qt::Key_H}, 1},
                {Qt::Key_Return, {Qt::Key_X}, 1}};
    for (const auto &[opening, keys, chosen] : ways) {
        probe.hold(opening);
        EXPECT_EQ(presses(), 0) << "the key that opened the menu is still down";
        for (const Qt::Key key : keys)
            probe.press(key);
        EXPECT_TRUE(probe.focusedName().startsWith(QStringList({u"F"_s, u"He"_s, u"Ha"_s})[chosen]))
            << probe.focusedName().toStdString();
        probe.press(Qt::Key_Return);
        EXPECT_EQ(presses(), 1);
        EXPECT_EQ(root->property("chosen"), chosen);
        EXPECT_TRUE(probe.focusedName().startsWith(u"menu: ")) << probe.focusedName().toStdString();
        EXPECT_TRUE(probe.showsFocus());
    }
}

TEST_F(ControlsTest, TheRingKeepsADistanceInWhichItIsSeenOnAnyColour)
{
    ASSERT_TRUE(probe.tabTo(u"capsule"_s));
    QQuickItem *button = probe.item(u"capsule"_s);
    const QPointF left = button->mapToScene({0, button->height() / 2});
    const QImage picture = window.grabWindow();
    const auto color
        = [&](int distance) { return picture.pixelColor((left - QPointF(distance, 0)).toPoint()); };
    EXPECT_EQ(color(1), color(20));
    EXPECT_NE(color(3), color(20));
}

TEST_F(ControlsTest, AButtonThatGoesHandsTheKeyboardOnButNotToOneThatDestroys)
{
    for (const char *property : {"visible", "enabled"}) {
        ASSERT_TRUE(probe.tabTo(u"passing"_s));
        QQuickItem *button = probe.item(u"passing"_s);
        button->setProperty(property, false);
        EXPECT_EQ(probe.focusedName(), u"harmless") << property;
        EXPECT_TRUE(probe.showsFocus());
        button->setProperty(property, true);
    }
}

} // namespace
} // namespace Velloro
