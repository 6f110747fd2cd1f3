#include "Platform/Linux/Wayland/Overlay/WaylandOutput.h"

#include <cmath>
#include <xdg-output-unstable-v1-client.h>

namespace Velloro {

namespace {

/// Compositors keep scales in these parts; sizes in whole logical pixels are not that exact.
constexpr double scaleParts = 120;

void endOutput(wl_output *output)
{
    if (wl_output_get_version(output) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
        wl_output_release(output);
    else
        wl_output_destroy(output);
}

} // namespace

WaylandOutput::WaylandOutput(wl_output *output, zxdg_output_manager_v1 *manager)
    : m_output(output, {endOutput})
    , m_logicalOutput(manager ? zxdg_output_manager_v1_get_xdg_output(manager, output) : nullptr,
                      {zxdg_output_v1_destroy})
{
    follow();
    if (m_logicalOutput)
        followLogicalSize();
}

double WaylandOutput::scale() const
{
    const QSize turned = m_isUpright ? m_mode.transposed() : m_mode;
    if (m_logicalSize.isEmpty() || turned.isEmpty())
        return m_wholeScale;
    const double scale = double(turned.width()) / m_logicalSize.width();
    return std::round(scale * scaleParts) / scaleParts;
}

void WaylandOutput::follow()
{
    static constexpr wl_output_listener listener{
        .geometry =
            [](void *data, wl_output *, int32_t, int32_t, int32_t, int32_t, int32_t, const char *,
               const char *, int32_t transform) {
                // Every second transform is a quarter of a turn.
                static_cast<WaylandOutput *>(data)->m_isUpright = transform % 2 != 0;
            },
        .mode =
            [](void *data, wl_output *, uint32_t flags, int32_t width, int32_t height, int32_t) {
                if (flags & WL_OUTPUT_MODE_CURRENT)
                    static_cast<WaylandOutput *>(data)->m_mode = {width, height};
            },
        .done
        = [](void *data, wl_output *) { Q_EMIT static_cast<WaylandOutput *>(data)->changed(); },
        .scale = [](void *data, wl_output *,
                    int32_t factor) { static_cast<WaylandOutput *>(data)->m_wholeScale = factor; },
        .name = nullptr,
        .description = nullptr,
    };
    wl_output_add_listener(m_output.get(), &listener, this);
}

void WaylandOutput::followLogicalSize()
{
    static constexpr zxdg_output_v1_listener listener{
        .logical_position = [](void *, zxdg_output_v1 *, int32_t, int32_t) {},
        .logical_size =
            [](void *data, zxdg_output_v1 *, int32_t width, int32_t height) {
                static_cast<WaylandOutput *>(data)->m_logicalSize = {width, height};
            },
        .done = [](void *data,
                   zxdg_output_v1 *) { Q_EMIT static_cast<WaylandOutput *>(data)->changed(); },
        .name = nullptr,
        .description = nullptr,
    };
    zxdg_output_v1_add_listener(m_logicalOutput.get(), &listener, this);
}

} // namespace Velloro
