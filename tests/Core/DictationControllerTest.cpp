#include "Core/DictationController.h"

#include "Core/PresetModelLoader.h"
#include "Support/DictationControllerTestBase.h"

using namespace Velloro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using DictationControllerTest = DictationControllerTestBase;

TEST_F(DictationControllerTest, TypesWhatWasSaidWhileTheHotkeyWasHeld)
{
    launchWithModel();
    state->setSelectedLanguage(WhisperLanguage::polish);
    state->setCustomDictionary(strings({"Kubernetes"}));
    FakeWhisper::enqueueSegments({" dzień", " dobry"});

    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_THAT(pill, ElementsAre(QStringLiteral("show")));
    EXPECT_THAT(memory.systemSounds->played, ElementsAre(QStringLiteral("Pop")));
    ASSERT_TRUE(waitUntil([&] { return state->recordingDuration() > 0; }));
    EXPECT_DOUBLE_EQ(state->recordingDuration(), 0.05);

    speak(4096);
    speak(100);
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));

    EXPECT_EQ(typed(), QStringLiteral("Dzień dobry"));
    EXPECT_EQ(state->lastTranscript(), QStringLiteral("Dzień dobry"));
    ASSERT_EQ(state->transcriptionHistory().size(), 1);
    EXPECT_THAT(pill, ElementsAre(QStringLiteral("show"), QStringLiteral("hide")));
    EXPECT_THAT(memory.systemSounds->played,
                ElementsAre(QStringLiteral("Pop"), QStringLiteral("Tink")));
    EXPECT_EQ(messages(),
              strings({"Started recording in batch mode",
                       "Stopped recording, got 4196 samples. Mode: batch",
                       "Text corrected: 'dzień dobry' -> 'Dzień dobry'",
                       "Final transcription: 'Dzień dobry'"}));
    const auto calls = FakeWhisper::calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].language, "pl");
    EXPECT_EQ(calls[0].prompt, QByteArray("Kubernetes"));
    EXPECT_EQ(calls[0].samples.size(), 4196U);
}

TEST_F(DictationControllerTest, ToggleModeStopsAtTheSecondPressAndIsBusyMeanwhile)
{
    launchWithModel();
    state->setRecordingMode(RecordingMode::toggle);
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    release();
    speak(4096);
    {
        FakeWhisper::Hold hold;
        press();
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
        ASSERT_TRUE(hold.waitUntilHeld());
        press();
        release();
        ASSERT_TRUE(waitForMessage(
            QStringLiteral("Cannot start recording: already recording (state: transcribing)")));
    }
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(typed(), QStringLiteral("Hello world."));
}

TEST_F(DictationControllerTest, FocusCheckRefusesOnlyWhatIsNoTextFieldForSure)
{
    struct Case
    {
        const char *description;
        std::optional<pid_t> frontmost;
        bool hasElement;
        std::optional<QString> role;
        bool isRequired;
        bool starts;
    };
    const Case cases[] = {
        {"text area", 7, true, QStringLiteral("AXTextArea"), true, true},
        {"static text", 7, true, QStringLiteral("AXStaticText"), true, true},
        {"button", 7, true, QStringLiteral("AXButton"), true, false},
        {"other case", 7, true, QStringLiteral("axtextarea"), true, false},
        {"button, check off", 7, true, QStringLiteral("AXButton"), false, true},
        {"no role", 7, true, std::nullopt, true, true},
        {"no focused element", 7, false, std::nullopt, true, true},
        {"no application", std::nullopt, true, QStringLiteral("AXButton"), true, true},
    };
    launchWithModel();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.description);
        log.clear();
        memory.workspace->frontmost
            = c.frontmost ? std::optional(RunningApplication{*c.frontmost}) : std::nullopt;
        memory.accessibility->focusedOf.clear();
        if (c.hasElement) {
            auto element = std::make_shared<InMemoryAccessibility::Element>();
            element->role = c.role;
            memory.accessibility->focusedOf[7] = element;
        }
        state->setRequireTextFieldFocus(c.isRequired);
        press();
        if (c.starts) {
            ASSERT_TRUE(waitForState(TranscriptionState::listening));
            release();
            ASSERT_TRUE(waitForState(TranscriptionState::idle));
        } else {
            ASSERT_TRUE(
                waitForMessage(QStringLiteral("Text field not focused, showing notification")));
            EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
            release();
        }
    }
    ASSERT_EQ(memory.userNotifications->delivered.size(), 2U);
    EXPECT_EQ(memory.userNotifications->delivered[0].first, QStringLiteral("Velloro"));
    EXPECT_EQ(memory.userNotifications->delivered[0].second,
              QStringLiteral("Please click on a text field before recording. You can disable this "
                             "check in Settings."));
}

