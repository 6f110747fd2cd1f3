#include "Views/Shared/HotkeyRecorderViewModel.h"

#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

using namespace EventFlag;

class HotkeyRecorderViewModelTest : public ::testing::Test
{
protected:
    /// Ends when the taken key's recording does.
    [[nodiscard]] bool hasStopped()
    {
        return waitUntil([this] { return !model->isRecording(); });
    }

    InMemoryPlatform memory;
    std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(memory.platform);
    InMemoryKeyEventMonitor &keyboard = *memory.keyEventMonitor;
    std::unique_ptr<HotkeyRecorderViewModel> model
        = std::make_unique<HotkeyRecorderViewModel>(*hotkeyManager, keyboard);
};

TEST_F(HotkeyRecorderViewModelTest, TakesTheNextKeyWithTheHeldModifiers)
{
    EXPECT_EQ(model->displayString(), u"⌥Space");
    const HotkeyRecorderViewModel other(*hotkeyManager, keyboard);
    QSignalSpy changes(&other, &HotkeyRecorderViewModel::displayStringChanged);
    const struct
    {
        uint32_t keyCode;
        uint32_t flags;
        uint32_t modifiers;
        const char16_t *text;
    } cases[] = {
        {96, 0, 0, u"F5"},
        {53, 0, 0, u"Esc"},
        {48, control, 4096, u"⌃Tab"},
        {36, command | 0x8, 256, u"⌘Return"}, // with the bit of one side of the keyboard
        {2, command | shift, 256 + 512, u"⌘⇧D"},
        {105, option, 2048, u"⌥?"},
        {0, command, 256, u"⌘"},
    };
    for (const auto &c : cases) {
        model->toggle();
        EXPECT_TRUE(hotkeyManager->isPaused());
        EXPECT_TRUE(keyboard.keyDown(c.keyCode, c.flags)) << "no field of ours gets the key";
        EXPECT_EQ(hotkeyManager->currentKeyCode(), c.keyCode);
        EXPECT_EQ(hotkeyManager->currentModifiers(), c.modifiers);
        EXPECT_EQ(model->displayString(), QString::fromUtf16(c.text));
        EXPECT_EQ(other.displayString(), model->displayString());
        ASSERT_TRUE(hasStopped());
        EXPECT_FALSE(hotkeyManager->isPaused());
        EXPECT_EQ(keyboard.monitorCount(), 0);
        EXPECT_EQ(memory.hotkeyRegistration->registered.begin()->second.combination.keyCode,
                  c.keyCode);
    }
    EXPECT_FALSE(changes.isEmpty());
}

TEST_F(HotkeyRecorderViewModelTest, ShowsTheHeldModifiersAndTakesNoneOfThemForAKey)
{
    model->toggle();
    QSignalSpy changes(model.get(), &HotkeyRecorderViewModel::tempDisplayStringChanged);
    EXPECT_TRUE(keyboard.flagsChanged(command));
    EXPECT_TRUE(keyboard.flagsChanged(command | shift));
    EXPECT_TRUE(keyboard.flagsChanged(command | shift | 0x10000)); // Caps Lock changes no symbol
    EXPECT_EQ(model->tempDisplayString(), u"⌘⇧");
    for (const uint32_t modifierKey : {54U, 55U, 57U, 58U, 62U})
        EXPECT_TRUE(keyboard.keyDown(modifierKey, shift));
    EXPECT_TRUE(keyboard.flagsChanged(0));
    EXPECT_EQ(model->tempDisplayString(), u"");
    EXPECT_EQ(changes.count(), 3);
    EXPECT_TRUE(model->isRecording());
    EXPECT_EQ(hotkeyManager->currentKeyCode(), 49U);

    // What was held when it ended is not shown the next time.
    EXPECT_TRUE(keyboard.flagsChanged(option));
    model->toggle();
    model->toggle();
    EXPECT_EQ(model->tempDisplayString(), u"");
}

