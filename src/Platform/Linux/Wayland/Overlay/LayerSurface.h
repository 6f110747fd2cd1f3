#pragma once

#include "Platform/Linux/Wayland/Overlay/LayerShell.h"
#include "Platform/Linux/Wayland/Overlay/ShmBuffer.h"
#include "Platform/Linux/Wayland/Overlay/WaylandOutputs.h"

#include <QImage>
#include <array>
#include <optional>

struct wp_fractional_scale_v1;
struct wp_viewport;
struct zwlr_layer_surface_v1;

namespace Velloro {

/// One surface in the compositor's topmost layer, from when it is shown until it is hidden. It has
/// neither keyboard nor pointer. The compositor puts it on the screen that has the focus.
class LayerSurface : public QObject
{
    Q_OBJECT

public:
    /// `shell`, which is complete, and `outputs` outlive it.
    LayerSurface(const LayerShell &shell, const WaylandOutputs &outputs, QSize size,
                 int bottomMargin);
    ~LayerSurface() override;

    /// Whether it has got a place.
    [[nodiscard]] bool isPlaced() const { return m_isPlaced; }
    [[nodiscard]] double pixelRatio() const;
    /// Shows a picture, of which `frameShown` tells; false when it could not be taken.
    bool present(const QImage &picture);

Q_SIGNALS:
    void placed();
    void frameShown();
    void pixelRatioChanged();
    /// The compositor shows it no more: its screen has gone, or there is none.
    void closed();

private:
    void followSurface();
    void followLayer();
    void followScale();
    void askForFrame();
    void commit(wl_buffer *buffer);
    [[nodiscard]] ShmBuffer *freeBuffer(QSize pixels);
    void tellWhenShown();

    const LayerShell &m_shell;
    const WaylandOutputs &m_outputs;
    QSize m_size;
    std::array<std::unique_ptr<ShmBuffer>, 2> m_buffers;
    WaylandHandle<wl_surface> m_surface;
    WaylandHandle<zwlr_layer_surface_v1> m_layer;
    WaylandHandle<wp_viewport> m_viewport;
    WaylandHandle<wp_fractional_scale_v1> m_scale;
    /// Until the picture is on the screen.
    WaylandHandle<wl_callback> m_frame;
    bool m_isPlaced = false;
    /// A picture was presented, of which `frameShown` has not yet told.
    bool m_isPresented = false;
    /// What the compositor wants the pixel ratio to be.
    std::optional<double> m_preferredRatio;
    /// The screen that it is on.
    const wl_output *m_output = nullptr;
};

} // namespace Velloro
