#include "Platform/Linux/Wayland/Hotkeys/HotkeyRoute.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryHotkeyRegistration.h"

#include <QStringList>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

using ::testing::ElementsAre;

/// A way that answers when the test says so.
class Way : public DesktopHotkeys
{
public:
    void look(std::function<void(bool)> done) override { answer = std::move(done); }
    void bind(KeyCombination combination) override { bound = combination; }
    void unbind() override { bound.reset(); }
    [[nodiscard]] std::shared_ptr<void> letShortcutsThrough() override
    {
        return std::make_shared<int>();
    }

    std::function<void(bool)> answer;
    std::optional<KeyCombination> bound;
};

class HotkeyRouteTest : public ::testing::Test
{
protected:
    HotkeyRouteTest()
    {
        HotkeyRoute::Ways ways;
        for (Way *&way : both) {
            auto made = std::make_unique<Way>();
            way = made.get();
            ways.push_back(std::move(made));
        }
        auto inMemory = std::make_unique<InMemoryHotkeyRegistration>();
        fallback = inMemory.get();
        route = std::make_unique<HotkeyRoute>(std::move(ways), std::move(inMemory));
        const auto record = [this](const QString &event) {
            return [this, event](const HotkeyIdentifier *identifier) {
                events << u"%1 %2"_s.arg(event, QString::number(identifier->id));
            };
        };
        route->setPressedHandler(record(u"press"_s));
        route->setReleasedHandler(record(u"release"_s));
        route->setStatusHandler([this](HotkeyRegistration::Reference reference, int status) {
            events << u"%1 is %2"_s.arg(reference).arg(status);
        });
    }

    Way *both[2] = {};
    InMemoryHotkeyRegistration *fallback = nullptr;
    std::unique_ptr<HotkeyRoute> route;
    QStringList events;
    static constexpr KeyCombination combination{49, 2048};
};

TEST_F(HotkeyRouteTest, takesTheFirstWayThatIsOffered)
{
    const auto reference = route->registerHotkey(combination, {7, 1});
    ASSERT_TRUE(reference);
    EXPECT_TRUE(route->isPending(*reference));
    EXPECT_FALSE(route->letShortcutsThrough());
    ASSERT_FALSE(both[1]->answer) << "asked before the first has answered";
    both[0]->answer(false);
    both[1]->answer(true);
    EXPECT_EQ(both[1]->bound, combination);
    EXPECT_TRUE(route->isPending(*reference));
    Q_EMIT both[1]->statusChanged(0);
    EXPECT_FALSE(route->isPending(*reference));
    Q_EMIT both[1]->pressed();
    Q_EMIT both[1]->released();
    Q_EMIT both[1]->statusChanged(10);
    Q_EMIT both[1]->statusChanged(10);
    EXPECT_TRUE(route->abilities().coversAllWindows);
    EXPECT_TRUE(route->letShortcutsThrough());
    EXPECT_TRUE(fallback->attempts.empty());

    const auto next = route->registerHotkey({96, 0}, {7, 2});
    ASSERT_TRUE(next);
    EXPECT_EQ(both[1]->bound, (KeyCombination{96, 0}));
    Q_EMIT both[1]->pressed();
    route->unregisterHotkey(*reference);
    EXPECT_TRUE(both[1]->bound) << "another's";
    route->unregisterHotkey(*next);
    EXPECT_FALSE(both[1]->bound);
    Q_EMIT both[1]->pressed();
    EXPECT_THAT(events,
                ElementsAre(u"1 is 0"_s, u"press 1"_s, u"release 1"_s, u"1 is 10"_s, u"press 2"_s));
}

TEST_F(HotkeyRouteTest, withoutAWayTheXServerServesAsFarAsItSees)
{
    fallback->refusal = 10;
    const auto reference = route->registerHotkey(combination, {7, 1});
    both[0]->answer(false);
    both[1]->answer(false);
    EXPECT_FALSE(route->abilities().coversAllWindows);
    fallback->refusal = 0;
    fallback->changeStatus(0, 0);
    fallback->press();
    fallback->changeStatus(1, 2);
    EXPECT_THAT(events, ElementsAre(u"1 is 10"_s, u"1 is 0"_s, u"press 1"_s, u"1 is 2"_s));
    route->unregisterHotkey(*reference);
    EXPECT_TRUE(fallback->registered.empty());

    // What is known at once is not told later.
    events.clear();
    fallback->refusal = 1;
    EXPECT_EQ(route->registerHotkey(combination, {7, 1}), tl::unexpected(1));
    fallback->changeStatus(0, 0);
    EXPECT_THAT(events, ElementsAre(u"0 is 0"_s));
    fallback->refusal = 0;
    const auto last = route->registerHotkey(combination, {7, 1});
    ASSERT_TRUE(last);
    EXPECT_FALSE(route->isPending(*last));
}

TEST(HotkeyRouteWithoutAnythingTest, saysSo)
{
    HotkeyRoute route({}, nullptr);
    EXPECT_EQ(route.registerHotkey({49, 2048}, {7, 1}), tl::unexpected(HotkeyStatus::unavailable));
}

} // namespace
} // namespace Velloro
