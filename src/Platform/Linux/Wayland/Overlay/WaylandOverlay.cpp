#include "Platform/Linux/Wayland/Overlay/WaylandOverlay.h"

namespace Velloro {

std::unique_ptr<WaylandOverlay>
WaylandOverlay::make(const std::shared_ptr<WaylandConnection> &connection)
{
    LayerShell shell(*connection);
    if (!shell.isComplete())
        return nullptr;
    return std::unique_ptr<WaylandOverlay>(new WaylandOverlay(connection, std::move(shell)));
}

WaylandOverlay::WaylandOverlay(std::shared_ptr<WaylandConnection> connection, LayerShell shell)
    : m_connection(std::move(connection))
    , m_shell(std::move(shell))
    , m_outputs(m_connection)
{
    connect(&m_outputs, &WaylandOutputs::added, this, [this] {
        m_hasNewScreen = true;
        if (m_isShown && !m_surface)
            place();
    });
    connect(m_connection.get(), &WaylandConnection::ended, this, &WaylandOverlay::hide);
}

WaylandOverlay::~WaylandOverlay() = default;

void WaylandOverlay::show(QSize size, int bottomMargin)
{
    hide();
    if (!m_connection->isAlive())
        return;
    m_size = size;
    m_bottomMargin = bottomMargin;
    m_isShown = true;
    place();
}

void WaylandOverlay::hide()
{
    m_isShown = false;
    m_surface.reset();
    m_connection->flush();
}

void WaylandOverlay::place()
{
    m_hasNewScreen = false;
    m_surface = std::make_unique<LayerSurface>(m_shell, m_outputs, m_size, m_bottomMargin);
    connect(m_surface.get(), &LayerSurface::placed, this, [this] {
        updatePixelRatio();
        Q_EMIT placed();
    });
    connect(m_surface.get(), &LayerSurface::frameShown, this, &Overlay::frameShown);
    connect(m_surface.get(), &LayerSurface::pixelRatioChanged, this,
            &WaylandOverlay::updatePixelRatio);
    // Not while the surface still deals with it.
    connect(
        m_surface.get(), &LayerSurface::closed, m_surface.get(), [this] { placeAgain(); },
        Qt::QueuedConnection);
    m_connection->flush();
}

void WaylandOverlay::placeAgain()
{
    // One that never had a place would get none this time either, until a screen comes.
    const bool hasHope = m_surface->isPlaced() || m_hasNewScreen;
    m_surface.reset();
    if (hasHope)
        place();
}

void WaylandOverlay::present(const QImage &picture)
{
    if (m_surface && m_surface->present(picture))
        m_connection->flush();
}

void WaylandOverlay::updatePixelRatio()
{
    if (!m_surface || m_surface->pixelRatio() == m_pixelRatio)
        return;
    m_pixelRatio = m_surface->pixelRatio();
    Q_EMIT pixelRatioChanged();
}

} // namespace Velloro
