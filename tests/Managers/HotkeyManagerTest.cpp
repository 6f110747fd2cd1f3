#include "Managers/HotkeyManager.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Registered = InMemoryHotkeyRegistration::Registered;

constexpr HotkeyIdentifier ours{0x564C524F, 1};

class HotkeyManagerTest : public ::testing::Test
{
protected:
    HotkeyManager &launch()
    {
        manager.reset();
        manager = std::make_unique<HotkeyManager>(memory.platform);
        manager->setOnHotkeyPressed([this] { calls << u"pressed"_s; });
        manager->setOnHotkeyReleased([this] { calls << u"released"_s; });
        manager->setOnHotkeyToggled([this] { calls << u"toggled"_s; });
        return *manager;
    }

    void store(const DefaultsValue &keyCode, const DefaultsValue &modifiers)
    {
        defaults->values
            = {{u"VelloroHotkeyKeyCode"_s, keyCode}, {u"VelloroHotkeyModifiers"_s, modifiers}};
    }

    InMemoryPlatform memory;
    InMemoryUserDefaults *defaults = memory.userDefaults;
    InMemoryHotkeyRegistration *registration = memory.hotkeyRegistration;
    LogRecorder log;
    QStringList calls;
    std::unique_ptr<HotkeyManager> manager;
};

TEST_F(HotkeyManagerTest, startsWithTheStoredCombinationOrTheDefault)
{
    struct
    {
        const char *what;
        DefaultsValue keyCode, modifiers;
        uint32_t expectedKeyCode, expectedModifiers;
    } const cases[] = {
        {"stored", int64_t(96), int64_t(4096), 96, 4096},
        {"no modifiers", int64_t(96), int64_t(0), 96, 0},
        {"the key with code 0", int64_t(0), int64_t(256), 49, 2048},
        {"largest", int64_t(0xffffffff), int64_t(0xffffffff), 0xffffffff, 0xffffffff},
        {"key code too great", int64_t(0x100000000), int64_t(256), 49, 2048},
        {"key code negative", int64_t(-1), int64_t(256), 49, 2048},
        {"modifiers too great", int64_t(0), int64_t(0x100000000), 49, 2048},
        {"modifiers negative", int64_t(96), int64_t(-1), 49, 2048},
        {"a text", u"96"_s, int64_t(256), 49, 2048},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        store(c.keyCode, c.modifiers);
        launch();
        EXPECT_EQ(manager->currentKeyCode(), c.expectedKeyCode);
        EXPECT_EQ(manager->currentModifiers(), c.expectedModifiers);
    }
    defaults->values.clear();
    EXPECT_EQ(launch().hotkeyDisplayString(), u"⌥Space"_s);
    EXPECT_THAT(defaults->written, IsEmpty());
    EXPECT_THAT(registration->attempts, IsEmpty());
}

TEST_F(HotkeyManagerTest, registersAndSaysSo)
{
    launch().registerHotkey();
    EXPECT_THAT(registration->attempts, ElementsAre(Registered{{49, 2048}, ours}));
    manager->registerHotkey();
    EXPECT_EQ(registration->registered.size(), 1u);
    EXPECT_EQ(registration->pressedHandlersInstalled, 1);
    EXPECT_EQ(registration->releasedHandlersInstalled, 1);

    manager->unregisterHotkey();
    manager->unregisterHotkey();
    EXPECT_TRUE(registration->registered.empty());
    EXPECT_THAT(log.messages(u"HotkeyManager"_s),
                ElementsAre(u"Registered hotkey: ⌥Space"_s, u"Registered hotkey: ⌥Space"_s));
}

TEST_F(HotkeyManagerTest, keepsTheStatusOfARefusal)
{
    launch();
    int statusChanges = 0;
    QObject::connect(manager.get(), &HotkeyManager::registrationStatusChanged,
                     [&] { ++statusChanges; });
    registration->refusal = -9878;
    manager->registerHotkey();
    manager->registerHotkey();
    EXPECT_EQ(manager->registrationStatus(), -9878);
    EXPECT_EQ(statusChanges, 1);

    registration->refusal = 0;
    manager->updateHotkey(96, 0);
    EXPECT_EQ(manager->registrationStatus(), std::nullopt);
    EXPECT_EQ(statusChanges, 2);
    EXPECT_THAT(log.messages(u"HotkeyManager"_s),
                ElementsAre(u"Failed to register hotkey: -9878"_s,
                            u"Failed to register hotkey: -9878"_s, u"Registered hotkey: F5"_s,
                            u"Updated hotkey to: F5"_s));
}

