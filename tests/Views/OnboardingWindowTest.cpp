#include "Base/StringLiterals.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"
#include "Views/Onboarding/OnboardingViewModel.h"
#include "Views/Onboarding/OnboardingWindowController.h"
#include "Views/WindowTestBase.h"

#include <gmock/gmock.h>

namespace Velloro {

namespace {

class OnboardingWindowTest : public WindowTestBase<OnboardingWindowController>
{
protected:
    [[nodiscard]] bool canProceed() const { return probe().item(u"forward"_s)->isEnabled(); }
    /// Everything that the item and those in it say.
    [[nodiscard]] static QString allText(const QQuickItem *item)
    {
        QString text = item->property("text").toString();
        for (const QQuickItem *child : item->childItems())
            text += u'\n' + allText(child);
        return text;
    }
    [[nodiscard]] bool isShown(const QString &name) const
    {
        return probe().item(name)->isVisible();
    }
    void proceed(int steps = 1)
    {
        for (; steps > 0; --steps) {
            EXPECT_THAT(allText(window()->contentItem()).toStdString(),
                        ::testing::Not(::testing::ContainsRegex("Mac|menu bar")));
            ASSERT_TRUE(probe().tabTo(u"Continue"_s));
            probe().press(Qt::Key_Return);
        }
    }
    [[nodiscard]] DownloadTaskId lastTask() const
    {
        return DownloadTaskId(memory.downloadSession->tasks.size());
    }
    void finishDownload()
    {
        memory.fileSystem->files.insert(u"/tmp/part"_s);
        memory.downloadSession->delegate.downloadDidFinish(lastTask(), u"/tmp/part"_s);
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
    EXPECT_FALSE(probe().item(u"back"_s)->isVisible());
    EXPECT_EQ(probe().focusedName(), u"Continue");
    probe().hold(Qt::Key_Return);

    // Permissions.
    EXPECT_FALSE(canProceed());
    EXPECT_EQ(probe().focusedName(), u"Enable");
    EXPECT_TRUE(probe().showsFocus());
    const QQuickItem *enable = window()->activeFocusItem();
    const QPointF place = enable->mapToScene({});
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return text(u"microphoneProblem"_s) != u""; }));
    ASSERT_TRUE(waitUntil([this] { return probe().item(u"microphoneProblem"_s)->height() > 20; }));
    EXPECT_EQ(enable->mapToScene({}), place) << "under the pointer";
    EXPECT_EQ(probe().smallButtons(), QStringList());
    EXPECT_FALSE(canProceed()) << "it was refused";
    memory.captureAuthorization->granted = true;
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(text(u"microphoneProblem"_s), u"");
    EXPECT_EQ(probe().focusedName(), u"Continue");
    EXPECT_TRUE(probe().showsFocus());
    ASSERT_TRUE(probe().tabTo(u"Enable"_s));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(memory.accessibility->trustRequests, 1);
    memory.accessibility->trusted = true;
    ASSERT_TRUE(waitUntil([this] { return appState.hasAccessibilityPermission(); }));
    proceed();

    // The model.
    EXPECT_TRUE(canProceed());
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    EXPECT_EQ(text(u"title"_s), u"Setting Up Your Voice Assistant");
    EXPECT_FALSE(canProceed());
    EXPECT_EQ(probe().focusedName(), u"Back");
    memory.downloadSession->delegate.downloadDidWriteData(lastTask(), 999, 1000);
    EXPECT_EQ(text(u"percent"_s), u"99%");
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(text(u"title"_s), u"Voice Model Ready!");
    EXPECT_EQ(probe().focusedName(), u"Continue");
    EXPECT_EQ(memory.userDefaults->get<QStringList>(u"velloro.downloadedModels"_s),
              QStringList({u"Medium"_s}));
    for (int index = 0; index < 6; ++index) {
        const QColor color
            = probe().item(u"capsule%1"_s.arg(index))->property("color").value<QColor>();
        EXPECT_EQ(color.alphaF() > 0.9, index <= 2) << index;
    }
    proceed();

    // Mode and hotkey.
    ASSERT_TRUE(probe().tabTo(u"Toggle"_s));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(appState.recordingMode(), RecordingMode::toggle);
    const QQuickItem *recorder = probe().item(u"hotkeyRecorder"_s);
    const double width = recorder->width();
    probe().click(u"hotkeyRecorder"_s);
    EXPECT_EQ(recorder->property("text"), u"Press your hotkey..."_s);
    EXPECT_EQ(recorder->width(), width);
    probe().click(u"hotkeyRecorder"_s);
    // To the showcase, and no further.
    probe().doubleClick(u"forward"_s);
    EXPECT_TRUE(probe().tabTo(u"Continue"_s)) << "the step was skipped";
    proceed();
    EXPECT_EQ(text(u"instruction"_s), u"Press ⌥Space anywhere to start dictating");
    appState.setRecordingMode(RecordingMode::holdToTalk);
    EXPECT_EQ(text(u"instruction"_s), u"Press and hold ⌥Space anywhere to dictate");
    hotkeyManager->updateHotkey(96, 0);
    EXPECT_EQ(text(u"instruction"_s), u"Press and hold F5 anywhere to dictate");

