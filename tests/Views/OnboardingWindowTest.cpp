#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"
#include "Views/Onboarding/OnboardingModel.h"
#include "Views/Onboarding/OnboardingWindowController.h"
#include "Views/WindowTestBase.h"

#include <gmock/gmock.h>

namespace Velloro {

namespace {

class OnboardingWindowTest : public WindowTestBase<OnboardingWindowController>
{
protected:
    [[nodiscard]] bool canProceed() const { return probe().item(u"forward"_qs)->isEnabled(); }
    void proceed(int steps = 1)
    {
        for (; steps > 0; --steps) {
            ASSERT_TRUE(probe().tabTo(u"Continue"_qs));
            probe().press(Qt::Key_Return);
        }
    }
    [[nodiscard]] DownloadTaskId lastTask() const
    {
        return DownloadTaskId(memory.downloadSession->tasks.size());
    }
    void finishDownload()
    {
        memory.fileSystem->files.insert(u"/tmp/part"_qs);
        memory.downloadSession->delegate.downloadDidFinish(lastTask(), u"/tmp/part"_qs);
    }
};

TEST_F(OnboardingWindowTest, LeadsThroughSixStepsWithTheKeyboardAlone)
{
    memory.captureAuthorization->status = AuthorizationStatus::notDetermined;
    memory.captureAuthorization->granted = false;
    memory.accessibility->trusted = false;
    open();
    EXPECT_EQ(window()->title(), u"Welcome to Velloro");
    EXPECT_EQ(window()->size(), QSize(500, 580));
    EXPECT_FALSE(probe().item(u"back"_qs)->isVisible());
    EXPECT_EQ(probe().focusedName(), u"Continue");
    probe().press(Qt::Key_Return);

    // Permissions.
    EXPECT_FALSE(canProceed());
    ASSERT_TRUE(probe().tabTo(u"Enable"_qs));
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return text(u"microphoneProblem"_qs) != u""; }));
    EXPECT_FALSE(canProceed()) << "it was refused";
    memory.captureAuthorization->granted = true;
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(text(u"microphoneProblem"_qs), u"");
    ASSERT_TRUE(probe().tabTo(u"Enable"_qs));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(memory.accessibility->trustRequests, 1);
    memory.accessibility->trusted = true;
    ASSERT_TRUE(waitUntil([this] { return appState.hasAccessibilityPermission(); }));
    proceed();

    // The model.
    EXPECT_TRUE(canProceed());
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    EXPECT_EQ(text(u"title"_qs), u"Setting Up Your Voice Assistant");
    EXPECT_FALSE(canProceed());
    memory.downloadSession->delegate.downloadDidWriteData(lastTask(), 999, 1000);
    EXPECT_EQ(text(u"percent"_qs), u"99%");
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(text(u"title"_qs), u"Voice Model Ready!");
    EXPECT_EQ(memory.userDefaults->get<QStringList>(u"velloro.downloadedModels"_qs),
              QStringList({u"Medium"_qs}));
    for (int index = 0; index < 6; ++index) {
        const QColor color = probe().item(u"capsule%1"_qs.arg(index))->property("color")
                                 .value<QColor>();
        EXPECT_EQ(color.alphaF() > 0.9, index <= 2) << index;
    }
    proceed();

    // Mode and hotkey.
    ASSERT_TRUE(probe().tabTo(u"Toggle"_qs));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(appState.recordingMode(), RecordingMode::toggle);
    proceed(2);
    EXPECT_EQ(text(u"instruction"_qs), u"Press ⌥Space anywhere to start dictating");
    appState.setRecordingMode(RecordingMode::holdToTalk);
    EXPECT_EQ(text(u"instruction"_qs), u"Press and hold ⌥Space anywhere to dictate");
    hotkeyManager->updateHotkey(96, 0);
    EXPECT_EQ(text(u"instruction"_qs), u"Press and hold F5 anywhere to dictate");

    EXPECT_FALSE(appState.hasCompletedOnboarding());
    ASSERT_TRUE(probe().tabTo(u"Get Started"_qs));
    probe().press(Qt::Key_Return);
    EXPECT_TRUE(appState.hasCompletedOnboarding());
    EXPECT_TRUE(waitUntil([this] { return !window(); }));
}

TEST_F(OnboardingWindowTest, AFailedDownloadSaysWhyAndIsTriedAgain)
{
    LogRecorder log;
    open();
    proceed(2);
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    memory.downloadSession->delegate.downloadDidComplete(
        lastTask(), PlatformError{7, u"The network is unreachable"_qs});
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    EXPECT_EQ(log.messages(u"Onboarding"_qs),
              QStringList({u"Download failed: The network is unreachable"_qs}));
    EXPECT_EQ(text(u"title"_qs), u"Download Voice Model");
    EXPECT_THAT(text(u"failure"_qs).toStdString(), ::testing::HasSubstr("network is unreachable"));
    EXPECT_TRUE(canProceed());
    ASSERT_TRUE(probe().tabTo(u"Download Now"_qs));
    probe().press(Qt::Key_Return);
    EXPECT_EQ(lastTask(), 2);
    EXPECT_EQ(text(u"title"_qs), u"Setting Up Your Voice Assistant");
    EXPECT_TRUE(appState.isDownloadingModel());

    // What can't be downloaded at all is no dead end either.
    memory.downloadSession->delegate.downloadDidComplete(
        lastTask(), PlatformError{7, u"The network is unreachable"_qs});
    appState.setModelId(u"unheard-of"_qs, ModelPreset::medium);
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    ASSERT_TRUE(probe().tabTo(u"Download Now"_qs));
    probe().press(Qt::Key_Return);
    EXPECT_THAT(text(u"failure"_qs).toStdString(), ::testing::HasSubstr("unheard-of"));
    EXPECT_TRUE(canProceed());

    appState.setModelId(u"small-q8_0"_qs, ModelPreset::medium);
    ASSERT_TRUE(probe().tabTo(u"Download Now"_qs));
    probe().press(Qt::Key_Return);
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(probe().focusedName(), u"Continue") << "the button that was pressed has gone";
}

TEST_F(OnboardingWindowTest, ADownloadGoesOnWhileTheStepOrTheWindowIsGone)
{
    open();
    proceed(2);
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    ASSERT_TRUE(probe().tabTo(u"Back"_qs));
    probe().press(Qt::Key_Return);
    memory.downloadSession->delegate.downloadDidWriteData(lastTask(), 420, 1000);
    proceed();
    EXPECT_EQ(text(u"percent"_qs), u"42%") << "shown at once when the step is shown again";

    probe().press(Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return !window(); }));
    EXPECT_FALSE(appState.hasCompletedOnboarding());
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    EXPECT_EQ(lastTask(), 1) << "one download, however often the step was shown";

    open();
    proceed(2);
    EXPECT_EQ(text(u"title"_qs), u"Voice Model Ready!");
}

} // namespace
} // namespace Velloro
