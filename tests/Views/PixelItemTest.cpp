#include "Base/StringLiterals.h"
#include "Support/InMemoryAppearance.h"
#include "Views/Controls/SymbolRenderer.h"
#include "Views/Windows/ViewEngine.h"

#include <QPainter>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

/// Items alone in a white window, at places that are no whole pixels at most scales; the test runs
/// at several (CMakeLists.txt).
class PixelItemTest : public ::testing::Test
{
protected:
    QImage draw(const QByteArray &qml)
    {
        QQmlComponent component(&engine.engine());
        component.setData("import QtQuick\nimport Velloro\n" + qml, QUrl(u"qrc:/Scene.qml"_s));
        root.reset(qobject_cast<QQuickItem *>(component.create()));
        EXPECT_TRUE(root) << component.errorString().toStdString();
        root->setParentItem(window.contentItem());
        window.setColor(Qt::white);
        window.resize(120, 60);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        return window.grabWindow().convertToFormat(QImage::Format_RGB32);
    }
    [[nodiscard]] double scale() const { return window.effectiveDevicePixelRatio(); }

    /// What of the picture is not white.
    static QImage inked(const QImage &picture)
    {
        QRect ink;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixelColor(x, y) != Qt::white)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return picture.copy(ink);
    }

    InMemoryAppearance appearance;
    ViewEngine engine{appearance};
    QQuickWindow window;
    std::unique_ptr<QQuickItem> root;
};

TEST_F(PixelItemTest, AShapeIsWholeAndTheSameFromEverySide)
{
    const struct
    {
        const char *name;
        QSize size;
        QByteArray properties;
    } shapes[] = {
        {"capsule", {46, 22}, "color: 'blue'; radius: 11"},
        {"circle", {15, 15}, "color: 'blue'; radius: 99"},
        {"field", {61, 27}, "color: 'blue'; radius: 6; borderWidth: 1; borderColor: 'red'"},
        {"ring", {46, 26}, "radius: 9; borderWidth: 2; borderColor: 'red'"},
        {"hairline", {101, 1}, "color: 'blue'"},
    };
    for (const auto &[name, size, properties] : shapes) {
        for (const int x : {3, 5, 10}) {
            const QImage shape
                = inked(draw("RoundedRectangle { x: " + QByteArray::number(x)
                             + "; y: 7; width: " + QByteArray::number(size.width()) + "; height: "
                             + QByteArray::number(size.height()) + "; " + properties + " }"));
            EXPECT_EQ(shape.size(),
                      QSize(qRound(size.width() * scale()), qRound(size.height() * scale())))
                << name << " at " << x;
            for (int row = 0; row < shape.height(); ++row) {
                for (int column = 0; column < shape.width(); ++column) {
                    const auto differs = [&](int otherX, int otherY) {
                        const QColor one = shape.pixelColor(column, row);
                        const QColor other = shape.pixelColor(otherX, otherY);
                        // What the painter makes of the ends of a curve differs by as much.
                        return std::abs(one.red() - other.red()) > 24
                            || std::abs(one.blue() - other.blue()) > 24;
                    };
                    ASSERT_FALSE(differs(shape.width() - 1 - column, row)
                                 || differs(column, shape.height() - 1 - row))
                        << name << " at " << x << ": " << column << ", " << row;
                }
            }
            // Through the middle there is no gap.
            for (int column = 2; column < shape.width() - 2 && properties.contains("color: 'blue'");
                 ++column)
                EXPECT_EQ(shape.pixelColor(column, shape.height() / 2), QColor(Qt::blue)) << name;
        }
    }
}

TEST_F(PixelItemTest, ASymbolIsDrawnInThePixelsThatItHas)
{
    for (const int x : {3, 5, 10}) {
        const QImage drawn = inked(draw("Symbol { x: " + QByteArray::number(x)
                                        + "; y: 7; size: 17; name: 'arrow.down.circle' }"));
        const int pixels = qRound(17 * scale());
        QImage expected(pixels, pixels, QImage::Format_RGB32);
        expected.fill(Qt::white);
        QPainter(&expected).drawImage(
            0, 0, SymbolRenderer::image(u"arrow.down.circle"_s, pixels, Qt::black));
        EXPECT_EQ(drawn, inked(expected)) << x;
    }
}

} // namespace
} // namespace Velloro
