#pragma once

#include "Views/Controls/PixelItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// Paints a bar with round ends for each of its children, which are seen by nothing else: at
/// fractions of a pixel too, where rectangles would be moved to whole ones.
class RoundedBars : public Velloro::PixelItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY appearanceChanged)
    /// Of the corners; half a bar's width at most.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY appearanceChanged)

public:
    explicit RoundedBars(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void appearanceChanged();

protected:
    void paint(QPainter &painter, const QRectF &frame, qreal unit) const override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    QColor m_color = Qt::black;
    qreal m_radius = 0;
};

} // namespace Velloro