TEST_F(HotkeyManagerTest, saysWhenTheCombinationIsLostAndHadAgain)
{
    launch().registerHotkey();
    QList<std::optional<int32_t>> told;
    QObject::connect(manager.get(), &HotkeyManager::registrationStatusChanged,
                     [&] { told << manager->registrationStatus(); });
    const auto reference = registration->registered.begin()->first;
    for (const int32_t status : {10, 10, 0, 0}) {
        registration->changeStatus(reference, status);
        registration->changeStatus(reference + 1, 2);
    }
    EXPECT_THAT(told, ElementsAre(std::optional(10), std::nullopt));
    EXPECT_THAT(log.messages(u"HotkeyManager"_s),
                ElementsAre(u"Registered hotkey: ⌥Space"_s, u"Failed to register hotkey: 10"_s,
                            u"Registered hotkey: ⌥Space"_s));
}

TEST_F(HotkeyManagerTest, whatWasRefusedIsTriedAgainWhileItIsWanted)
{
    launch();
    registration->refusal = 2;
    manager->registerHotkey();
    registration->changeStatus(0, 0);
    EXPECT_EQ(registration->attempts.size(), 2u);
    EXPECT_EQ(manager->registrationStatus(), 2);
    registration->refusal = 0;
    registration->changeStatus(0, 0);
    registration->changeStatus(0, 0);
    EXPECT_EQ(registration->attempts.size(), 3u);
    EXPECT_EQ(registration->registered.size(), 1u);
    EXPECT_EQ(manager->registrationStatus(), std::nullopt);
    EXPECT_THAT(log.messages(u"HotkeyManager"_s),
                ElementsAre(u"Failed to register hotkey: 2"_s, u"Registered hotkey: ⌥Space"_s));

    registration->refusal = 2;
    manager->registerHotkey();
    manager->unregisterHotkey();
    registration->refusal = 0;
    registration->changeStatus(0, 0);
    EXPECT_TRUE(registration->registered.empty());
}

TEST_F(HotkeyManagerTest, saysThatItIsRegisteredOnceTheDesktopHasAnswered)
{
    launch();
    registration->isUndecided = true;
    manager->registerHotkey();
    EXPECT_EQ(manager->registrationStatus(), HotkeyStatus::pending);
    EXPECT_THAT(log.messages(u"HotkeyManager"_s), IsEmpty());
    const auto reference = registration->registered.begin()->first;
    registration->currentAbilities = {.tellsReleases = false, .coversAllWindows = false};
    registration->changeStatus(reference, 0);
    EXPECT_EQ(manager->registrationStatus(), std::nullopt);
    EXPECT_EQ(manager->abilities(), registration->currentAbilities);
    registration->changeStatus(reference, 256);
    EXPECT_EQ(manager->registrationStatus(), HotkeyStatus::declined);
    EXPECT_THAT(log.messages(u"HotkeyManager"_s),
                ElementsAre(u"Registered hotkey: ⌥Space"_s, u"Failed to register hotkey: 256"_s));
}

TEST_F(HotkeyManagerTest, anUpdateIsStoredAndTakesTheOldCombinationsPlace)
{
    launch().registerHotkey();
    int keyCodeChanges = 0;
    QObject::connect(manager.get(), &HotkeyManager::currentKeyCodeChanged,
                     [&] { ++keyCodeChanges; });
    int modifierChanges = 0;
    QObject::connect(manager.get(), &HotkeyManager::currentModifiersChanged,
                     [&] { ++modifierChanges; });
    manager->updateHotkey(2, 768);
    manager->updateHotkey(2, 768);

    const auto written = {u"VelloroHotkeyKeyCode"_s, u"VelloroHotkeyModifiers"_s};
    EXPECT_EQ(defaults->written, QStringList(written) + QStringList(written));
    EXPECT_EQ(keyCodeChanges, 1);
    EXPECT_EQ(modifierChanges, 1);
    ASSERT_EQ(registration->registered.size(), 1u);
    EXPECT_EQ(registration->registered.begin()->second, (Registered{{2, 768}, ours}));
    EXPECT_EQ(registration->attempts.size(), 3u);
    EXPECT_EQ(launch().hotkeyDisplayString(), u"⌘⇧D"_s);
}

TEST_F(HotkeyManagerTest, deliversAfterTheHandlerInOrder)
{
    launch().registerHotkey();
    int changes = 0;
    QObject::connect(manager.get(), &HotkeyManager::isHotkeyPressedChanged, [&] { ++changes; });
    registration->press();
    registration->release();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_FALSE(manager->isHotkeyPressed());

    manager->setOnHotkeyPressed(
        [this] { calls << u"pressed %1"_s.arg(manager->isHotkeyPressed()); });
    QCoreApplication::processEvents();
    EXPECT_THAT(calls, ElementsAre(u"pressed 1"_s, u"released"_s));
    EXPECT_FALSE(manager->isHotkeyPressed());
    EXPECT_EQ(changes, 2);
}

