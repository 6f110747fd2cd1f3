#include "Views/Controls/Symbol.h"

#include "Views/Controls/SymbolRenderer.h"

#include <QLinearGradient>
#include <QPainter>

namespace Velloro {

Symbol::Symbol(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setSize(16);
    connect(this, &Symbol::appearanceChanged, this, [this] { update(); });
}

void Symbol::setSize(qreal size)
{
    if (size == m_size)
        return;
    m_size = size;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

void Symbol::paint(QPainter *painter)
{
    if (m_name.isEmpty())
        return;
    // Drawn in device pixels and put on one, so that nothing is scaled.
    const QTransform transform = painter->deviceTransform();
    const qreal scale = transform.m11();
    const qreal side = qMin(width(), height());
    const int pixels = qRound(side * scale);
    if (pixels <= 0)
        return;
    QBrush brush(m_color);
    if (m_gradientColor.alpha() > 0) {
        QLinearGradient gradient(0, 0, pixels, pixels);
        gradient.setColorAt(0, m_color);
        gradient.setColorAt(1, m_gradientColor);
        brush = gradient;
    }
    QImage image = SymbolRenderer::image(m_name, pixels, brush,
                                         m_hierarchical
                                             ? SymbolRenderer::Rendering::hierarchical
                                             : SymbolRenderer::Rendering::monochrome);
    image.setDevicePixelRatio(scale);
    painter->drawImage(QPointF((width() - side) / 2, (height() - side) / 2), image);
}

} // namespace Velloro
