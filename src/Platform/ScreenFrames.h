#pragma once

#include <QPointF>
#include <QRect>
#include <optional>

namespace Velloro {

/// Where on the screens programs' windows belong. Main thread only; waits for nobody but the
/// display server.
class ScreenFrames
{
public:
    virtual ~ScreenFrames() = default;

    /// The screen with this frame without the desktop's panels and docks; nothing where the toolkit
    /// knows them. Frames are in the desktop's logical pixels, `pixelRatio` of the server's each.
    [[nodiscard]] virtual std::optional<QRect>
    visibleFrame(const QRect &screen, double pixelRatio) const = 0;

    /// Where the pointer is, in the desktop's logical pixels; nothing where the display server does
    /// not tell while it is over windows of others.
    [[nodiscard]] virtual std::optional<QPointF> pointer() const = 0;

    /// Whether windows are put where the program says, and come to the front when it says. Else the
    /// desktop does both, when a window is shown.
    [[nodiscard]] virtual bool canPlaceWindows() const = 0;
};

} // namespace Velloro