TEST_F(HotkeyRecorderViewModelTest, EndsWithoutChangeOnASecondClickAndWithItsControl)
{
    model->toggle();
    model->toggle();
    EXPECT_FALSE(model->isRecording());
    EXPECT_FALSE(hotkeyManager->isPaused());
    EXPECT_FALSE(keyboard.keyDown(96)) << "keys go their own way again";
    EXPECT_EQ(model->displayString(), u"⌥Space");
    EXPECT_TRUE(memory.hotkeyRegistration->attempts.empty());

    model->toggle();
    keyboard.keyDown(96);
    model.reset(); // before the stop that is queued
    EXPECT_FALSE(hotkeyManager->isPaused());
    EXPECT_EQ(keyboard.monitorCount(), 0);
}

TEST_F(HotkeyRecorderViewModelTest, TakesTheCombinationInForceAlthoughNoWindowSeesIt)
{
    hotkeyManager->registerHotkey();
    int presses = 0;
    hotkeyManager->setOnHotkeyPressed([&] { ++presses; });
    memory.hotkeyRegistration->press();
    ASSERT_TRUE(waitUntil([&] { return presses == 1; }));
    memory.hotkeyRegistration->release();

    model->toggle();
    memory.hotkeyRegistration->press();
    ASSERT_TRUE(hasStopped());
    EXPECT_EQ(model->displayString(), u"⌥Space");
    EXPECT_EQ(presses, 1) << "it starts no dictation";
}

TEST_F(HotkeyRecorderViewModelTest, RefusesAKeyWithAnotherModifierAndGoesOn)
{
    model->toggle();
    EXPECT_TRUE(keyboard.keyDown(49, 0, true));
    EXPECT_TRUE(model->isRecording());
    EXPECT_EQ(hotkeyManager->currentModifiers(), 2048U);
    EXPECT_THAT(model->problem().toStdString(), ::testing::HasSubstr("AltGr"));
    keyboard.keyDown(96);
    ASSERT_TRUE(hasStopped());
    EXPECT_EQ(model->displayString(), u"F5");
    EXPECT_EQ(model->problem(), u"");
}

TEST_F(HotkeyRecorderViewModelTest, SaysWhatItDoesNotSeeWhileItRecords)
{
    keyboard.seesDesktopShortcuts = false;
    QSignalSpy problems(model.get(), &HotkeyRecorderViewModel::problemChanged);
    model->toggle();
    EXPECT_THAT(model->problem().toStdString(), ::testing::HasSubstr("do not arrive here"));
    model->toggle();
    EXPECT_EQ(model->problem(), u"");
    EXPECT_EQ(problems.count(), 2);
}

TEST_F(HotkeyRecorderViewModelTest, SaysWhyTheCombinationDoesNotWork)
{
    const struct
    {
        int status;
        const char16_t *text;
    } cases[] = {
        {10, u"⌥Space is taken by another program. Choose another combination."},
        {2, u"No connected keyboard has ⌥Space. Choose another combination."},
        {1,
         u"This desktop offers no hotkey. Bind the command “velloro --toggle” in its keyboard "
         "settings."},
        {256, u"⌥Space was not confirmed in the desktop's dialog. Choose another combination."},
        {257, u""},
        {3, u"⌥Space could not be registered (error 3). Choose another combination."},
    };
    for (const auto &c : cases) {
        memory.hotkeyRegistration->refusal = c.status;
        hotkeyManager->registerHotkey();
        EXPECT_EQ(model->problem(), c.text);
    }
}

TEST_F(HotkeyRecorderViewModelTest, SaysWhatIsTakenUntilAnotherIsChosen)
{
    EXPECT_EQ(model->problem(), u"");
    QSignalSpy problems(model.get(), &HotkeyRecorderViewModel::problemChanged);
    memory.hotkeyRegistration->refusal = 10;
    model->toggle();
    keyboard.keyDown(2, command);
    EXPECT_THAT(model->problem().toStdString(), ::testing::StartsWith("⌘D is taken"));
    ASSERT_TRUE(hasStopped());
    model->toggle();
    keyboard.keyDown(3, command);
    EXPECT_THAT(model->problem().toStdString(), ::testing::StartsWith("⌘F is taken"));
    EXPECT_GE(problems.count(), 2) << "another taken one is told of, too";
    memory.hotkeyRegistration->refusal = 0;
    ASSERT_TRUE(hasStopped());
    model->toggle();
    keyboard.keyDown(97);
    EXPECT_EQ(model->problem(), u"");
}

} // namespace
} // namespace Velloro
