#pragma once

#include <QRect>
#include <optional>

namespace Velloro {

/// Where on the screens programs' windows belong. Main thread only.
class ScreenFrames
{
public:
    virtual ~ScreenFrames() = default;

    /// The screen with this frame without the desktop's panels and docks; nothing where the toolkit
    /// knows them. Frames are in the desktop's logical pixels, `pixelRatio` of the server's each.
    [[nodiscard]] virtual std::optional<QRect>
    visibleFrame(const QRect &screen, double pixelRatio) const = 0;
};

} // namespace Velloro
