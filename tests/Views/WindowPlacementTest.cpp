#include "Views/Windows/WindowPlacement.h"

#include <gtest/gtest.h>

namespace Velloro {

namespace {

const QSizeF pillSize(260, 48);
const QSizeF panelSize(280, 330);

struct PillCase
{
    const char *name;
    QRectF frame;
    QPointF pointer;
    QPointF expected;
};

TEST(WindowPlacementTest, PutsThePillAboveThePointerInsideTheVisibleFrame)
{
    const QRectF main(0, 24, 1920, 1016);    // a bar above, a dock below
    const QRectF second(1920, 0, 1536, 864); // scaled by 1.25, at the right
    const QRectF left(-1280, 200, 1280, 1024);
    const PillCase cases[] = {
        {"in the middle", main, {960, 610}, {830, 512}},
        {"bottom left corner", main, {0, 1040}, {10, 942}},
        {"bottom right corner", main, {1919, 1039}, {1650, 941}},
        {"top left corner", main, {0, 24}, {10, 34}},
        {"top right corner", main, {1919, 30}, {1650, 34}},
        {"on the dock", main, {960, 1075}, {830, 977}},
        {"below the dock's margin", main, {960, 1079}, {830, 981}},
        {"108 below the top", main, {960, 132}, {830, 34}},
        {"109 below the top", main, {960, 133}, {830, 35}},
        {"second monitor, left edge", second, {1920, 400}, {1930, 302}},
        {"second monitor, between pixels", second, {2400.4, 400.8}, {2270.4, 302.8}},
        {"monitor of negative coordinates", left, {-1280, 1224}, {-1270, 1126}},
        {"frame narrower than the pill and its margins",
         {100, 0, 270, 800},
         {200, 400},
         {110, 302}},
        {"frame lower than the pill and its margins", {0, 0, 800, 60}, {400, 30}, {270, 2}},
    };
    for (const PillCase &c : cases) {
        const QPointF origin = WindowPlacement::pillOrigin(c.pointer, pillSize, c.frame);
        EXPECT_NEAR(origin.x(), c.expected.x(), 1e-9) << c.name;
        EXPECT_NEAR(origin.y(), c.expected.y(), 1e-9) << c.name;
    }
}

TEST(WindowPlacementTest, PutsThePanelBesideTheTrayIconOnTheScreen)
{
    const QRectF frame(0, 30, 1920, 1010);
    const struct
    {
        const char *name;
        QRectF anchor;
        QPointF expected;
    } cases[] = {
        {"tray above", {1000, 4, 22, 22}, {871, 38}},
        {"tray above, at the right end", {1890, 4, 22, 22}, {1632, 38}},
        {"tray below", {1500, 1046, 22, 22}, {1371, 702}},
        {"tray at the left side", {-30, 500, 22, 22}, {8, 346}},
        {"tray at the right side", {1930, 1030, 22, 22}, {1632, 702}},
    };
    for (const auto &c : cases) {
        const QPointF origin = WindowPlacement::panelOrigin(c.anchor, panelSize, frame);
        EXPECT_EQ(origin, c.expected) << c.name << ": " << origin.x() << ", " << origin.y();
        EXPECT_TRUE(frame.contains(QRectF(origin, panelSize))) << c.name;
    }
}

TEST(WindowPlacementTest, CentersAWindowAndKeepsItOnASmallScreen)
{
    EXPECT_EQ(WindowPlacement::centered({500, 580}, {100, 20, 1000, 780}),
              QRect(350, 120, 500, 580));
    EXPECT_EQ(WindowPlacement::centered({500, 580}, {0, 20, 640, 460}), QRect(70, 20, 500, 460));
}

} // namespace
} // namespace Velloro
