#pragma once

#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QObject>
#include <QSize>

struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace Velloro {

/// A screen of the compositor, and by how much windows are larger on it.
class WaylandOutput : public QObject
{
    Q_OBJECT

public:
    /// Takes over the output. `manager` may be null, where the compositor does not tell how large
    /// its screens are in logical pixels.
    WaylandOutput(wl_output *output, zxdg_output_manager_v1 *manager);

    [[nodiscard]] const wl_output *id() const { return m_output.get(); }
    /// The scale in whole steps, rounded up: what surfaces without a viewport can have.
    [[nodiscard]] int wholeScale() const { return m_wholeScale; }
    /// The scale as it is, as far as known.
    [[nodiscard]] double scale() const;

Q_SIGNALS:
    void changed();

private:
    void follow();
    void followLogicalSize();

    WaylandHandle<wl_output> m_output;
    WaylandHandle<zxdg_output_v1> m_logicalOutput;
    /// In pixels, as the screen is built, and whether it stands on its side.
    QSize m_mode;
    bool m_isUpright = false;
    QSize m_logicalSize;
    int m_wholeScale = 1;
};

} // namespace Velloro
