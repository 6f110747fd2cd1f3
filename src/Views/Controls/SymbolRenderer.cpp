#include "Views/Controls/SymbolRenderer.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QRegularExpression>
#include <QSvgRenderer>

namespace Velloro::SymbolRenderer {

namespace {

constexpr double baseOpacity = 0.55;
/// In monochrome an outline that is all base still has the weight of the symbols beside it.
constexpr double monochromeBaseOpacity = 0.75;
/// A filled shape behind its mark: fainter, so that the mark is read at 16 pixels.
constexpr double markedBaseOpacity = 0.35;

/// The strokes of a drawing, and how thin they may become before they fade, in pixels.
constexpr double gridSize = 24;
constexpr double strokeWidth = 1.5;
constexpr double thinnestStroke = 1.25;

QString folder()
{
    return u":/Velloro/Symbols/"_s;
}

/// The file's SVG with only the named group left, opaque; empty when the group is not there.
QByteArray onlyGroup(const QString &svg, QStringView name)
{
    static const QRegularExpression group(u"<g id=\"(\\w+)\"[^>]*>(.*?)</g>"_s,
                                          QRegularExpression::DotMatchesEverythingOption);
    const QString head = svg.left(svg.indexOf(u'>') + 1);
    for (auto matches = group.globalMatch(svg); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        if (match.capturedView(1) == name)
            return (head + match.captured(2) + u"</svg>"_s).toUtf8();
    }
    return {};
}

/// One symbol's groups, read once.
struct Drawing
{
    QByteArray base;
    QByteArray cut;
    QByteArray glyph;
    QByteArray mark;
};

const Drawing *drawing(const QString &fileName)
{
    static QHash<QString, Drawing> drawings;
    if (const auto known = drawings.constFind(fileName); known != drawings.constEnd())
        return &known.value();
    QFile file(folder() + fileName + u".svg"_s);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QString svg = QString::fromUtf8(file.readAll());
    return &drawings
                .insert(fileName,
                        {onlyGroup(svg, u"base"), onlyGroup(svg, u"cut"), onlyGroup(svg, u"glyph"),
                         onlyGroup(svg, u"mark")})
                .value();
}

/// The SVG with strokes that are still to be seen at this size.
QByteArray strengthened(QByteArray svg, int pixels)
{
    const double width = thinnestStroke * gridSize / pixels;
    if (width > strokeWidth) {
        svg.replace("stroke-width=\"1.5\"",
                    "stroke-width=\"" + QByteArray::number(width, 'f', 2) + '"');
    }
    return svg;
}

void paint(QPainter &painter, const QByteArray &svg, double opacity,
           QPainter::CompositionMode mode = QPainter::CompositionMode_SourceOver)
{
    if (svg.isEmpty())
        return;
    // Overlapping strokes of one group must not add up where the group is translucent.
    const QSize size
        = painter.device() ? QSize(painter.device()->width(), painter.device()->height()) : QSize();
    QImage layer(size, QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter layerPainter(&layer);
    QSvgRenderer renderer(strengthened(svg, size.width()));
    renderer.render(&layerPainter, QRectF(QPointF(), size));
    layerPainter.end();
    painter.setOpacity(opacity);
    painter.setCompositionMode(mode);
    painter.drawImage(0, 0, layer);
}

} // namespace

QStringList names()
{
    QStringList result;
    for (const QString &file : QDir(folder()).entryList({u"*.svg"_s}, QDir::Files))
        result << file.chopped(4);
    result.sort();
    return result;
}

QImage image(const QString &name, int pixels, const QBrush &brush, Rendering rendering)
{
    QImage result(qMax(1, pixels), qMax(1, pixels), QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    const Drawing *found = drawing(u"Hinted/%1-%2"_s.arg(name).arg(pixels));
    if (!found)
        found = drawing(name);
    if (!found) {
        Log::line(u"Views", u"There is no symbol '%1'"_s.arg(name));
        return result;
    }

    const bool isMarked = !found->mark.isEmpty();
    const bool isCutOut = isMarked && rendering == Rendering::monochrome;
    const double opacity = isCutOut || !found->cut.isEmpty() ? 1
        : isMarked                                           ? markedBaseOpacity
        : rendering == Rendering::monochrome                 ? monochromeBaseOpacity
                                                             : baseOpacity;
    QPainter painter(&result);
    paint(painter, found->base, opacity);
    paint(painter, found->cut, 1, QPainter::CompositionMode_DestinationOut);
    paint(painter, found->glyph, 1);
    paint(painter, found->mark, 1,
          isCutOut ? QPainter::CompositionMode_DestinationOut
                   : QPainter::CompositionMode_SourceOver);
    painter.setOpacity(1);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(result.rect(), brush);
    return result;
}

QIcon icon(const QString &name, const QColor &color)
{
    QIcon result;
    for (const int pixels : {16, 22, 24, 32, 44, 48, 64, 96, 128})
        result.addPixmap(QPixmap::fromImage(image(name, pixels, color, Rendering::hierarchical)));
    return result;
}

} // namespace Velloro::SymbolRenderer
