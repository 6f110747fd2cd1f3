#pragma once

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/ScreenFrames.h"

#include <memory>
#include <span>

namespace Velloro {

/// The screens of an X server without what panels and docks keep for themselves.
///
/// The toolkit knows this for a single screen only: the window manager tells one area for the whole
/// desktop. With several screens the panels' own reservations are read. Waits for the X server
/// alone.
class X11ScreenFrames final : public ScreenFrames
{
public:
    /// A null connection knows no frame.
    explicit X11ScreenFrames(std::shared_ptr<X11Connection> connection);

    [[nodiscard]] std::optional<QRect> visibleFrame(const QRect &screen,
                                                    double pixelRatio) const override;
    [[nodiscard]] std::optional<QPointF> pointer() const override;
    [[nodiscard]] bool canPlaceWindows() const override { return true; }

    /// A monitor without the panels that reserve parts of the edges of the desktop, all in the
    /// server's pixels. A reservation that would leave nothing of it is another monitor's.
    [[nodiscard]] static QRect withoutPanels(const QRect &monitor, std::span<const QRect> panels);

private:
    /// What the windows on the desktop reserve.
    [[nodiscard]] std::vector<QRect> panels() const;

    std::shared_ptr<X11Connection> m_connection;
};

} // namespace Velloro