TEST_F(DictationControllerTest, AsksForTheMicrophoneAndStartsOnceItIsGranted)
{
    memory.captureAuthorization->status = AuthorizationStatus::denied;
    memory.captureAuthorization->granted = false;
    launchWithModel();

    press();
    ASSERT_TRUE(waitForMessage(QStringLiteral("Permission denied by user")));
    release();
    EXPECT_FALSE(state->hasMicrophonePermission());

    memory.captureAuthorization->granted = true;
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_TRUE(state->hasMicrophonePermission());
    EXPECT_EQ(messages(), strings({"Microphone permission not granted, requesting...",
                                   "Permission denied by user",
                                   "Microphone permission not granted, requesting...",
                                   "Permission granted, starting recording...",
                                   "Started recording in batch mode"}));
}

TEST_F(DictationControllerTest, LoadsTheModelJustInTime)
{
    launch();
    press();
    ASSERT_TRUE(waitForMessage(QStringLiteral("Cannot start recording: model not downloaded.")));
    release();

    // The large preset stands for the medium family here.
    state->setSelectedModel(ModelPreset::large);
    addModel(QStringLiteral("medium"));
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    press();
    ASSERT_TRUE(waitForMessage(
        QStringLiteral("Failed to load model JIT: Failed to load whisper model")));
    release();
    FakeWhisper::setLoadScript({});
    dictate();
    EXPECT_EQ(messages().mid(0, 7),
              strings({"Model not loaded, attempting to load selected model...",
                       "Cannot start recording: model not downloaded.",
                       "Model not loaded, attempting to load selected model...",
                       "Failed to load model JIT: Failed to load whisper model",
                       "Model not loaded, attempting to load selected model...",
                       "Successfully loaded model JIT", "Started recording in batch mode"}));
    EXPECT_EQ(state->whisperManager().selectedModelId(), QStringLiteral("medium"));
    EXPECT_EQ(typed(), QStringLiteral("Hello world."));
}

TEST_F(DictationControllerTest, PressesDuringTheLoadStartOneRecording)
{
    launch();
    state->setSelectedModel(ModelPreset::large);
    addModel(QStringLiteral("medium"));
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        for (int presses = 1; presses <= 2; ++presses) {
            press();
            ASSERT_TRUE(waitUntil([&] { return messages().size() == presses; }));
            release();
        }
        ASSERT_TRUE(hold.waitUntilHeld());
    }
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    ASSERT_TRUE(waitUntil(
        [&] { return messages().count(QStringLiteral("Successfully loaded model JIT")) == 2; }));
    // The second finds the first one starting, or started.
    EXPECT_EQ(messages().count(QStringLiteral("Started recording in batch mode")), 1);
    EXPECT_EQ(FakeWhisper::loads().size(), 1U);
}

TEST_F(DictationControllerTest, EndsIdleWhateverFails)
{
    launchWithModel();
    memory.captureError = PlatformError{5, QStringLiteral("No such device")};
    press();
    ASSERT_TRUE(waitForMessage(QStringLiteral("Failed to start recording: No such device")));
    release();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
    EXPECT_THAT(pill, IsEmpty());
    EXPECT_THAT(memory.systemSounds->played, IsEmpty());

    memory.audioEngine->startError.reset();
    log.clear();
    FakeWhisper::enqueue({.code = -7});
    dictate();
    EXPECT_EQ(messages().last(), QStringLiteral("Empty final transcription"));
    EXPECT_EQ(memory.systemSounds->played.last(), QStringLiteral("Tink"));
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_EQ(typed(), QString());
}

