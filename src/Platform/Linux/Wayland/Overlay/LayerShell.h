#pragma once

#include "Platform/Linux/Wayland/WaylandConnection.h"

struct wp_fractional_scale_manager_v1;
struct wp_viewporter;
struct zwlr_layer_shell_v1;

namespace Velloro {

/// What a compositor offers to make surfaces above all windows with.
struct LayerShell
{
    /// Binds what there is.
    explicit LayerShell(WaylandConnection &connection);

    /// Whether there is enough of it.
    [[nodiscard]] bool isComplete() const { return compositor && memory && layers; }

    WaylandHandle<wl_compositor> compositor;
    WaylandHandle<wl_shm> memory;
    WaylandHandle<zwlr_layer_shell_v1> layers;
    /// Null where surfaces can't have a scale that is no whole number.
    WaylandHandle<wp_viewporter> viewports;
    /// Null where the compositor does not tell a surface its scale.
    WaylandHandle<wp_fractional_scale_manager_v1> scales;
};

} // namespace Velloro