TEST_F(HotkeyManagerTest, delivers)
{
    constexpr HotkeyIdentifier otherSignature{7, 1};
    constexpr HotkeyIdentifier otherId{0x564C524F, 2};
    struct
    {
        const char *what;
        bool paused;
        const HotkeyIdentifier *identifier;
        QStringList expected;
    } const cases[] = {
        {"ours", false, &ours, {u"pressed"_s, u"released"_s}},
        {"another signature", false, &otherSignature, {u"pressed"_s, u"released"_s}},
        {"another id", false, &otherId, {}},
        {"unreadable", false, nullptr, {}},
        {"paused", true, &ours, {u"released"_s}},
    };
    launch().registerHotkey();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        calls.clear();
        manager->setIsPaused(c.paused);
        registration->press(c.identifier);
        registration->release(c.identifier);
        QCoreApplication::processEvents();
        EXPECT_EQ(calls, c.expected);
    }

    for (const bool paused : {true, false}) {
        manager->setIsPaused(paused);
        registration->toggle();
    }
    QCoreApplication::processEvents();
    EXPECT_THAT(calls.mid(1), ElementsAre(u"toggled"_s));

    // Pausing while it is held still ends the press.
    manager->setIsPaused(false);
    registration->press();
    QCoreApplication::processEvents();
    ASSERT_TRUE(manager->isHotkeyPressed());
    manager->setIsPaused(true);
    registration->release();
    QCoreApplication::processEvents();
    EXPECT_FALSE(manager->isHotkeyPressed());
}

TEST_F(HotkeyManagerTest, afterTheCleanUpNothingArrivesUntilTheNextRegistration)
{
    launch().registerHotkey();
    registration->press();
    manager->cleanup();
    manager->cleanup();
    registration->press(&ours);
    QCoreApplication::processEvents();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_TRUE(registration->registered.empty());

    manager->registerHotkey();
    EXPECT_EQ(registration->pressedHandlersInstalled, 2);
    manager->setOnHotkeyReleased([this] { calls << u"released again"_s; });
    registration->release();
    QCoreApplication::processEvents();
    EXPECT_THAT(calls, ElementsAre(u"released again"_s));

    // Work that waits ends with the manager.
    registration->release();
    manager.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(calls.size(), 1);
    EXPECT_TRUE(registration->registered.empty());
}

TEST(HotkeyDisplayTest, showsModifiersAndKey)
{
    struct
    {
        uint32_t keyCode, modifiers;
        QString expected;
    } const cases[] = {
        {49, 2048, u"⌥Space"_s},
        {49, 0x80000, u"⌥Space"_s},
        {2, 768, u"⌘⇧D"_s},
        {0, 0x1e0000, u"⌘⌃⌥⇧"_s},
        {0, 256, u"⌘"_s},
        {36, 256 + 512 + 2048 + 4096, u"⌘⌃⌥⇧Return"_s},
        {48, 0, u"Tab"_s},
        {53, 0, u"Esc"_s},
        {96, 0, u"F5"_s},
        {123, 0, u"←"_s},
        {117, 0, u"⌦"_s},
        {10, 4096, u"⌃?"_s},
        {105, 0, u"?"_s},
        {127, 0, u"?"_s},
        {0xffffffff, 0, u"?"_s},
        // At and above the line between the two encodings; other bits say nothing.
        {49, 10000, u"⌘⇧Space"_s},
        {49, 10001, u"Space"_s},
        {49, 0x10000 | 256, u"Space"_s},
    };
    for (const auto &c : cases)
        EXPECT_EQ(HotkeyManager::string(c.keyCode, c.modifiers), c.expected)
            << c.keyCode << " with " << c.modifiers;
}

TEST(HotkeyDisplayTest, convertsEventFlagsOneByOne)
{
    for (const auto &[flag, mask] : {std::pair{0x100000u, 256u},
                                     {0x80000u, 2048u},
                                     {0x40000u, 4096u},
                                     {0x20000u, 512u},
                                     {0x810000u, 0u}})
        EXPECT_EQ(HotkeyManager::nsEventToCarbonModifiers(flag), mask) << flag;
    EXPECT_EQ(HotkeyManager::nsEventToCarbonModifiers(0xffffffff), 256u + 512 + 2048 + 4096);
}

} // namespace
} // namespace Velloro
