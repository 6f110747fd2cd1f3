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

/// Perceived lightness by the formula of the web's contrast rules, 0 to 1.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
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
    if (const std::optional<uint32_t> chosen = m_appearance.accentColor())
        return QColor::fromRgb(QRgb(*chosen));
    return blue();
}

QColor Theme::onAccent() const
{
    // White reads well even on colours on which black would have the greater contrast.
    return luminance(accent()) > 0.45 ? QColor(0x1c, 0x1c, 0x1e) : QColor(Qt::white);
}

QColor Theme::primary() const { return choose(0xde000000, 0xe6ffffff); }
QColor Theme::secondary() const { return choose(0xa0000000, 0xa6ffffff); }
QColor Theme::tertiary() const { return choose(0x70000000, 0x73ffffff); }
QColor Theme::quaternary() const { return choose(0x14000000, 0x1effffff); }
QColor Theme::separator() const { return choose(0x1f000000, 0x24ffffff); }
QColor Theme::red() const { return choose(0xffd6333a, 0xfff8575d); }
QColor Theme::orange() const { return choose(0xffcc6a00, 0xfff59f2e); }
QColor Theme::yellow() const { return choose(0xffd9a400, 0xfff2c83a); }
QColor Theme::green() const { return choose(0xff1e8540, 0xff45c46a); }
QColor Theme::blue() const { return choose(0xff2472e8, 0xff3f8dfb); }
QColor Theme::purple() const { return choose(0xff8b48d6, 0xffb27cf2); }
QColor Theme::pink() const { return choose(0xffd9437f, 0xfff2709f); }
QColor Theme::gray() const { return choose(0xff85858b, 0xff98989e); }
QColor Theme::window() const { return choose(0xfff3f3f5, 0xff252528); }

QColor Theme::material() const
{
    if (!isTranslucent())
        return choose(0xffeeeef1, 0xff2b2b2f);
    return choose(0xebeeeef1, 0xe02b2b2f);
}

QColor Theme::group() const { return choose(0xffffffff, 0xff303034); }
QColor Theme::control() const { return choose(0xffffffff, 0xff47474c); }
QColor Theme::controlBorder() const { return choose(0x33000000, 0x33ffffff); }

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
