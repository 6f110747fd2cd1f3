#include "Views/Tray/MenuBarViewModel.h"

#include "Support/InMemoryPlatform.h"
#include "Views/Shared/DownloadEstimate.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

class MenuBarViewModelTest : public ::testing::Test
{
protected:
    EnhancedModelRowViewModel &row(int index) { return *model.rows().at(index); }

    InMemoryPlatform memory;
    AppState appState{memory.platform};
    std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(memory.platform);
    MenuBarViewModel model{memory.platform, appState, *hotkeyManager};
};

TEST_F(MenuBarViewModelTest, FollowsStateModeAndHotkey)
{
    const std::pair<TranscriptionState, const char16_t *> states[]
        = {{TranscriptionState::idle, u"Ready"},
           {TranscriptionState::listening, u"Listening..."},
           {TranscriptionState::transcribing, u"Transcribing..."},
           {TranscriptionState::inserting, u"Inserting..."}};
    for (const auto &[state, text] : states) {
        appState.setTranscriptionState(state);
        EXPECT_EQ(model.stateText(), QString::fromUtf16(text));
    }
    EXPECT_EQ(model.recordingModeText(), u"Hold to Talk");
    QSignalSpy modes(&model, &MenuBarViewModel::recordingModeTextChanged);
    appState.setRecordingMode(RecordingMode::toggle);
    EXPECT_EQ(modes.count(), 1);
    EXPECT_EQ(model.recordingModeText(), u"Toggle");

    EXPECT_EQ(model.hotkeyText(), u"⌥Space");
    EXPECT_EQ(model.hotkeyProblem(), u"");
    memory.hotkeyRegistration->refusal = 10;
    QSignalSpy hotkeys(&model, &MenuBarViewModel::hotkeyTextChanged);
    hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
    EXPECT_GE(hotkeys.count(), 1);
    EXPECT_EQ(model.hotkeyText(), u"⌘⇧D");
    EXPECT_EQ(model.hotkeyProblem(),
              u"⌘⇧D is taken by another program. Choose another hotkey in Settings.");
    memory.hotkeyRegistration->refusal = 2;
    hotkeyManager->registerHotkey();
    EXPECT_EQ(model.hotkeyProblem(),
              u"No connected keyboard has ⌘⇧D. Choose another hotkey in Settings.");
    memory.hotkeyRegistration->refusal = 0;
    hotkeyManager->updateHotkey(49, HotkeyManager::optionKey);
    EXPECT_EQ(model.hotkeyProblem(), u"");
}

TEST_F(MenuBarViewModelTest, PicksPresetsAndKnowsTheirModels)
{
    const struct
    {
        const char16_t *title;
        const char16_t *label;
        const char16_t *modelId;
        ModelPreset preset;
    } rows[] = {{u"Small", u"Fast", u"base", ModelPreset::small},
                {u"Medium", u"Balanced", u"small", ModelPreset::medium},
                {u"Large", u"Accurate", u"medium", ModelPreset::large}};
    ASSERT_EQ(model.rows().size(), 3);
    for (int index = 0; index < 3; ++index) {
        EnhancedModelRowViewModel &shown = row(index);
        EXPECT_EQ(shown.title(), QString::fromUtf16(rows[index].title));
        EXPECT_EQ(shown.label(), QString::fromUtf16(rows[index].label));
        shown.select();
        EXPECT_EQ(appState.selectedModel(), rows[index].preset);
        for (int other = 0; other < 3; ++other)
            EXPECT_EQ(row(other).isSelected(), other == index);
        shown.download();
        EXPECT_THAT(memory.downloadSession->tasks.back().url.toString().toStdString(),
                    ::testing::EndsWith(
                        "ggml-" + QString::fromUtf16(rows[index].modelId).toStdString() + ".bin"));
    }
}

TEST_F(MenuBarViewModelTest, QuitsAfterATenthOfASecond)
{
    QSignalSpy quits(&model, &MenuBarViewModel::quitRequested);
    QElapsedTimer clock;
    clock.start();
    model.quit();
    EXPECT_EQ(quits.count(), 0);
    ASSERT_TRUE(quits.wait());
    EXPECT_GE(clock.elapsed(), 95);
}

TEST(DownloadEstimateTest, TellsSpeedAndTimeLeft)
{
    const DownloadEstimate::TimePoint start{};
    DownloadEstimate estimate(1000);
    estimate.update(0, start);
    EXPECT_EQ(estimate.text(), u"");
    estimate.update(0.01, start + 1s);
    EXPECT_EQ(estimate.text(), u"10.0 MB/s, 2 min left");
    estimate.update(0.96, start + 5s);
    EXPECT_EQ(estimate.text(), u"192.0 MB/s, 1 s left");
    // A new attempt does not count the old one's bytes.
    estimate.update(0.1, start + 6s);
    EXPECT_EQ(estimate.text(), u"");
    estimate.update(0.1, start + 16s);
    EXPECT_EQ(estimate.text(), u"") << "a standstill has no time left";
}

TEST_F(MenuBarViewModelTest, TellsEachUserOnceThatTheDesktopHasNoTray)
{
    memory.userNotifications->refuses = true;
    model.tellOfMissingTray();
    EXPECT_EQ(memory.userNotifications->delivered.size(), 1U);

    memory.userNotifications->refuses = false;
    for (int start = 0; start < 2; ++start)
        MenuBarViewModel(memory.platform, appState, *hotkeyManager).tellOfMissingTray();
    EXPECT_EQ(memory.userNotifications->delivered.size(), 2U)
        << "again after a refusal, and not again once accepted";
}

} // namespace
} // namespace Velloro
