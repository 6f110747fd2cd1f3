#include "Views/Controls/PixelItem.h"

namespace Velloro {

PixelItem::PixelItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

QSGNode *PixelItem::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    auto *pixels = static_cast<PixelNode *>(node);
    if (!pixels)
        pixels = new PixelNode(*window());
    pixels->setContent(boundingRect(), painting());
    return pixels;
}

void PixelItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        update();
}

} // namespace Velloro
