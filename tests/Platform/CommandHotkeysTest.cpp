#include "Platform/Linux/Process/CommandHotkeys.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryHotkeyRegistration.h"

#include <QStringList>
#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace Velloro {
namespace {

using Verb = HotkeyVerb;

class CommandHotkeysTest : public ::testing::Test
{
protected:
    void start(std::chrono::milliseconds repetition)
    {
        auto inMemory = std::make_unique<InMemoryHotkeyRegistration>();
        desktop = inMemory.get();
        hotkeys = std::make_unique<CommandHotkeys>(std::move(inMemory), repetition);
        hotkeys->setPressedHandler(record(u"press"_s));
        hotkeys->setReleasedHandler(record(u"release"_s));
        hotkeys->setToggledHandler(record(u"toggle"_s));
        hotkeys->setStatusHandler([this](HotkeyRegistration::Reference, int status) {
            events << u"status %1"_s.arg(status);
        });
    }
    HotkeyRegistration::Handler record(const QString &event)
    {
        return [this, event](const HotkeyIdentifier *identifier) {
            EXPECT_EQ(identifier->id, 5U);
            events << event;
        };
    }
    void give(std::initializer_list<HotkeyCommand> commands)
    {
        for (const HotkeyCommand &command : commands)
            hotkeys->handle(command);
    }
    /// What was told since the last call.
    std::string told() { return std::exchange(events, {}).join(u", "_s).toStdString(); }

    InMemoryHotkeyRegistration *desktop = nullptr;
    std::unique_ptr<CommandHotkeys> hotkeys;
    QStringList events;
};

TEST_F(CommandHotkeysTest, standBesideTheDesktopsHotkey)
{
    start(1h);
    give({{Verb::press, 1}, {Verb::toggle, 2}});
    EXPECT_EQ(told(), "") << "nothing is registered";
    start(1h);
    const auto reference = hotkeys->registerHotkey({49, 2048}, {7, 5});
    ASSERT_TRUE(reference);
    desktop->press();
    desktop->release();
    give({{Verb::toggle, 3}, {Verb::press, 4}});
    EXPECT_EQ(told(), "press, release, toggle, press");
    hotkeys->unregisterHotkey(*reference);
    give({{Verb::release, 5}});
    EXPECT_EQ(told(), "status 0");
    EXPECT_TRUE(desktop->registered.empty());
}

TEST_F(CommandHotkeysTest, workWhereTheDesktopHasNone)
{
    start(1h);
    desktop->refusal = HotkeyStatus::unavailable;
    desktop->currentAbilities.coversAllWindows = false;
    EXPECT_FALSE(hotkeys->registerHotkey({49, 2048}, {7, 5}));
    EXPECT_EQ(hotkeys->abilities(), (HotkeyAbilities{.tellsReleases = false}));
    give({{Verb::press, 1}, {Verb::release, 2}});
    EXPECT_EQ(told(), "press, release, status 0");
    EXPECT_TRUE(hotkeys->abilities().tellsReleases);
    desktop->refusal = 0;
    ASSERT_TRUE(hotkeys->registerHotkey({49, 2048}, {7, 5}));
    EXPECT_EQ(hotkeys->abilities(), desktop->currentAbilities);
}

TEST_F(CommandHotkeysTest, aHeldKeyRepeatsItsCommandUntilItIsReleased)
{
    start(1h);
    ASSERT_TRUE(hotkeys->registerHotkey({49, 2048}, {7, 5}));
    give({{Verb::press, 1}, {Verb::press, 2}, {Verb::press, 3}, {Verb::release, 4}});
    EXPECT_EQ(told(), "press, release, status 0");
    give({{Verb::press, 5}, {Verb::release, 6}, {Verb::toggle, 7}, {Verb::toggle, 8}});
    EXPECT_EQ(told(), "press, release, toggle");

    // Later, the key was released meanwhile.
    start(0ms);
    ASSERT_TRUE(hotkeys->registerHotkey({49, 2048}, {7, 5}));
    give({{Verb::press, 1}, {Verb::press, 2}, {Verb::toggle, 3}, {Verb::toggle, 4}});
    EXPECT_EQ(told(), "press, release, press, toggle, toggle");
}

TEST_F(CommandHotkeysTest, aReleaseThatOvertookItsPressEndsIt)
{
    start(1h);
    ASSERT_TRUE(hotkeys->registerHotkey({49, 2048}, {7, 5}));
    give({{Verb::release, 20}, {Verb::press, 10}});
    EXPECT_EQ(told(), "status 0, press, release");
    give({{Verb::release, 21}, {Verb::press, 30}});
    EXPECT_EQ(told(), "press") << "that release was another's";
}

TEST(HotkeyCommandTest, isOneLine)
{
    for (const Verb verb : {Verb::press, Verb::release, Verb::toggle}) {
        const HotkeyCommand command = HotkeyCommand::make(verb);
        EXPECT_GT(command.startedAt, 0);
        EXPECT_EQ(HotkeyCommand::read(command.line()), command);
    }
    for (const char *line : {"", "\n", "activate\n", "pressed 1\n"})
        EXPECT_FALSE(HotkeyCommand::read(line)) << line;
}

} // namespace
} // namespace Velloro
