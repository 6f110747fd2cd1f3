#include "Views/Controls/RoundedBars.h"

#include <QPainter>

namespace Velloro {

RoundedBars::RoundedBars(QQuickItem *parent)
    : PixelItem(parent)
{
    connect(this, &RoundedBars::appearanceChanged, this, &RoundedBars::repaint);
}

void RoundedBars::paint(QPainter &painter, const QRectF &, qreal unit) const
{
    painter.setBrush(m_color);
    for (const QQuickItem *child : childItems()) {
        const QRectF bar(child->position() * unit, child->size() * unit);
        const qreal radius = qMin(m_radius * unit, qMin(bar.width(), bar.height()) / 2);
        if (!bar.isEmpty())
            painter.drawRoundedRect(bar, radius, radius);
    }
}

void RoundedBars::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemChildAddedChange) {
        connect(value.item, &QQuickItem::heightChanged, this, &RoundedBars::repaint);
        connect(value.item, &QQuickItem::yChanged, this, &RoundedBars::repaint);
        repaint();
    } else if (change == ItemChildRemovedChange) {
        disconnect(value.item, nullptr, this, nullptr);
        repaint();
    }
    PixelItem::itemChange(change, value);
}

} // namespace Velloro
