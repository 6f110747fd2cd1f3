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
    connect(this, &RoundedRectangle::appearanceChanged, this, &RoundedRectangle::repaint);
}

void RoundedRectangle::paint(QPainter &painter, const QRectF &frame, qreal unit) const
{
    const QPainterPath outline = rounded(frame, m_radius * unit);
    if (m_color.alpha() > 0)
        painter.fillPath(outline, m_color);
    if (m_borderWidth <= 0 || m_borderColor.alpha() == 0)
        return;
    const qreal border = qMax(1, qRound(m_borderWidth * unit));
    QPainterPath ring = outline;
    ring.addPath(
        rounded(frame.marginsRemoved({border, border, border, border}), m_radius * unit - border));
    painter.fillPath(ring, m_borderColor);
}

} // namespace Velloro