TEST_F(DictationControllerTest, MicrophoneThatVanishesEndsTheRecordingWithWhatWasSaid)
{
    launchWithModel();
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    speak(4096);
    memory.audioEngine->interrupt();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(typed(), QStringLiteral("Hello world."));
    release();
    dictate();
    EXPECT_EQ(state->transcriptionHistory().size(), 2);
}

TEST_F(DictationControllerTest, SilentSettingsAndOneLetterTexts)
{
    launchWithModel();
    state->setPlaySounds(false);
    state->setEnableTextCorrection(false);
    FakeWhisper::enqueueSegments({" a"});
    dictate();
    EXPECT_EQ(typed(), QStringLiteral("a"));
    EXPECT_EQ(state->lastTranscript(), QStringLiteral("a"));
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_THAT(memory.systemSounds->played, IsEmpty());
}

TEST_F(DictationControllerTest, EndInTheMiddleOfARecordingTypesNothing)
{
    launchWithModel();
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    speak(4096);
    FakeWhisper::Hold hold;
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
    state->whisperManager().unloadModel();
    controller.reset();
    hold.release();
    ASSERT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 0; }));
    EXPECT_EQ(typed(), QString());
    press();
    release();
    QCoreApplication::processEvents();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::transcribing);
}

TEST_F(DictationControllerTest, ScansThePresetsThatHaveAFile)
{
    launch();
    for (const char *id : {"tiny", "base", "small", "medium"})
        addModel(QString::fromLatin1(id));
    controller->updateAppStateFromWhisperManager();
    EXPECT_THAT(state->downloadedModels(), ElementsAre(ModelPreset::small, ModelPreset::medium));
}

TEST_F(DictationControllerTest, ModelOfThePresetIsTheOneThatIsUsed)
{
    addModel(QStringLiteral("small-q8_0"));
    addModel(QStringLiteral("base"));
    launch();
    WhisperManager &manager = state->whisperManager();
    PresetModelLoader loader(*state, *hotkeys);
    const auto waitForModel = [&](const char *id) {
        return waitUntil([&] {
            return manager.isModelLoaded() && manager.selectedModelId() == QString::fromLatin1(id);
        });
    };

    loader.loadPresetModel();
    ASSERT_TRUE(waitForModel("small-q8_0"));
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel("base"));

    // A load that was overtaken is made up for.
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        state->setSelectedModel(ModelPreset::medium);
        manager.loadModel(WhisperModelType::base);
    }
    ASSERT_TRUE(waitForModel("small-q8_0"));
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel("base"));

    // Not in the middle of a recording, but when it has ended.
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    addModel(QStringLiteral("tiny-q5_1"));
    state->setModelId(QStringLiteral("tiny-q5_1"), ModelPreset::small);
    EXPECT_EQ(manager.selectedModelId(), QStringLiteral("base"));
    release();
    ASSERT_TRUE(waitForModel("tiny-q5_1"));

    // A download of the preset's model that ends.
    state->setModelId(QStringLiteral("base-q5_1"), ModelPreset::small);
    EXPECT_EQ(manager.selectedModelId(), QStringLiteral("tiny-q5_1"));
    manager.downloadModel(QStringLiteral("base-q5_1"));
    addModel(QStringLiteral("base-q5_1"));
    manager.refreshModelStates();
    ASSERT_TRUE(waitForModel("base-q5_1"));

    // A file that was put there by hand: the press finds it.
    manager.unloadModel();
    state->setSelectedModel(ModelPreset::large);
    state->setModelId(QStringLiteral("tiny"), ModelPreset::large);
    addModel(QStringLiteral("tiny"));
    press();
    ASSERT_TRUE(waitForModel("tiny"));
    release();
}

} // namespace
