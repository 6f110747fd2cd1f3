#pragma once

#include <QImage>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

class QPainter;

namespace Velloro {

/// What is painted once, in the pixels that it has on the screen, and put on whole ones whatever
/// the screen's scale. The toolkit's own shapes, where the processor paints them, have gaps and
/// steps where a unit is no whole number of pixels, and its painted items are stretched there.
///
/// Types that are derived from it name it in full: otherwise Qt 6.4 does not tell QML's tools of
/// it.
class PixelItem : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit PixelItem(QQuickItem *parent = nullptr);

protected:
    /// Paints the item into `frame`, in pixels, of which a unit has `unit`; without a pen.
    virtual void paint(QPainter &painter, const QRectF &frame, qreal unit) const = 0;
    /// What is painted has changed.
    void repaint();

    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    [[nodiscard]] bool isUpright() const;
    /// From the item's corner to the nearest pixel's.
    [[nodiscard]] QPointF offset() const;
    void followMove();
    [[nodiscard]] QImage image(QSize pixels, qreal unit) const;

    bool m_isStale = true;
    QSize m_pixels;
    /// Where the item was put.
    QPointF m_offset;
    QMetaObject::Connection m_frames;
};

} // namespace Velloro
