#include "Screenshots/Scene.h"

#include "Views/Controls/SymbolRenderer.h"

#include <QGuiApplication>
#include <QPainter>

namespace Velloro {

namespace {

QImage allSymbols(Stage &stage)
{
    constexpr int columns = 8;
    constexpr int cell = 96;
    const double ratio = qGuiApp->devicePixelRatio();
    const QStringList names = SymbolRenderer::names();
    const int rows = int(names.size() + columns - 1) / columns;
    QImage sheet(QSize(columns * cell, rows * cell) * ratio, QImage::Format_ARGB32_Premultiplied);
    sheet.setDevicePixelRatio(ratio);
    const bool dark = stage.memory.appearance->dark;
    sheet.fill(dark ? QColor(0x25, 0x25, 0x28) : QColor(Qt::white));
    const QColor ink = dark ? Qt::white : Qt::black;
    QPainter painter(&sheet);
    painter.setPen(ink);
    QFont font = painter.font();
    font.setPixelSize(8);
    painter.setFont(font);
    for (int index = 0; index < names.size(); ++index) {
        const QRect place(index % columns * cell, index / columns * cell, cell, cell);
        int x = place.x() + 8;
        for (const int size : {48, 16}) {
            QImage image = SymbolRenderer::image(names[index], qRound(size * ratio), ink);
            image.setDevicePixelRatio(ratio);
            painter.drawImage(x, place.y() + 8, image);
            x += size + 12;
        }
        painter.drawText(place.adjusted(4, 60, 0, 0), Qt::TextWrapAnywhere, names[index]);
    }
    return sheet;
}

/// The tray's icons at each size, as they are and magnified.
QImage trayIcons(Stage &stage)
{
    const bool dark = stage.memory.appearance->dark;
    const QStringList names{QStringLiteral("waveform"), QStringLiteral("waveform.circle.fill"),
                            QStringLiteral("ellipsis.circle.fill"),
                            QStringLiteral("checkmark.circle.fill")};
    QImage sheet(1000, 560, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(dark ? QColor(0x20, 0x20, 0x22) : QColor(0xf0, 0xf0, 0xf0));
    QPainter painter(&sheet);
    int y = 8;
    for (const QString &name : names) {
        int x = 8;
        for (const int size : {16, 22, 24, 32, 48, 64}) {
            const QImage image
                = SymbolRenderer::image(name, size, dark ? Qt::white : QColor(0x1c, 0x1c, 0x1e),
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
    return {{QStringLiteral("symbols"), allSymbols}, {QStringLiteral("tray"), trayIcons}};
}

} // namespace Velloro