    EXPECT_FALSE(appState.hasCompletedOnboarding());
    ASSERT_TRUE(probe().tabTo(u"Get Started"_s));
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
        lastTask(), PlatformError{7, u"The network is unreachable"_s});
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    EXPECT_EQ(log.messages(u"Onboarding"_s),
              QStringList({u"Download failed: The network is unreachable"_s}));
    EXPECT_EQ(text(u"title"_s), u"Download Voice Model");
    EXPECT_THAT(text(u"failure"_s).toStdString(), ::testing::HasSubstr("network is unreachable"));
    EXPECT_THAT(
        text(u"advice"_s).toStdString(),
        ::testing::AllOf(::testing::HasSubstr("internet connection"),
                         ::testing::HasSubstr("ggml-small-q8_0.bin"),
                         ::testing::HasSubstr(directory.path().toStdString() + "/Velloro/Models")));
    EXPECT_THAT(text(u"explanation"_s).toStdString(), ::testing::HasSubstr("(~252 MB)"));
    EXPECT_TRUE(canProceed());
    ASSERT_TRUE(probe().tabTo(u"Download Now"_s));
    probe().press(Qt::Key_Return);
    EXPECT_EQ(lastTask(), 2);
    EXPECT_EQ(text(u"title"_s), u"Setting Up Your Voice Assistant");
    EXPECT_TRUE(appState.isDownloadingModel());

    // What can't be downloaded at all is no dead end either.
    memory.downloadSession->delegate.downloadDidComplete(
        lastTask(), PlatformError{7, u"The network is unreachable"_s});
    appState.setModelId(u"unheard-of"_s, ModelPreset::medium);
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    ASSERT_TRUE(probe().tabTo(u"Download Now"_s));
    probe().press(Qt::Key_Return);
    EXPECT_THAT(text(u"failure"_s).toStdString(), ::testing::HasSubstr("unheard-of"));
    EXPECT_TRUE(canProceed());

    appState.setModelId(u"tiny-q5_1"_s, ModelPreset::medium);
    EXPECT_THAT(text(u"explanation"_s).toStdString(), ::testing::HasSubstr("(~31 MB)"));
    ASSERT_TRUE(probe().tabTo(u"Download Now"_s));
    probe().press(Qt::Key_Return);
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    EXPECT_EQ(probe().focusedName(), u"Continue") << "the button that was pressed has gone";
}

TEST_F(OnboardingWindowTest, AFileThatWasPutIntoTheFolderByHandServes)
{
    open();
    proceed(2);
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    memory.downloadSession->delegate.downloadDidComplete(lastTask(), PlatformError{7, u"No"_s});
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    memory.fileSystem->files.insert(directory.path() + u"/Velloro/Models/ggml-small-q8_0.bin"_s);
    ASSERT_TRUE(probe().tabTo(u"Download Now"_s));
    probe().press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return text(u"title"_s) == u"Voice Model Ready!"; }));
    EXPECT_EQ(lastTask(), 1) << "nothing is fetched for it";
}

TEST_F(OnboardingWindowTest, TheLastStepSaysWhatIsStillToBeDoneAndWhereTheProgramIs)
{
    open();
    proceed(2);
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    memory.downloadSession->delegate.downloadDidComplete(lastTask(), PlatformError{7, u"No"_s});
    ASSERT_TRUE(waitUntil([this] { return canProceed(); }));
    proceed(3);
    const auto mark = [this] { return probe().item(u"mark"_s)->property("name").toString(); };
    EXPECT_EQ(text(u"title"_s), u"Almost There");
    EXPECT_NE(mark(), u"checkmark.circle.fill");
    EXPECT_THAT(text(u"unfinished"_s).toStdString(), ::testing::HasSubstr("Settings"));
    appState.whisperManager().downloadModel(u"small-q8_0"_s);
    memory.downloadSession->delegate.downloadDidWriteData(lastTask(), 420, 1000);
    EXPECT_THAT(text(u"unfinished"_s).toStdString(), ::testing::HasSubstr("42%"));
    finishDownload();
    EXPECT_EQ(text(u"title"_s), u"You're All Set!");
    EXPECT_EQ(mark(), u"checkmark.circle.fill");
    EXPECT_FALSE(isShown(u"unfinished"_s));

    EXPECT_TRUE(isShown(u"noTray"_s));
    EXPECT_FALSE(isShown(u"tray"_s));
    memory.trayHost->appear();
    EXPECT_FALSE(isShown(u"noTray"_s));
    EXPECT_TRUE(isShown(u"tray"_s));
    EXPECT_EQ(text(u"tray"_s), u"icon in your tray");
}

TEST_F(OnboardingWindowTest, ADownloadGoesOnWhileTheStepOrTheWindowIsGone)
{
    open();
    proceed(2);
    ASSERT_TRUE(waitUntil([this] { return appState.isDownloadingModel(); }));
    ASSERT_TRUE(probe().tabTo(u"Back"_s));
    probe().press(Qt::Key_Return);
    memory.downloadSession->delegate.downloadDidWriteData(lastTask(), 420, 1000);
    proceed();
    EXPECT_EQ(text(u"percent"_s), u"42%") << "shown at once when the step is shown again";

    probe().press(Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return !window(); }));
    EXPECT_FALSE(appState.hasCompletedOnboarding());
    finishDownload();
    ASSERT_TRUE(waitUntil([this] { return !appState.isDownloadingModel(); }));
    EXPECT_EQ(lastTask(), 1) << "one download, however often the step was shown";

    open();
    proceed(2);
    EXPECT_EQ(text(u"title"_s), u"Voice Model Ready!");
}

} // namespace
} // namespace Velloro
