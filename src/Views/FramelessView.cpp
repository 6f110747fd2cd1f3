#include "Views/FramelessView.h"

#include <QBitmap>
#include <QPainter>

namespace Velloro {

FramelessView::FramelessView(ViewEngine &engine, Qt::WindowFlags flags, qreal cornerRadius)
    : QQuickView(&engine.engine(), nullptr)
    , m_appearance(engine.appearance())
    , m_cornerRadius(cornerRadius)
{
    setFlags(flags | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setColor(Qt::transparent);
    setResizeMode(QQuickView::SizeViewToRootObject);
    connect(&m_appearance, &Appearance::changed, this, &FramelessView::updateMask);
}

void FramelessView::resizeEvent(QResizeEvent *event)
{
    QQuickView::resizeEvent(event);
    updateMask();
}

void FramelessView::updateMask()
{
    if (m_appearance.isCompositing()) {
        setMask({});
        return;
    }
    QBitmap bitmap(size());
    bitmap.clear();
    QPainter painter(&bitmap);
    painter.setBrush(Qt::color1);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(QRectF(QPointF(), size()), m_cornerRadius, m_cornerRadius);
    painter.end();
    setMask(QRegion(bitmap));
}

} // namespace Velloro
