#pragma once

#include "Platform/Linux/Wayland/Overlay/LayerSurface.h"
#include "Platform/Overlay.h"

namespace Velloro {

/// The overlay as a surface in the compositor's topmost layer. When its screen goes it moves to
/// another one, and waits for one where there is none.
class WaylandOverlay final : public Overlay
{
    Q_OBJECT

public:
    /// Null where the compositor has no layers.
    [[nodiscard]] static std::unique_ptr<WaylandOverlay>
    make(const std::shared_ptr<WaylandConnection> &connection);
    ~WaylandOverlay() override;

    void show(QSize size, int bottomMargin) override;
    void hide() override;
    [[nodiscard]] double pixelRatio() const override { return m_pixelRatio; }
    void present(const QImage &picture) override;

private:
    WaylandOverlay(std::shared_ptr<WaylandConnection> connection, LayerShell shell);

    void place();
    void placeAgain();
    void updatePixelRatio();

    std::shared_ptr<WaylandConnection> m_connection;
    LayerShell m_shell;
    WaylandOutputs m_outputs;
    QSize m_size;
    int m_bottomMargin = 0;
    bool m_isShown = false;
    /// A screen has come since the surface was made.
    bool m_hasNewScreen = false;
    double m_pixelRatio = 1;
    /// Null while it is hidden, or has no screen.
    std::unique_ptr<LayerSurface> m_surface;
};

} // namespace Velloro
