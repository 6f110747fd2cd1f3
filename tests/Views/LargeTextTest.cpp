#include "Views/EveryWindow.h"

#include "Base/StringLiterals.h"

#include <QScreen>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

/// Looks for what of a window its user can't see or reach.
class Tailor
{
public:
    explicit Tailor(QQuickWindow &window)
        : m_frame(QPointF(), window.size())
    {
        measure(*window.contentItem(), m_frame, m_frame);
    }
    [[nodiscard]] const QStringList &misfits() const { return m_misfits; }
    [[nodiscard]] int count() const { return m_count; }

private:
    /// `sight`: what clips the item. `room`: the same, but without end up and down where it
    /// scrolls.
    void measure(const QQuickItem &item, QRectF room, QRectF sight)
    {
        if (!item.isVisible() || item.opacity() == 0)
            return;
        const QRectF place = item.mapRectToScene(item.boundingRect());
        const bool isText = item.inherits("QQuickText");
        if (!place.isEmpty()
            && (isText || item.inherits("Velloro::Symbol") || item.inherits("QQuickControl"))) {
            ++m_count;
            // Rounded by a pixel at most.
            if (!room.adjusted(-1, -1, 1, 1).contains(place))
                report(item, u"is outside"_s);
            if (isText)
                measureText(item);
            if (!item.inherits("QQuickControl"))
                separate(item, sight & place);
        }
        // What pops up covers the rest.
        if (item.inherits("QQuickOverlay"))
            m_seen.clear();
        if (item.clip()) {
            room &= place;
            sight &= place;
        }
        if (item.inherits("QQuickFlickable"))
            room.adjust(0, -1e5, 0, 1e5);
        for (const QQuickItem *child : item.childItems())
            measure(*child, room, sight);
    }

    void measureText(const QQuickItem &text)
    {
        const bool mayBeCut = text.property("elide").toInt() != Qt::ElideNone;
        if (text.property("contentWidth").toReal() > text.width() + 1
            || text.property("contentHeight").toReal() > text.height() + 1)
            report(text, u"is larger than its place"_s);
        if (!mayBeCut && text.property("truncated").toBool())
            report(text, u"is cut"_s);
    }

    /// Words and symbols are beside each other.
    void separate(const QQuickItem &item, const QRectF &seen)
    {
        for (const QRectF &other : std::as_const(m_seen)) {
            // Letters don't fill their lines, nor symbols their squares.
            if (other.intersects(seen.adjusted(3, 3, -3, -3)))
                report(item, u"is on another"_s);
        }
        m_seen << seen;
    }

    void report(const QQuickItem &item, const QString &what)
    {
        const QRectF place = item.mapRectToScene(item.boundingRect());
        m_misfits << u"%1 '%2%3' %4: %5, %6, %7 x %8"_s
                         .arg(QLatin1StringView(item.metaObject()->className()),
                              item.property("text").toString(), item.property("name").toString(),
                              what)
                         .arg(place.x())
                         .arg(place.y())
                         .arg(place.width())
                         .arg(place.height());
    }

    QRectF m_frame;
    QList<QRectF> m_seen;
    QStringList m_misfits;
    int m_count = 0;
};

TEST(LargeTextTest, NothingIsOutOfSightOrReach)
{
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        int count = 0;
        InMemoryAppearance looks;
        looks.scale = scale;
        const auto measure = [&](const QString &place, QQuickWindow &window, InMemoryAppearance &) {
            QStringList misfits;
            EXPECT_TRUE(waitUntil(
                [&] {
                    const Tailor tailor(window);
                    misfits = tailor.misfits();
                    count += tailor.count();
                    return misfits.isEmpty();
                },
                std::chrono::seconds(1)))
                << place.toStdString() << " at " << scale << ": " << window.width() << " x "
                << window.height() << '\n'
                << misfits.join(u'\n').toStdString();
            EXPECT_LE(window.width(), screen.width()) << place.toStdString();
            EXPECT_LE(window.height(), screen.height()) << place.toStdString();
        };
        EveryWindow(looks, measure).visitAll();
        EXPECT_GT(count, 500);
    }
}

} // namespace
} // namespace Velloro
