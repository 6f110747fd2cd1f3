#include "Views/Controls/RoundedRectangle.h"

#include <QPainter>
#include <QPainterPath>

namespace Velloro {

namespace {

QPainterPath rounded(const QRectF &rect, qreal radius)
{
    const qreal kept = qBound(0.0, radius, qMin(rect.width(), rect.height()) / 2);
    QPainterPath path;
    path.addRoundedRect(rect, kept, kept);
    return path;
}

} // namespace

RoundedRectangle::RoundedRectangle(QQuickItem *parent)
    : PixelItem(parent)
{
    connect(this, &RoundedRectangle::appearanceChanged, this, &QQuickItem::update);
}

PixelNode::Painting RoundedRectangle::painting() const
{
    return [color = m_color, radius = m_radius, borderWidth = m_borderWidth,
            borderColor = m_borderColor](QPainter &painter, const QRectF &frame, qreal unit) {
        const QPainterPath outline = rounded(frame, radius * unit);
        if (color.alpha() > 0)
            painter.fillPath(outline, color);
        if (borderWidth <= 0 || borderColor.alpha() == 0)
            return;
        const qreal border = qMax(1, qRound(borderWidth * unit));
        QPainterPath ring = outline;
        ring.addPath(rounded(frame.marginsRemoved({border, border, border, border}),
                             radius * unit - border));
        painter.fillPath(ring, borderColor);
    };
}

} // namespace Velloro
