#pragma once

#include "Views/Controls/PixelItem.h"

#include <QColor>
#include <QtQml/qqmlregistration.h>

namespace Velloro {

/// One of the program's symbols, in a square of `size`, in a colour or a diagonal gradient.
class Symbol : public Velloro::PixelItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY appearanceChanged)
    /// The side of the square.
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY appearanceChanged)
    /// Where a gradient from `color` at the top left ends; transparent for none.
    Q_PROPERTY(QColor gradientColor MEMBER m_gradientColor NOTIFY appearanceChanged)
    /// Whether a filled symbol is drawn in two opacities instead of with its mark cut out.
    Q_PROPERTY(bool hierarchical MEMBER m_hierarchical NOTIFY appearanceChanged)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

    [[nodiscard]] qreal size() const { return m_size; }
    void setSize(qreal size);

Q_SIGNALS:
    void appearanceChanged();
    void sizeChanged();

protected:
    void paint(QPainter &painter, const QRectF &frame, qreal unit) const override;

private:
    QString m_name;
    qreal m_size = 0;
    QColor m_color = Qt::black;
    QColor m_gradientColor = Qt::transparent;
    bool m_hierarchical = false;
};

} // namespace Velloro
