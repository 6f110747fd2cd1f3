#include "Core/Dictation/PresetModelLoader.h"

#include "Base/StringLiterals.h"
#include "Support/DictationControllerTestBase.h"

using namespace Velloro;

namespace {

class PresetModelLoaderTest : public DictationControllerTestBase
{
protected:
    /// Launches as the program does, with the files of these models.
    void launchWith(const QStringList &models)
    {
        for (const QString &id : models)
            addModel(id);
        launch();
        loader = std::make_unique<PresetModelLoader>(*state, *controller);
        loader->loadAtLaunch();
    }

    void waitUntilIdle()
    {
        ASSERT_TRUE(waitUntil([this] { return !controller->isBusy(); }));
    }

    /// Whether no load is under way, nor was one since the context came.
    [[nodiscard]] bool isLeftAlone(const std::shared_ptr<WhisperContext> &context)
    {
        const WhisperManager &manager = state->whisperManager();
        return manager.loadingModelId().isEmpty() && manager.whisperContext() == context;
    }

    std::unique_ptr<PresetModelLoader> loader;
};

TEST_F(PresetModelLoaderTest, TheLaunchReadsOneModel)
{
    const struct
    {
        QStringList files;
        QStringList read;
    } cases[] = {
        {strings({"small", "small-q8_0"}), strings({"small-q8_0"})},
        {strings({"small-q8_0"}), strings({"small-q8_0"})},
        {strings({"small"}), strings({"small"})},
        {strings({"base"}), {}},
    };
    for (const auto &[files, read] : cases) {
        SCOPED_TRACE(files.join(u' ').toStdString());
        FakeWhisper::reset();
        memory.fileSystem->files.clear();
        loader.reset();
        controller.reset();
        hotkeys.reset();
        launchWith(files);
        // A press before it has ended.
        press();
        ASSERT_TRUE(read.isEmpty()
                        ? waitForMessage(u"Cannot start recording: model not downloaded."_s)
                        : waitForState(TranscriptionState::listening));
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
        EXPECT_EQ(readModels(), read);
    }
}

TEST_F(PresetModelLoaderTest, FollowsThePresetAndItsModel)
{
    launchWith(strings({"small-q8_0", "base", "tiny-q5_1", "tiny"}));
    WhisperManager &manager = state->whisperManager();
    ASSERT_TRUE(waitForModel(u"small-q8_0"_s));
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel(u"base"_s));
    state->setModelId(u"tiny-q5_1"_s, ModelPreset::small);
    ASSERT_TRUE(waitForModel(u"tiny-q5_1"_s));

    // Another preset's model, the loaded one, and one whose file is not there change nothing.
    const auto context = manager.whisperContext();
    state->setModelId(u"tiny"_s, ModelPreset::large);
    EXPECT_TRUE(isLeftAlone(context));
    loader->loadPresetModel();
    EXPECT_TRUE(isLeftAlone(context));
    state->setModelId(u"base-q5_1"_s, ModelPreset::small);
    EXPECT_TRUE(isLeftAlone(context));

    // Of the downloads the one of the preset's model counts, when it has ended well.
    const auto download = [&](const char *id, bool succeeds) {
        manager.downloadModel(QString::fromLatin1(id));
        const auto task = static_cast<DownloadTaskId>(memory.downloadSession->tasks.size());
        if (succeeds)
            addModel(QString::fromLatin1(id));
        else
            memory.downloadSession->delegate.downloadDidComplete(task, PlatformError{});
        manager.refreshModelStates();
    };
    download("base-q5_1", false);
    EXPECT_TRUE(isLeftAlone(context));
    download("base-q5_1", true);
    ASSERT_TRUE(waitForModel(u"base-q5_1"_s));
    // Once.
    manager.loadModel(u"tiny"_s);
    ASSERT_TRUE(waitForModel(u"tiny"_s));
    const auto chosen = manager.whisperContext();
    manager.refreshModelStates();
    download("base-q8_0", true);
    EXPECT_TRUE(isLeftAlone(chosen));
}

TEST_F(PresetModelLoaderTest, AModelThatTheUserChoseByItsNameStays)
{
    launchWith(strings({"small-q8_0", "base", "tiny"}));
    WhisperManager &manager = state->whisperManager();
    {
        // The preset's is still on its way.
        ASSERT_TRUE(waitForModel(u"small-q8_0"_s));
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        state->setModelId(u"base"_s, ModelPreset::medium);
        ASSERT_TRUE(hold.waitUntilHeld());
        manager.loadModel(u"tiny"_s);
    }
    ASSERT_TRUE(waitForModel(u"tiny"_s));
    dictate();
    EXPECT_TRUE(isLeftAlone(manager.whisperContext()));
    EXPECT_EQ(readModels(), strings({"small-q8_0", "base", "tiny"}));
}

TEST_F(PresetModelLoaderTest, DoesNothingBetweenAPressAndTheEndOfItsDictation)
{
    launchWith(strings({"small"}));
    WhisperManager &manager = state->whisperManager();
    ASSERT_TRUE(waitForModel(u"small"_s));
    manager.unloadModel();
    addModel(u"small-q8_0"_s);
    addModel(u"tiny"_s);
    std::shared_ptr<WhisperContext> context;
    const auto assign
        = [&](const char *id) { state->setModelId(QString::fromLatin1(id), ModelPreset::medium); };
    {
        // The just-in-time load.
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        press();
        ASSERT_TRUE(waitForMessage(u"Model not loaded, attempting"_s));
        context = manager.whisperContext();
        assign("tiny");
        EXPECT_EQ(manager.loadingModelId(), u"small"_s);
    }
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    assign("small-q8_0");
    EXPECT_TRUE(isLeftAlone(context));
    FakeWhisper::Hold hold;
    speak(4096);
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
    assign("tiny");
    EXPECT_TRUE(isLeftAlone(context));
    hold.release();
    ASSERT_TRUE(waitForModel(u"tiny"_s));
    EXPECT_EQ(readModels(), strings({"small", "small", "tiny"}));

    // Nor while the microphone's permission is asked for.
    memory.captureAuthorization->answersAtOnce = false;
    state->setHasMicrophonePermission(false);
    press();
    ASSERT_TRUE(waitForMessage(u"Microphone permission not granted"_s));
    assign("small-q8_0");
    EXPECT_TRUE(isLeftAlone(manager.whisperContext()));
    memory.captureAuthorization->answer(false);
    ASSERT_TRUE(waitForModel(u"small-q8_0"_s));
}

TEST_F(PresetModelLoaderTest, APressThatFoundNoModelIsMadeUpForByThePresets)
{
    launchWith({});
    addModel(u"small-q8_0"_s);
    press();
    release();
    ASSERT_TRUE(waitForMessage(u"Cannot start recording: model not downloaded."_s));
    ASSERT_TRUE(waitForModel(u"small-q8_0"_s));
    dictate();
    EXPECT_EQ(typed(), u"Hello world."_s);

    // What the press has tried itself is not tried again.
    state->setSelectedModel(ModelPreset::small);
    state->whisperManager().unloadModel();
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    addModel(u"base"_s);
    press();
    release();
    ASSERT_TRUE(waitForMessage(u"Failed to load model JIT: Failed to load whisper model"_s));
    waitUntilIdle();
    EXPECT_TRUE(state->whisperManager().loadingModelId().isEmpty());
    EXPECT_EQ(readModels(), strings({"small-q8_0", "base"}));
}

} // namespace
