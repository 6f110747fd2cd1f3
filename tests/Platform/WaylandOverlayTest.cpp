#include "Platform/Linux/Wayland/Overlay/WaylandOverlay.h"
#include "Base/StringLiterals.h"
#include "Support/SwayCompositor.h"
#include "Support/WaitUntil.h"

#include <QFile>
#include <QImage>
#include <cmath>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

constexpr QSize place(200, 40);
constexpr int margin = 40;
const QString firstOutput = u"HEADLESS-1"_s;
const QString secondOutput = u"HEADLESS-2"_s;

/// A picture with an edge between any two pixels: nothing that was scaled looks like it.
QImage chequered(double ratio)
{
    QImage picture(int(std::lround(place.width() * ratio)),
                   int(std::lround(place.height() * ratio)), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixelColor(x, y, (x + y) % 2 ? QColor(Qt::red) : QColor(Qt::yellow));
    }
    return picture;
}

void message(const QString &text)
{
    (void)SwayCompositor::run(u"swaymsg"_s, text.split(u' '));
}

/// What an output shows, in its own pixels.
QImage look(const QString &output)
{
    return QImage::fromData(
               SwayCompositor::run(u"grim"_s, {u"-t"_s, u"ppm"_s, u"-o"_s, output, u"-"_s}), "ppm")
        .convertToFormat(QImage::Format_RGB32);
}

class WaylandOverlayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (const QStringList missing = SwayCompositor::missing({u"grim"_s}); !missing.isEmpty())
            GTEST_SKIP() << "not installed: " << missing.join(u", "_s).toStdString();
        ASSERT_TRUE(sway.start());
        // A whole number of units at each scale.
        message(u"output %1 mode 1200x600"_s.arg(firstOutput));
        connectTo({});
    }

    /// Has the overlay on the compositor with this socket; without a name, on the test's.
    void connectTo(const QString &socket)
    {
        overlay.reset();
        connection = WaylandConnection::open(QDeadlineTimer(10'000), socket.toLocal8Bit());
        ASSERT_TRUE(connection);
        overlay = WaylandOverlay::make(connection);
        ASSERT_TRUE(overlay);
        // A program that always has something new to show, in the pixels of the screen.
        const auto present = [this] {
            ++turns;
            overlay->present(chequered(overlay->pixelRatio()));
        };
        QObject::connect(overlay.get(), &Overlay::placed, overlay.get(), present);
        QObject::connect(overlay.get(), &Overlay::frameShown, overlay.get(), present);
    }

    /// Whether the output shows the picture as it was painted, at the bottom in the middle.
    [[nodiscard]] static bool shows(const QString &output, double ratio = 1)
    {
        const QImage picture = chequered(ratio).convertToFormat(QImage::Format_RGB32);
        const QImage seen = look(output);
        const int left = (seen.width() - picture.width()) / 2;
        const int top = int(std::lround(seen.height() - margin * ratio)) - picture.height();
        // Where a unit is no whole number of pixels, it may be the next one.
        for (const int x : {left, left + 1}) {
            if (seen.copy({{x, top}, picture.size()}) == picture)
                return true;
        }
        return false;
    }
    [[nodiscard]] static bool isEmpty(const QString &output)
    {
        const QImage seen = look(output);
        QImage empty = seen;
        empty.fill(seen.pixel(0, 0));
        return !seen.isNull() && seen == empty;
    }

    SwayCompositor sway;
    std::shared_ptr<WaylandConnection> connection;
    std::unique_ptr<WaylandOverlay> overlay;
    int turns = 0;
};

TEST_F(WaylandOverlayTest, IsAsSharpAsTheScreen)
{
    overlay->show(place, margin);
    for (const double ratio : {1.0, 1.25, 1.5, 2.0, 1.0}) {
        message(u"output %1 scale %2"_s.arg(firstOutput).arg(ratio));
        EXPECT_TRUE(waitUntil([=] { return shows(firstOutput, ratio); })) << ratio;
        EXPECT_EQ(overlay->pixelRatio(), ratio);
    }
    message(u"output %1 scale 1.25 transform 90"_s.arg(firstOutput));
    EXPECT_TRUE(waitUntil([this] { return overlay->pixelRatio() == 1.25; })) << "on its side";
}

TEST_F(WaylandOverlayTest, IsOffTheScreenWhileItIsHidden)
{
    overlay->show(place, margin);
    ASSERT_TRUE(waitUntil([] { return shows(firstOutput); }));
    overlay->hide();
    const int before = turns;
    EXPECT_TRUE(waitUntil([] { return isEmpty(firstOutput); }));
    EXPECT_EQ(turns, before) << "nobody asks for pictures";
    overlay->present(chequered(1));
    EXPECT_TRUE(isEmpty(firstOutput));
    overlay->show(place, margin);
    EXPECT_TRUE(waitUntil([] { return shows(firstOutput); }));
}

TEST_F(WaylandOverlayTest, IsOnTheOutputWithTheFocus)
{
    message(u"create_output"_s);
    message(u"output %1 mode 600x600 position 1200 0 scale 1.5"_s.arg(secondOutput));
    for (const auto &[focused, ratio, other] :
         {std::tuple(secondOutput, 1.5, firstOutput), std::tuple(firstOutput, 1.0, secondOutput)}) {
        message(u"focus output %1"_s.arg(focused));
        overlay->show(place, margin);
        EXPECT_TRUE(waitUntil([&] { return shows(focused, ratio); }));
        EXPECT_TRUE(isEmpty(other));
    }
}

TEST_F(WaylandOverlayTest, MovesToAnotherOutputWhenItsOwnGoes)
{
    // A compositor whose outputs are windows of the other, which can be closed.
    const QString socket = sway.path(u"wayland-2"_s);
    const QString commands = sway.path(u"nested.sock"_s);
    sway.execute(u"env WLR_BACKENDS=wayland WLR_WL_OUTPUTS=2 SWAYSOCK=%1 sway -c %2"_s.arg(
        commands, sway.path(u"config"_s)));
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(socket) && QFile::exists(commands); }));
    connectTo(socket);
    int places = 0;
    QObject::connect(overlay.get(), &Overlay::placed, overlay.get(), [&] { ++places; });
    overlay->show(place, margin);
    ASSERT_TRUE(waitUntil([this] { return turns > 1; }));
    const auto isShownAgain = [&] {
        return waitUntil([&, before = turns] { return places > 0 && turns > before + 1; });
    };

    places = 0;
    message(u"[title=WL-1] kill"_s);
    EXPECT_TRUE(isShownAgain()) << "on the other one";
    message(u"[title=WL-2] kill"_s);
    ASSERT_TRUE(waitUntil([&] { return !connection->offers(wl_output_interface); }));
    places = 0;
    (void)SwayCompositor::run(u"swaymsg"_s, {u"-s"_s, commands, u"create_output"_s});
    EXPECT_TRUE(isShownAgain()) << "when there is one again";
}

TEST_F(WaylandOverlayTest, OutlivesTheCompositor)
{
    overlay->show(place, margin);
    ASSERT_TRUE(waitUntil([this] { return turns > 1; }));
    sway.kill();
    ASSERT_TRUE(waitUntil([this] { return !connection->isAlive(); }));
    overlay->present(chequered(1));
    overlay->hide();
    overlay->show(place, margin);
    overlay->hide();
}

} // namespace
} // namespace Velloro
