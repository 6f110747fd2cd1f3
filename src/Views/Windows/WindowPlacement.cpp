#include "Views/Windows/WindowPlacement.h"

#include "Platform/ScreenFrames.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace Velloro::WindowPlacement {

namespace {

constexpr double pointerDistance = 50;
constexpr double pillMargin = 10;
constexpr double panelGap = 4;
constexpr double panelMargin = 8;

/// `value` kept in the range; where the range is empty, its lower end.
double kept(double value, double low, double high)
{
    return std::max(low, std::min(value, high));
}

/// From a point to a screen's nearest pixel: where two screens meet, each point is one's alone.
double distance(QPointF point, const QRect &screen)
{
    const double dx = std::max({screen.left() - point.x(), 0.0, point.x() - screen.right()});
    const double dy = std::max({screen.top() - point.y(), 0.0, point.y() - screen.bottom()});
    return dx + dy;
}

} // namespace

QPointF pillOrigin(QPointF pointer, QSizeF size, const QRectF &visibleFrame)
{
    const double x = kept(pointer.x() - size.width() * 0.5, visibleFrame.left() + pillMargin,
                          visibleFrame.right() - size.width() - pillMargin);
    double y = pointer.y() - pointerDistance - size.height();
    y = std::max(y, visibleFrame.top() + pillMargin);
    y = std::min(y, visibleFrame.bottom() - size.height() - pillMargin);
    return {x, y};
}

QPointF pillOriginWithoutPointer(QSizeF size, const QRectF &visibleFrame)
{
    return {visibleFrame.center().x() - size.width() / 2,
            visibleFrame.bottom() - pillBottomMargin - size.height()};
}

QPointF panelOrigin(const QRectF &anchor, QSizeF size, const QRectF &visibleFrame)
{
    double x = anchor.center().x() - size.width() / 2;
    double y = anchor.bottom() + panelGap;
    if (anchor.center().x() < visibleFrame.left() || anchor.center().x() > visibleFrame.right()) {
        // The icon is in a panel at the side of the screen.
        x = anchor.center().x() < visibleFrame.left() ? visibleFrame.left() : visibleFrame.right();
        y = anchor.center().y() - size.height() / 2;
    } else if (y + size.height() > visibleFrame.bottom() - panelMargin) {
        y = anchor.top() - panelGap - size.height();
    }
    return {kept(x, visibleFrame.left() + panelMargin,
                 visibleFrame.right() - size.width() - panelMargin),
            kept(y, visibleFrame.top() + panelMargin,
                 visibleFrame.bottom() - size.height() - panelMargin)};
}

QSizeF panelRoom(const QRectF &visibleFrame)
{
    return visibleFrame.size() - QSizeF(2 * panelMargin, 2 * panelMargin);
}

QRect centered(QSize size, const QRect &visibleFrame)
{
    QRect frame(QPoint(), size.boundedTo(visibleFrame.size()));
    frame.moveCenter(visibleFrame.center());
    return frame;
}

QRect visibleFrame(const QScreen &screen, const ScreenFrames &frames)
{
    return frames.visibleFrame(screen.geometry(), screen.devicePixelRatio())
        .value_or(screen.availableGeometry());
}

QScreen *screenAt(QPointF point)
{
    const QList<QScreen *> screens = QGuiApplication::screens();
    const auto nearest = std::min_element(
        screens.begin(), screens.end(), [point](const QScreen *a, const QScreen *b) {
            return distance(point, a->geometry()) < distance(point, b->geometry());
        });
    return nearest == screens.end() ? nullptr : *nearest;
}

QScreen *screenInUse(const ScreenFrames &frames)
{
    const std::optional<QPointF> pointer = frames.pointer();
    return pointer ? screenAt(*pointer) : QGuiApplication::primaryScreen();
}

} // namespace Velloro::WindowPlacement
