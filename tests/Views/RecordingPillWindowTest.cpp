#include "Views/Pill/RecordingPillWindowController.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QGuiApplication>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace Velloro {

namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&free)>;

template <typename T>
Reply<T> reply(T *taken)
{
    return {taken, &free};
}

class RecordingPillWindowTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        if (!x11)
            GTEST_SKIP() << "no X server: the pill's window can't be looked at";
        xcb = x11->connection();
    }

    void show(std::optional<QPointF> pointer)
    {
        memory.screenFrames->pointerPosition = pointer;
        controller.show(appState);
        ASSERT_TRUE(controller.window());
        ASSERT_TRUE(waitUntil([this] { return controller.window()->isExposed(); }));
    }

    [[nodiscard]] xcb_window_t id() const { return xcb_window_t(controller.window()->winId()); }

    /// Where the server has the window, in device pixels of the screen.
    [[nodiscard]] QRect serverGeometry() const
    {
        const auto geometry
            = reply(xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, id()), nullptr));
        return {geometry->x, geometry->y, geometry->width, geometry->height};
    }

    /// What the window's mask leaves of it, or of its input.
    [[nodiscard]] QRegion shape(xcb_shape_sk_t kind = XCB_SHAPE_SK_BOUNDING) const
    {
        const auto shape = reply(xcb_shape_get_rectangles_reply(
            xcb, xcb_shape_get_rectangles(xcb, id(), kind), nullptr));
        const xcb_rectangle_t *rectangles = xcb_shape_get_rectangles_rectangles(shape.get());
        QRegion region;
        for (int index = 0; index < xcb_shape_get_rectangles_rectangles_length(shape.get());
             ++index) {
            const xcb_rectangle_t &r = rectangles[index];
            region |= QRect(r.x, r.y, r.width, r.height);
        }
        return region;
    }

    InMemoryPlatform memory;
    AppState appState{memory.platform};
    ViewEngine engine{*memory.appearance};
    RecordingPillWindowController controller{engine, memory.platform};
    xcb_connection_t *xcb = nullptr;
};

TEST_F(RecordingPillWindowTest, StandsAboveThePointerInsideEachCornerOfTheScreen)
{
    const QRect frame = QGuiApplication::primaryScreen()->availableGeometry();
    const struct
    {
        QPoint pointer;
        QPoint expected;
    } cases[] = {
        {frame.center(), frame.center() - QPoint(130, 98)},
        {frame.topLeft(), frame.topLeft() + QPoint(10, 10)},
        {frame.topRight(), frame.topRight() + QPoint(1 - 270, 10)},
        {frame.bottomLeft(), frame.bottomLeft() + QPoint(10, -98)},
        {frame.bottomRight(), frame.bottomRight() + QPoint(1 - 270, -98)},
    };
    LogRecorder log;
    QQuickWindow *window = nullptr;
    for (const auto &c : cases) {
        show(c.pointer);
        ASSERT_TRUE(waitUntil([&] {
            return serverGeometry() == QRect(c.expected, QSize(260, 48));
        })) << serverGeometry().x()
            << ", " << serverGeometry().y();
        EXPECT_TRUE(!window || window == controller.window()) << "one window serves always";
        window = controller.window();
        EXPECT_EQ(log.lines().constLast(),
                  u"[RecordingPill] Window shown at (%1.0, %2.0, 260.0, 48.0)"_s.arg(c.expected.x())
                      .arg(c.expected.y()));
    }
    EXPECT_EQ(log.lines().filter(u"[RecordingPill] Window created"_s).size(), 1);
    controller.hide();
    EXPECT_EQ(log.lines().constLast(), u"[RecordingPill] Window hidden");
    EXPECT_FALSE(window->isVisible());
}

TEST_F(RecordingPillWindowTest, IsAtTheBottomAndLetsClicksThroughWhereNobodyKnowsThePointer)
{
    const QRect frame = QGuiApplication::primaryScreen()->availableGeometry();
    show(std::nullopt);
    const QRect expected(frame.center().x() - 129, frame.bottom() + 1 - 48 - 48, 260, 48);
    EXPECT_TRUE(waitUntil([&] { return serverGeometry() == expected; }))
        << serverGeometry().x() << ", " << serverGeometry().y();
    EXPECT_TRUE(waitUntil([this] { return shape(XCB_SHAPE_SK_INPUT).isEmpty(); }));
}

TEST_F(RecordingPillWindowTest, IsNoConcernOfTheWindowManagerAndLeavesTheFocusWhereItIs)
{
    QLineEdit document;
    document.showFullScreen();
    document.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&document));
    const auto focused = [this] {
        return reply(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr))->focus;
    };
    const xcb_window_t before = focused();

    show(QPointF(600, 400));
    QTest::mouseClick(controller.window(), Qt::LeftButton);
    QTest::qWait(200);
    EXPECT_EQ(focused(), before);
    EXPECT_TRUE(document.isActiveWindow());

    // Such a window is in no task list and no switcher, and on every desktop.
    const auto attributes = reply(
        xcb_get_window_attributes_reply(xcb, xcb_get_window_attributes(xcb, id()), nullptr));
    EXPECT_TRUE(attributes->override_redirect);

    // Above the window that fills the screen.
    const auto tree = reply(xcb_query_tree_reply(
        xcb, xcb_query_tree(xcb, xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root),
        nullptr));
    const xcb_window_t *windows = xcb_query_tree_children(tree.get());
    int pillHeight = -1;
    int greatest = -1;
    for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
        const auto state = reply(xcb_get_window_attributes_reply(
            xcb, xcb_get_window_attributes(xcb, windows[index]), nullptr));
        if (!state || state->map_state != XCB_MAP_STATE_VIEWABLE
            || state->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        greatest = index;
        if (windows[index] == id())
            pillHeight = index;
    }
    EXPECT_EQ(pillHeight, greatest);
}

TEST_F(RecordingPillWindowTest, HasItsCornersCutWhereNothingBlendsWindows)
{
    memory.appearance->compositing = false;
    show(QPointF(600, 400));
    for (const QPoint corner : {QPoint(0, 0), QPoint(259, 0), QPoint(0, 47), QPoint(259, 47)})
        EXPECT_TRUE(waitUntil([&] { return !shape().contains(corner); }));
    for (const QPoint inside : {QPoint(0, 24), QPoint(259, 23), QPoint(130, 0), QPoint(130, 47)})
        EXPECT_TRUE(shape().contains(inside));

    // The screen shows the pixels as they are, whatever they say of their opacity.
    QImage seen = controller.window()->screen()->grabWindow(id()).toImage();
    ASSERT_EQ(seen.format(), QImage::Format_ARGB32_Premultiplied) << "it can be blended later";
    ASSERT_TRUE(seen.reinterpretAsFormat(QImage::Format_RGB32));
    ASSERT_EQ(seen.size(), QSize(260, 48));
    const QRegion inShape = shape();
    for (int x = 0; x < 24; ++x) {
        for (int y = 0; y < seen.height(); ++y) {
            if (inShape.contains({x, y}) && !QRect(16, 4, 200, 40).contains(x, y)) {
                EXPECT_GT(seen.pixelColor(x, y).lightness(), 200) << x << ", " << y;
            }
        }
    }

    memory.appearance->compositing = true;
    Q_EMIT memory.appearance->changed();
    EXPECT_TRUE(waitUntil([this] {
        return shape().contains({0, 0}) && shape().contains({259, 47});
    })) << "a compositing manager that starts gets the corners back";
}

} // namespace
} // namespace Velloro
