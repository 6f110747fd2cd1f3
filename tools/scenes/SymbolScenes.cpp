#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Views/Controls/SymbolRenderer.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPainter>

namespace Velloro {

namespace {

constexpr int iconSizes[] = {16, 22, 24, 32, 48, 64};

/// Draws the icon at each size beside each other; `make` gives it in device pixels.
void drawSizes(QPainter &painter, QPoint at, const std::function<QImage(int pixels)> &make)
{
    const double ratio = qGuiApp->devicePixelRatio();
    for (const int size : iconSizes) {
        QImage image = make(qRound(size * ratio));
        image.setDevicePixelRatio(ratio);
        painter.drawImage(at, image);
        at.rx() += size + 10;
    }
}

/// Every symbol at every size, and the program's icon.
QImage allSymbols(Stage &stage)
{
    constexpr int columns = 3;
    constexpr QSize cell(290, 92);
    const double ratio = qGuiApp->devicePixelRatio();
    const QStringList names = SymbolRenderer::names();
    const int rows = int(names.size() + columns) / columns;
    QImage sheet(QSize(columns * cell.width(), rows * cell.height()) * ratio,
                 QImage::Format_ARGB32_Premultiplied);
    sheet.setDevicePixelRatio(ratio);
    const bool dark = stage.memory.appearance->dark;
    sheet.fill(dark ? QColor(0x25, 0x25, 0x28) : QColor(Qt::white));
    const QColor ink = dark ? Qt::white : Qt::black;
    QPainter painter(&sheet);
    painter.setPen(ink);
    QFont font = painter.font();
    font.setPixelSize(9);
    painter.setFont(font);
    for (int index = 0; index <= names.size(); ++index) {
        const QPoint place(index % columns * cell.width() + 8, index / columns * cell.height() + 6);
        const bool isProgram = index == names.size();
        painter.drawText(place + QPoint(0, 80), isProgram ? u"the program's icon"_s : names[index]);
        drawSizes(painter, place, [&](int pixels) {
            if (!isProgram)
                return SymbolRenderer::image(names[index], pixels, ink);
            const QIcon icon(QStringLiteral(VELLORO_TESTS_DIR "/../packaging/icons/velloro.svg"));
            return icon.pixmap(QSize(pixels, pixels), 1).toImage();
        });
    }
    return sheet;
}

/// The tray's icons at each size, as they are and magnified.
QImage trayIcons(Stage &stage)
{
    const bool dark = stage.memory.appearance->dark;
    const QStringList names{u"waveform"_s, u"waveform.circle.fill"_s, u"ellipsis.circle.fill"_s,
                            u"checkmark.circle.fill"_s};
    QImage sheet(1000, 560, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(dark ? QColor(0x20, 0x20, 0x22) : QColor(0xf0, 0xf0, 0xf0));
    QPainter painter(&sheet);
    int y = 8;
    for (const QString &name : names) {
        int x = 8;
        for (const int size : iconSizes) {
            const QImage image = SymbolRenderer::image(name, size,
                                                       dark ? Qt::white : QColor(0x1c, 0x1c, 0x1e),
                                                       SymbolRenderer::Rendering::hierarchical);
            painter.drawImage(x, y, image);
            x += size + 8;
            if (size <= 24) {
                painter.drawImage(x, y, image.scaled(image.size() * 5));
                x += size * 5 + 8;
            }
        }
        y += 136;
    }
    return sheet;
}

} // namespace

QList<Scene> symbolScenes()
{
    return {{u"symbols"_s, allSymbols}, {u"tray"_s, trayIcons}};
}

} // namespace Velloro
