#include "Views/EveryWindow.h"

#include "Base/StringLiterals.h"

#include <QHash>
#include <cmath>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

/// By the formula of the web's contrast rules.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor over(const QColor &ground, const QColor &color)
{
    const auto mix
        = [&](float below, float above) { return below + (above - below) * color.alphaF(); };
    return QColor::fromRgbF(mix(ground.redF(), color.redF()), mix(ground.greenF(), color.greenF()),
                            mix(ground.blueF(), color.blueF()));
}

/// Looks at what is written and drawn in a window, each on the ground that it is seen on.
class Reader
{
public:
    explicit Reader(QQuickWindow &window)
        : m_picture(window.grabWindow())
    {
        QQuickItem *content = window.contentItem();
        for (QQuickItem *child : content->childItems()) {
            // A menu covers what is below it.
            if (child->inherits("QQuickOverlay") && child->isVisible())
                content = child;
        }
        read(*content);
    }
    [[nodiscard]] const QStringList &faint() const { return m_faint; }
    [[nodiscard]] int count() const { return m_count; }

private:
    void read(const QQuickItem &item)
    {
        if (!item.isVisible() || item.opacity() == 0)
            return;
        const bool isText = item.inherits("QQuickText") || item.inherits("QQuickTextInput");
        const bool isShape = item.objectName() == u"track" || item.objectName() == u"thumb";
        if ((isText && !item.property("text").toString().isEmpty())
            || item.inherits("Velloro::Symbol") || isShape)
            compare(item, isText ? 4.5 : 3, isShape ? 1 : 0);
        for (const QQuickItem *child : item.childItems())
            read(*child);
    }

    /// What can't be used may be faint; what a menu says of its entries may not.
    [[nodiscard]] static bool mayBeFaint(const QQuickItem &item)
    {
        return !item.isEnabled() && !item.parentItem()->inherits("QQuickMenuItem");
    }

    void compare(const QQuickItem &item, double wanted, int margin)
    {
        const std::optional<QColor> ground = groundOf(item, margin);
        if (!ground || mayBeFaint(item))
            return;
        ++m_count;
        for (const char *property : {"color", "gradientColor"}) {
            const auto color = item.property(property).value<QColor>();
            if (!color.isValid() || color.alpha() == 0)
                continue;
            for (const QColor desktop : {Qt::black, Qt::white}) {
                const QColor below = over(desktop, *ground);
                const double ratio = contrast(over(below, color), below);
                if (ratio < wanted)
                    m_faint << u"%1 %2 %3 on %4: %5"_s.arg(
                        QLatin1StringView(item.metaObject()->className()),
                        item.property("text").toString() + item.property("name").toString(),
                        color.name(QColor::HexArgb), below.name(), QString::number(ratio, 'f', 2));
            }
        }
    }

    /// The commonest colour around an item; nothing where it is not in sight.
    [[nodiscard]] std::optional<QColor> groundOf(const QQuickItem &item, int margin) const
    {
        const qreal ratio = m_picture.devicePixelRatio();
        const QRectF place = item.mapRectToScene(item.boundingRect());
        const QRect frame = QRectF(place.topLeft() * ratio, place.size() * ratio)
                                .toAlignedRect()
                                .marginsAdded({margin, margin, margin, margin});
        QHash<QRgb, int> counts;
        const auto count = [&](int x, int y) {
            if (m_picture.rect().contains(x, y))
                ++counts[m_picture.pixelColor(x, y).rgba()];
        };
        for (int x = frame.left(); x <= frame.right(); ++x) {
            count(x, frame.top());
            count(x, frame.bottom());
        }
        for (int y = frame.top(); y <= frame.bottom(); ++y) {
            count(frame.left(), y);
            count(frame.right(), y);
        }
        if (counts.isEmpty())
            return std::nullopt;
        const auto most = std::max_element(counts.cbegin(), counts.cend());
        return QColor::fromRgba(most.key());
    }

    QImage m_picture;
    QStringList m_faint;
    int m_count = 0;
};

TEST(ContrastTest, EverythingCanBeReadOnTheGroundThatItIsSeenOn)
{
    int count = 0;
    const auto read
        = [&](const QString &place, QQuickWindow &window, InMemoryAppearance &appearance) {
              // All of what scrolls is in sight.
              if (window.minimumSize().isValid() && place.startsWith(u"settings")) {
                  window.setMaximumSize({600, 1500});
                  window.resize(600, 1500);
                  const QQuickItem *view = window.contentItem()->childItems().constFirst();
                  ASSERT_TRUE(waitUntil([&] { return view->height() == 1500; }));
              }
              for (const bool dark : {false, true}) {
                  // The desktop's own, a bright one, a deep one, and what no text can be written
                  // in.
                  for (const std::optional<uint32_t> accent :
                       std::initializer_list<std::optional<uint32_t>>{
                           {}, 0xc88800, 0x9141ac, 0xffffff, 0x000000}) {
                      appearance.dark = dark;
                      appearance.accent = accent;
                      Q_EMIT appearance.changed();
                      QStringList faint;
                      // A colour may take a moment to change.
                      EXPECT_TRUE(waitUntil(
                          [&] {
                              const Reader reader(window);
                              faint = reader.faint();
                              count += reader.count();
                              return faint.isEmpty();
                          },
                          std::chrono::seconds(1)))
                          << place.toStdString() << (dark ? ", dark, " : ", light, ") << std::hex
                          << accent.value_or(0x1000000) << '\n'
                          << faint.join(u'\n').toStdString();
                  }
              }
              appearance.accent.reset();
              appearance.dark = false;
          };
    const InMemoryAppearance looks;
    EveryWindow(looks, read).visitAll();
    EXPECT_GT(count, 3000);
}

} // namespace
} // namespace Velloro
