#include "Views/Controls/PixelItem.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

namespace Velloro {

PixelItem::PixelItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PixelItem::repaint()
{
    m_isStale = true;
    update();
}

QSGNode *PixelItem::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    auto *image = static_cast<QSGImageNode *>(node);
    if (width() <= 0 || height() <= 0) {
        delete image;
        return nullptr;
    }
    if (!image) {
        image = window()->createImageNode();
        image->setOwnsTexture(true);
        m_isStale = true;
    }
    const qreal unit = window()->effectiveDevicePixelRatio();
    // The size is rounded, not the end: a circle stays one wherever it is.
    const QSize pixels(qMax(1, qRound(width() * unit)), qMax(1, qRound(height() * unit)));
    if (m_isStale || pixels != m_pixels)
        image->setTexture(window()->createTextureFromImage(this->image(pixels, unit)));
    m_isStale = false;
    m_pixels = pixels;
    m_offset = offset();
    image->setRect(QRectF(m_offset, QSizeF(pixels) / unit));
    image->setFiltering(isUpright() ? QSGTexture::Nearest : QSGTexture::Linear);
    return image;
}

QImage PixelItem::image(QSize pixels, qreal unit) const
{
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    paint(painter, QRectF(QPointF(), pixels), unit);
    return image;
}

bool PixelItem::isUpright() const
{
    const QPointF across = mapToScene({1, 0}) - mapToScene({});
    return qFuzzyIsNull(across.y()) && qFuzzyCompare(across.x(), 1);
}

QPointF PixelItem::offset() const
{
    if (!isUpright())
        return {};
    const qreal unit = window()->effectiveDevicePixelRatio();
    const QPointF place = mapToScene({});
    return QPointF(qRound(place.x() * unit), qRound(place.y() * unit)) / unit - place;
}

void PixelItem::followMove()
{
    if (m_offset != offset())
        update();
}

void PixelItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemDevicePixelRatioHasChanged) {
        repaint();
    } else if (change == ItemSceneChange) {
        disconnect(m_frames);
        // What it is in may have moved.
        if (value.window)
            m_frames = connect(value.window, &QQuickWindow::beforeSynchronizing, this,
                               &PixelItem::followMove, Qt::DirectConnection);
    }
    QQuickItem::itemChange(change, value);
}

void PixelItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        repaint();
}

} // namespace Velloro
