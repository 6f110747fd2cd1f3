#pragma once

#include "Views/Controls/PixelNode.h"

#include <QQuickItem>

namespace Velloro {

/// What is painted on whole pixels of the screen whatever its scale. The toolkit's own shapes, where
/// the processor paints them, have gaps and steps where a unit is no whole number of pixels, and its
/// painted items are stretched there.
class PixelItem : public QQuickItem
{
    Q_OBJECT

public:
    explicit PixelItem(QQuickItem *parent = nullptr);

protected:
    /// How the item is painted as it is now; what it returns must not use the item, which it may
    /// outlive. Asked for after each `update`.
    [[nodiscard]] virtual PixelNode::Painting painting() const = 0;

    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
};

} // namespace Velloro
