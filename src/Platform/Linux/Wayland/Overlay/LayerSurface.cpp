#include "Platform/Linux/Wayland/Overlay/LayerSurface.h"

#include <algorithm>
#include <cmath>
#include <fractional-scale-v1-client.h>
#include <layer-shell-client.h>
#include <viewporter-client.h>

namespace Velloro {

namespace {

/// Scales arrive in these parts.
constexpr double scaleParts = 120;
constexpr uint32_t noKeyboard = 0;

} // namespace

LayerSurface::LayerSurface(const LayerShell &shell, const WaylandOutputs &outputs, QSize size,
                           int bottomMargin)
    : m_shell(shell)
    , m_outputs(outputs)
    , m_size(size)
    , m_surface(wl_compositor_create_surface(shell.compositor.get()), {wl_surface_destroy})
    , m_layer(zwlr_layer_shell_v1_get_layer_surface(shell.layers.get(), m_surface.get(), nullptr,
                                                    ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "velloro"),
              {zwlr_layer_surface_v1_destroy})
    , m_viewport(shell.viewports
                     ? wp_viewporter_get_viewport(shell.viewports.get(), m_surface.get())
                     : nullptr,
                 {wp_viewport_destroy})
{
    followSurface();
    followLayer();
    if (m_viewport && shell.scales)
        followScale();
    connect(&outputs, &WaylandOutputs::changed, this, &LayerSurface::pixelRatioChanged);

    zwlr_layer_surface_v1_set_size(m_layer.get(), uint32_t(size.width()), uint32_t(size.height()));
    zwlr_layer_surface_v1_set_anchor(m_layer.get(), ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM);
    zwlr_layer_surface_v1_set_margin(m_layer.get(), 0, 0, bottomMargin, 0);
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer.get(), noKeyboard);
    const WaylandHandle<wl_region> nothing(wl_compositor_create_region(shell.compositor.get()),
                                           {wl_region_destroy});
    wl_surface_set_input_region(m_surface.get(), nothing.get());
    wl_surface_commit(m_surface.get());
}

LayerSurface::~LayerSurface() = default;

double LayerSurface::pixelRatio() const
{
    if (m_preferredRatio)
        return *m_preferredRatio;
    // Before it is on a screen, the finest picture is the best guess.
    const WaylandOutput *output = m_outputs.find(m_output);
    if (!output)
        return 1;
    return m_viewport ? output->scale() : output->wholeScale();
}

bool LayerSurface::present(const QImage &picture)
{
    ShmBuffer *buffer = m_isPlaced && !m_isPresented ? freeBuffer(picture.size()) : nullptr;
    if (!buffer)
        return false;
    askForFrame();
    m_isPresented = true;
    commit(buffer->fill(picture));
    return true;
}

void LayerSurface::commit(wl_buffer *buffer)
{
    wl_surface *surface = m_surface.get();
    if (m_viewport)
        wp_viewport_set_destination(m_viewport.get(), m_size.width(), m_size.height());
    else
        wl_surface_set_buffer_scale(surface, int(std::lround(pixelRatio())));
    wl_surface_attach(surface, buffer, 0, 0);
    wl_surface_damage_buffer(surface, 0, 0, INT32_MAX, INT32_MAX);
    wl_surface_commit(surface);
}

ShmBuffer *LayerSurface::freeBuffer(QSize pixels)
{
    const auto free = std::ranges::find_if(
        m_buffers, [](const auto &buffer) { return !buffer || buffer->isFree(); });
    if (free == m_buffers.end())
        return nullptr;
    if (!*free || (*free)->pixels() != pixels)
        *free = ShmBuffer::make(*m_shell.memory, pixels, [this] { tellWhenShown(); });
    return free->get();
}

void LayerSurface::tellWhenShown()
{
    const bool canTakeAnother = std::ranges::any_of(
        m_buffers, [](const auto &buffer) { return !buffer || buffer->isFree(); });
    if (!m_isPresented || m_frame || !canTakeAnother)
        return;
    m_isPresented = false;
    Q_EMIT frameShown();
}

void LayerSurface::askForFrame()
{
    static constexpr wl_callback_listener listener{
        .done =
            [](void *data, wl_callback *, uint32_t) {
                auto *self = static_cast<LayerSurface *>(data);
                self->m_frame.reset();
                self->tellWhenShown();
            },
    };
    m_frame = {wl_surface_frame(m_surface.get()), {wl_callback_destroy}};
    wl_callback_add_listener(m_frame.get(), &listener, this);
}

void LayerSurface::followSurface()
{
    static constexpr wl_surface_listener listener{
        .enter =
            [](void *data, wl_surface *, wl_output *output) {
                auto *self = static_cast<LayerSurface *>(data);
                self->m_output = output;
                Q_EMIT self->pixelRatioChanged();
            },
        .leave =
            [](void *data, wl_surface *, wl_output *output) {
                auto *self = static_cast<LayerSurface *>(data);
                if (self->m_output == output)
                    self->m_output = nullptr;
            },
    };
    wl_surface_add_listener(m_surface.get(), &listener, this);
}

void LayerSurface::followLayer()
{
    static constexpr zwlr_layer_surface_v1_listener listener{
        .configure =
            [](void *data, zwlr_layer_surface_v1 *layer, uint32_t serial, uint32_t, uint32_t) {
                zwlr_layer_surface_v1_ack_configure(layer, serial);
                auto *self = static_cast<LayerSurface *>(data);
                if (std::exchange(self->m_isPlaced, true))
                    wl_surface_commit(self->m_surface.get());
                else
                    Q_EMIT self->placed();
            },
        .closed
        = [](void *data,
             zwlr_layer_surface_v1 *) { Q_EMIT static_cast<LayerSurface *>(data)->closed(); },
    };
    zwlr_layer_surface_v1_add_listener(m_layer.get(), &listener, this);
}

void LayerSurface::followScale()
{
    static constexpr wp_fractional_scale_v1_listener listener{
        .preferred_scale =
            [](void *data, wp_fractional_scale_v1 *, uint32_t parts) {
                auto *self = static_cast<LayerSurface *>(data);
                self->m_preferredRatio = parts / scaleParts;
                Q_EMIT self->pixelRatioChanged();
            },
    };
    m_scale = {
        wp_fractional_scale_manager_v1_get_fractional_scale(m_shell.scales.get(), m_surface.get()),
        {wp_fractional_scale_v1_destroy}};
    wp_fractional_scale_v1_add_listener(m_scale.get(), &listener, this);
}

} // namespace Velloro
