#include "Views/Controls/Symbol.h"

#include "Views/Controls/SymbolRenderer.h"

#include <QLinearGradient>
#include <QPainter>

namespace Velloro {

Symbol::Symbol(QQuickItem *parent)
    : PixelItem(parent)
{
    setSize(16);
    connect(this, &Symbol::appearanceChanged, this, &Symbol::repaint);
}

void Symbol::setSize(qreal size)
{
    if (size == m_size)
        return;
    m_size = size;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

void Symbol::paint(QPainter &painter, const QRectF &frame, qreal) const
{
    const int pixels = int(qMin(frame.width(), frame.height()));
    if (m_name.isEmpty())
        return;
    QBrush brush(m_color);
    if (m_gradientColor.alpha() > 0) {
        QLinearGradient gradient(0, 0, pixels, pixels);
        gradient.setColorAt(0, m_color);
        gradient.setColorAt(1, m_gradientColor);
        brush = gradient;
    }
    const QImage image = SymbolRenderer::image(m_name, pixels, brush,
                                               m_hierarchical
                                                   ? SymbolRenderer::Rendering::hierarchical
                                                   : SymbolRenderer::Rendering::monochrome);
    painter.drawImage(QPoint(int(frame.width() - pixels) / 2, int(frame.height() - pixels) / 2),
                      image);
}

} // namespace Velloro
