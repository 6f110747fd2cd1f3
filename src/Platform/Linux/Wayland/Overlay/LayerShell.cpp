#include "Platform/Linux/Wayland/Overlay/LayerShell.h"

#include <fractional-scale-v1-client.h>
#include <layer-shell-client.h>
#include <viewporter-client.h>

namespace Velloro {

namespace {

/// The first that tells damage in the pixels of the picture.
constexpr uint32_t compositorVersion = 4;
constexpr uint32_t layersVersion = 3;

void endLayers(zwlr_layer_shell_v1 *layers)
{
    if (zwlr_layer_shell_v1_get_version(layers) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION)
        zwlr_layer_shell_v1_destroy(layers);
    else
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(layers));
}

} // namespace

LayerShell::LayerShell(WaylandConnection &connection)
    : compositor(connection.bind<wl_compositor>(wl_compositor_interface, compositorVersion),
                 {wl_compositor_destroy})
    , memory(connection.bind<wl_shm>(wl_shm_interface, 1), {wl_shm_destroy})
    , layers(connection.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, layersVersion),
             {endLayers})
    , viewports(connection.bind<wp_viewporter>(wp_viewporter_interface, 1), {wp_viewporter_destroy})
    , scales(connection.bind<wp_fractional_scale_manager_v1>(
                 wp_fractional_scale_manager_v1_interface, 1),
             {wp_fractional_scale_manager_v1_destroy})
{
}

} // namespace Velloro
