#include "Views/Controls/SymbolRenderer.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryAppearance.h"
#include "Views/Tray/MenuBarExtra.h"
#include "Views/Windows/ViewEngine.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

/// The share of the square that is inked, counted by opacity.
double ink(const QImage &image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            sum += image.pixelColor(x, y).alphaF();
    }
    return sum / (image.width() * image.height());
}

TEST(SymbolRendererTest, DrawsEverySymbolInOneColourAtEverySize)
{
    InMemoryAppearance appearance;
    ViewEngine engine(appearance);
    (void)engine.engine();
    const QStringList names = SymbolRenderer::names();
    ASSERT_GE(names.size(), 35);
    const QColor color(0x20, 0x80, 0xe0);
    for (const QString &name : names) {
        const double expected = ink(SymbolRenderer::image(name, 192, color));
        EXPECT_GT(expected, 0.03) << name.toStdString();
        for (const int size : {16, 22, 24, 32, 48, 64, 128}) {
            const QImage image = SymbolRenderer::image(name, size, color);
            ASSERT_EQ(image.size(), QSize(size, size));
            EXPECT_NEAR(ink(image), expected, 0.15) << name.toStdString() << " at " << size;
            for (int y = 0; y < size; ++y) {
                for (int x = 0; x < size; ++x) {
                    const QColor pixel = image.pixelColor(x, y);
                    if (pixel.alpha() > 128) {
                        ASSERT_NEAR(pixel.hslHue(), color.hslHue(), 4) << name.toStdString();
                    }
                }
            }
            // Nothing is cut off at the edges.
            for (int at = 0; at < size; ++at) {
                for (const QPoint edge :
                     {QPoint(at, 0), QPoint(at, size - 1), QPoint(0, at), QPoint(size - 1, at)})
                    EXPECT_LT(image.pixelColor(edge).alpha(), 255)
                        << name.toStdString() << " at " << size;
            }
        }
    }
}

TEST(SymbolRendererTest, EverySymbolThatAViewNamesIsThere)
{
    InMemoryAppearance appearance;
    ViewEngine engine(appearance);
    (void)engine.engine();
    const QStringList names = SymbolRenderer::names();
    static const QRegularExpression use(u"\\b(?:name|symbol|icon): [^\\n]*?\"([a-z][a-z.]*)\""_s);
    int uses = 0;
    for (QDirIterator files(u":/Velloro"_s, {u"*.qml"_s}, QDir::Files,
                            QDirIterator::Subdirectories);
         files.hasNext();) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString source = QString::fromUtf8(file.readAll());
        for (auto matches = use.globalMatch(source); matches.hasNext(); ++uses) {
            const QString name = matches.next().captured(1);
            EXPECT_TRUE(names.contains(name))
                << file.fileName().toStdString() << ": " << name.toStdString();
        }
    }
    EXPECT_GT(uses, 8);
}

TEST(SymbolRendererTest, TrayIconsDifferByStateAndHaveStraightEdgesOnPixels)
{
    InMemoryAppearance appearance;
    ViewEngine engine(appearance);
    (void)engine.engine();
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QSet<QByteArray> different;
        for (const TranscriptionState state :
             {TranscriptionState::idle, TranscriptionState::listening,
              TranscriptionState::transcribing, TranscriptionState::inserting}) {
            const QImage image = SymbolRenderer::image(MenuBarExtra::symbolName(state), size,
                                                       Qt::black,
                                                       SymbolRenderer::Rendering::hierarchical);
            different.insert(
                QByteArray(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes()));
        }
        EXPECT_EQ(different.size(), 4) << size;

        // Through the middle of the bars every pixel is a bar or none.
        const QImage bars = SymbolRenderer::image(u"waveform"_s, size, Qt::black);
        for (int x = 0; x < size; ++x) {
            const int alpha = bars.pixelColor(x, size / 2).alpha();
            EXPECT_TRUE(alpha == 0 || alpha == 255) << size << ": " << alpha << " at " << x;
        }
    }
}

} // namespace
} // namespace Velloro
