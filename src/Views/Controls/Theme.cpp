#include "Views/Controls/Theme.h"

#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QJSEngine>
#include <QQmlEngine>
#include <QVariant>
#include <algorithm>
#include <cmath>

namespace Velloro {

namespace {

constexpr const char *engineProperty = "velloroTheme";

/// By how much text and shapes must differ from their ground.
constexpr double textContrast = 4.5;
constexpr double shapeContrast = 3;

/// Perceived lightness by the formula of the web's contrast rules, 0 to 1.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

/// How much two colours differ, by the same rules: 1 to 21.
double contrast(const QColor &one, const QColor &other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

/// The colour moved away from the ground, no further than the contrast needs.
QColor movedAway(const QColor &color, const QColor &ground, double wanted)
{
    const double end = luminance(Theme::inkOn(ground));
    for (int step = 0; step < 100; ++step) {
        const auto moved = [&](double channel) { return channel + (end - channel) * step / 100; };
        const QColor result = QColor::fromRgbF(
            float(moved(color.redF())), float(moved(color.greenF())), float(moved(color.blueF())));
        // What is drawn is rounded, each layer anew.
        if (contrast(result.rgb(), ground) >= wanted * 1.01)
            return result;
    }
    return Theme::inkOn(ground);
}

QColor blended(const QColor &ground, const QColor &veil)
{
    const auto mix
        = [&](float below, float above) { return below + (above - below) * veil.alphaF(); };
    return QColor::fromRgbF(mix(ground.redF(), veil.redF()), mix(ground.greenF(), veil.greenF()),
                            mix(ground.blueF(), veil.blueF()));
}

} // namespace

Theme::Theme(Appearance &appearance, QObject *parent)
    : QObject(parent)
    , m_appearance(appearance)
{
    connect(&appearance, &Appearance::changed, this, &Theme::changed);
    qGuiApp->installEventFilter(this);
}

bool Theme::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationFontChange && watched == qGuiApp)
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

void Theme::install(QQmlEngine &engine)
{
    engine.setProperty(engineProperty, QVariant::fromValue(this));
}

Theme *Theme::create(QQmlEngine *engine, QJSEngine *)
{
    auto *theme = engine->property(engineProperty).value<Theme *>();
    Q_ASSERT(theme);
    QJSEngine::setObjectOwnership(theme, QJSEngine::CppOwnership);
    return theme;
}

bool Theme::isDark() const
{
    return m_appearance.prefersDark();
}

bool Theme::isTranslucent() const
{
    return m_appearance.isCompositing();
}

qreal Theme::textScale() const
{
    return std::clamp(m_appearance.textScale(), 0.5, 3.0);
}

QColor Theme::choose(QRgb light, QRgb dark) const
{
    return QColor::fromRgba(isDark() ? dark : light);
}

QColor Theme::accent() const
{
    return movedAway(QColor::fromRgb(QRgb(m_appearance.accentColor().value_or(0x2472e8))), group(),
                     shapeContrast);
}

QColor Theme::onAccent() const
{
    return inkOn(accent());
}

QColor Theme::accentText() const
{
    return legible(accent());
}

QColor Theme::inkOn(const QColor &ground)
{
    return contrast(Qt::white, ground) >= textContrast ? Qt::white : Qt::black;
}

QColor Theme::legible(const QColor &color, const QColor &veil) const
{
    // The material over a window of the opposite lightness, and a fill on it.
    const QColor ground = blended(choose(0xffe2e2e5, 0xff38383c), quaternary());
    return movedAway(color, blended(ground, veil), textContrast);
}

QColor Theme::primary() const
{
    return choose(0xde000000, 0xe6ffffff);
}
QColor Theme::secondary() const
{
    return choose(0xa8000000, 0xb2ffffff);
}
QColor Theme::tertiary() const
{
    return choose(0x99000000, 0xa3ffffff);
}
QColor Theme::quaternary() const
{
    return choose(0x14000000, 0x1effffff);
}
QColor Theme::separator() const
{
    return choose(0x1f000000, 0x24ffffff);
}
QColor Theme::red() const
{
    return choose(0xffb91f28, 0xffff8f94);
}
QColor Theme::orange() const
{
    return choose(0xff964b00, 0xfff59f2e);
}
QColor Theme::yellow() const
{
    return choose(0xff966c00, 0xfff2c83a);
}
QColor Theme::green() const
{
    return choose(0xff156a34, 0xff45c46a);
}
QColor Theme::blue() const
{
    return choose(0xff1a5fc8, 0xff6aa8ff);
}
QColor Theme::purple() const
{
    return choose(0xff7c3ac4, 0xffc39af5);
}
QColor Theme::pink() const
{
    return choose(0xffb92f69, 0xfff58fb4);
}
QColor Theme::gray() const
{
    return choose(0xff86868b, 0xff7d7d83);
}
QColor Theme::window() const
{
    return choose(0xfff3f3f5, 0xff252528);
}

QColor Theme::material() const
{
    if (!isTranslucent())
        return choose(0xffeeeef1, 0xff2b2b2f);
    return choose(0xf2eeeef1, 0xf02b2b2f);
}

QColor Theme::group() const
{
    return choose(0xffffffff, 0xff2c2c30);
}
QColor Theme::control() const
{
    return choose(0xffffffff, 0xff39393e);
}
QColor Theme::controlBorder() const
{
    return choose(0x33000000, 0x33ffffff);
}

QFont Theme::font(qreal pixels, QFont::Weight weight) const
{
    QFont font(QGuiApplication::font().family());
    font.setPixelSize(qMax(1, qRound(pixels * textScale())));
    font.setWeight(weight);
    return font;
}

QString Theme::monospacedFamily() const
{
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

QColor Theme::faded(const QColor &color, qreal opacity)
{
    QColor result = color;
    result.setAlphaF(float(color.alphaF() * opacity));
    return result;
}

QFont Theme::weighted(const QFont &font, int weight)
{
    QFont result = font;
    result.setWeight(QFont::Weight(weight));
    return result;
}

} // namespace Velloro
