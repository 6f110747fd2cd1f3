#pragma once

#include <QRectF>
#include <QSGRenderNode>
#include <functional>

class QPainter;
class QQuickWindow;

namespace Velloro {

/// What a `PixelItem` is in the scene: painted straight onto the window by the renderer of the
/// processor, the only one that it knows.
class PixelNode : public QSGRenderNode
{
public:
    /// Paints into `frame`, where a unit of the item is as long as `unit`: in whole pixels of the
    /// screen, or in the item's own coordinates where it is turned.
    using Painting = std::function<void(QPainter &painter, const QRectF &frame, qreal unit)>;

    /// `window` outlives the node.
    explicit PixelNode(QQuickWindow &window);

    void setContent(const QRectF &rect, Painting painting);

    void render(const RenderState *state) override;
    [[nodiscard]] RenderingFlags flags() const override { return BoundedRectRendering; }
    /// Whole pixels may be a little outside.
    [[nodiscard]] QRectF rect() const override { return m_rect.adjusted(-1, -1, 1, 1); }

private:
    QQuickWindow &m_window;
    QRectF m_rect;
    Painting m_painting;
};

} // namespace Velloro
