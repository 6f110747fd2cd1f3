#include "Views/Controls/RoundedBars.h"

#include <QPainter>

namespace Velloro {

RoundedBars::RoundedBars(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    connect(this, &RoundedBars::appearanceChanged, this, [this] { update(); });
}

void RoundedBars::paint(QPainter *painter)
{
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    const QList<QQuickItem *> bars = childItems();
    for (const QQuickItem *bar : bars) {
        const QRectF place(bar->position(), bar->size());
        const qreal radius = qMin(m_radius, qMin(place.width(), place.height()) / 2);
        if (!place.isEmpty())
            painter->drawRoundedRect(place, radius, radius);
    }
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
    QQuickPaintedItem::itemChange(change, value);
}

} // namespace Velloro
