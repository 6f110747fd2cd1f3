#include "Views/Controls/RoundedBars.h"

#include <QPainter>

namespace Velloro {

RoundedBars::RoundedBars(QQuickItem *parent)
    : PixelItem(parent)
{
    connect(this, &RoundedBars::appearanceChanged, this, &QQuickItem::update);
}

PixelNode::Painting RoundedBars::painting() const
{
    QList<QRectF> places;
    for (const QQuickItem *bar : childItems())
        places << QRectF(bar->position(), bar->size());
    return [places, color = m_color, radius = m_radius](QPainter &painter, const QRectF &frame,
                                                        qreal unit) {
        painter.setBrush(color);
        for (const QRectF &place : places) {
            const QRectF bar(frame.topLeft() + place.topLeft() * unit, place.size() * unit);
            const qreal round = qMin(radius * unit, qMin(bar.width(), bar.height()) / 2);
            if (!bar.isEmpty())
                painter.drawRoundedRect(bar, round, round);
        }
    };
}

void RoundedBars::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemChildAddedChange) {
        connect(value.item, &QQuickItem::heightChanged, this, [this] { update(); });
        connect(value.item, &QQuickItem::yChanged, this, [this] { update(); });
        update();
    } else if (change == ItemChildRemovedChange) {
        disconnect(value.item, nullptr, this, nullptr);
        update();
    }
    PixelItem::itemChange(change, value);
}

} // namespace Velloro
