#pragma once

#include "Views/Controls/PixelItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// A rectangle with round corners and a border inside its edge.
class RoundedRectangle : public Velloro::PixelItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY appearanceChanged)
    /// Of the corners; half the shorter side at most.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY appearanceChanged)
    /// 0 for none; a border that there is, is one pixel of the screen at least.
    Q_PROPERTY(qreal borderWidth MEMBER m_borderWidth NOTIFY appearanceChanged)
    Q_PROPERTY(QColor borderColor MEMBER m_borderColor NOTIFY appearanceChanged)

public:
    explicit RoundedRectangle(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void appearanceChanged();

protected:
    void paint(QPainter &painter, const QRectF &frame, qreal unit) const override;

private:
    QColor m_color = Qt::transparent;
    qreal m_radius = 0;
    qreal m_borderWidth = 0;
    QColor m_borderColor = Qt::black;
};

} // namespace Velloro
