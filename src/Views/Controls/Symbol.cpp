#include "Views/Controls/Symbol.h"

#include "Views/Controls/SymbolRenderer.h"

#include <QLinearGradient>
#include <QPainter>

namespace Velloro {

Symbol::Symbol(QQuickItem *parent)
    : PixelItem(parent)
{
    setSize(16);
    connect(this, &Symbol::appearanceChanged, this, &QQuickItem::update);
}

void Symbol::setSize(qreal size)
{
    if (size == m_size)
        return;
    m_size = size;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

PixelNode::Painting Symbol::painting() const
{
    const auto rendering = m_hierarchical ? SymbolRenderer::Rendering::hierarchical
                                          : SymbolRenderer::Rendering::monochrome;
    // Drawn once in each size in pixels, so that nothing is scaled.
    return [name = m_name, color = m_color, gradientColor = m_gradientColor, rendering,
            image = QImage()](QPainter &painter, const QRectF &frame, qreal) mutable {
        const int pixels = int(qMin(frame.width(), frame.height()));
        if (name.isEmpty())
            return;
        if (image.width() != pixels) {
            QBrush brush(color);
            if (gradientColor.alpha() > 0) {
                QLinearGradient gradient(0, 0, pixels, pixels);
                gradient.setColorAt(0, color);
                gradient.setColorAt(1, gradientColor);
                brush = gradient;
            }
            image = SymbolRenderer::image(name, pixels, brush, rendering);
        }
        painter.drawImage(QPoint(int(frame.left() + (frame.width() - pixels) / 2),
                                 int(frame.top() + (frame.height() - pixels) / 2)),
                          image);
    };
}

} // namespace Velloro
