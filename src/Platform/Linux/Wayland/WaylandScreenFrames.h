#pragma once

#include "Platform/ScreenFrames.h"

#include <memory>

namespace Velloro {

/// The screens of a Wayland compositor: it places windows itself and tells nobody where the pointer
/// is. Windows of the X server beside it are placed by the program still.
class WaylandScreenFrames final : public ScreenFrames
{
public:
    /// `windows` knows the frames of the server that has the program's windows; null where that is
    /// the compositor itself.
    explicit WaylandScreenFrames(std::unique_ptr<ScreenFrames> windows)
        : m_windows(std::move(windows))
    {
    }

    [[nodiscard]] std::optional<QRect> visibleFrame(const QRect &screen,
                                                    double pixelRatio) const override
    {
        return m_windows ? m_windows->visibleFrame(screen, pixelRatio) : std::nullopt;
    }
    [[nodiscard]] std::optional<QPointF> pointer() const override { return std::nullopt; }
    [[nodiscard]] bool canPlaceWindows() const override { return m_windows != nullptr; }

private:
    std::unique_ptr<ScreenFrames> m_windows;
};

} // namespace Velloro
