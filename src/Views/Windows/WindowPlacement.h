#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

class QScreen;

namespace Velloro {

class ScreenFrames;

/// Where the program's floating windows go. Coordinates are the desktop's: logical pixels, y grows
/// downwards. `visibleFrame` is a screen without its docks and panels.
namespace WindowPlacement {

/// The pill: centred over the pointer, its bottom edge 50 above it, at least 10 inside the frame.
/// Where the frame is too small for both margins, the left and the bottom one win.
[[nodiscard]] QPointF pillOrigin(QPointF pointer, QSizeF size, const QRectF &visibleFrame);

/// The pill's distance from the frame's lower edge where nobody knows the pointer.
constexpr int pillBottomMargin = 48;
/// The pill's place there: in the middle of that edge.
[[nodiscard]] QPointF pillOriginWithoutPointer(QSizeF size, const QRectF &visibleFrame);

/// A panel that belongs to `anchor` (the tray icon): centred under it, or above it where there is
/// no room below, or beside it where the tray is upright; wholly inside the frame where it fits.
[[nodiscard]] QPointF panelOrigin(const QRectF &anchor, QSizeF size, const QRectF &visibleFrame);

/// The most that such a panel can take.
[[nodiscard]] QSizeF panelRoom(const QRectF &visibleFrame);

/// A window in the middle of the frame, as large as the frame has room.
[[nodiscard]] QRect centered(QSize size, const QRect &visibleFrame);

/// The screen without the desktop's panels and docks.
[[nodiscard]] QRect visibleFrame(const QScreen &screen, const ScreenFrames &frames);

/// The screen that holds this point, or is nearest to it; null when there is no screen.
[[nodiscard]] QScreen *screenAt(QPointF point);
/// The screen with the pointer; the first one where nobody knows the pointer.
[[nodiscard]] QScreen *screenInUse(const ScreenFrames &frames);

} // namespace WindowPlacement
} // namespace Velloro
