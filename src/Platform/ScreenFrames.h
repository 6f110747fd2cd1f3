#pragma once

#include <QRect>

class QScreen;

namespace Velloro {

/// Where on the screens programs' windows belong. Main thread only.
class ScreenFrames
{
public:
    virtual ~ScreenFrames() = default;

    /// The screen without the desktop's panels and docks, in the desktop's logical pixels.
    [[nodiscard]] virtual QRect visibleFrame(const QScreen &screen) const = 0;
};

} // namespace Velloro
