#include "Views/Windows/FramelessView.h"

#include <QBitmap>
#include <QPainter>

namespace Velloro {

FramelessView::FramelessView(ViewEngine &engine, Qt::WindowFlags flags, qreal cornerRadius)
    : QQuickView(&engine.engine(), nullptr)
    , m_theme(engine.theme())
    , m_cornerRadius(cornerRadius)
{
    setFlags(flags | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    setResizeMode(QQuickView::SizeViewToRootObject);
    // A window keeps the kind of pixels that it is created with: those that can be blended, since a
    // compositing manager may start later.
    setColor(Qt::transparent);
    create();
    updateGround();
    connect(&m_theme, &Theme::changed, this, &FramelessView::updateGround);
}

void FramelessView::updateGround()
{
    setColor(m_theme.isTranslucent() ? QColor(Qt::transparent) : m_theme.material());
    updateMask();
}

void FramelessView::resizeEvent(QResizeEvent *event)
{
    QQuickView::resizeEvent(event);
    updateMask();
}

void FramelessView::updateMask()
{
    if (m_theme.isTranslucent()) {
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
