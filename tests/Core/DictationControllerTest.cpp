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
    EXPECT_THAT(pill, ElementsAre(u"show"_qs));
    EXPECT_THAT(memory.systemSounds->played, ElementsAre(u"Pop"_qs));
    ASSERT_TRUE(waitUntil([&] { return state->recordingDuration() > 0; }));
    EXPECT_DOUBLE_EQ(state->recordingDuration(), 0.05);

    speak(4096);
    speak(100);
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));

    EXPECT_EQ(typed(), u"Dzień dobry"_qs);
    EXPECT_EQ(state->lastTranscript(), u"Dzień dobry"_qs);
    ASSERT_EQ(state->transcriptionHistory().size(), 1);
    EXPECT_THAT(pill, ElementsAre(u"show"_qs, u"hide"_qs));
    EXPECT_THAT(memory.systemSounds->played, ElementsAre(u"Pop"_qs, u"Tink"_qs));
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
        ASSERT_TRUE(
            waitForMessage(u"Cannot start recording: already recording (state: transcribing)"_qs));
    }
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(typed(), u"Hello world."_qs);
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
        {"text area", 7, true, u"AXTextArea"_qs, true, true},
        {"static text", 7, true, u"AXStaticText"_qs, true, true},
        {"button", 7, true, u"AXButton"_qs, true, false},
        {"other case", 7, true, u"axtextarea"_qs, true, false},
        {"button, check off", 7, true, u"AXButton"_qs, false, true},
        {"no role", 7, true, std::nullopt, true, true},
        {"no focused element", 7, false, std::nullopt, true, true},
        {"no application", std::nullopt, true, u"AXButton"_qs, true, true},
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
            ASSERT_TRUE(waitForMessage(u"Text field not focused, showing notification"_qs));
            EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
            release();
        }
    }
    ASSERT_EQ(memory.userNotifications->delivered.size(), 2U);
    EXPECT_EQ(memory.userNotifications->delivered[0].first, u"Velloro"_qs);
    EXPECT_EQ(memory.userNotifications->delivered[0].second,
              u"Please click on a text field before recording. You can disable this "
              "check in Settings."_qs);
}

TEST_F(DictationControllerTest, AsksForTheMicrophoneAndStartsOnceItIsGranted)
{
    memory.captureAuthorization->status = AuthorizationStatus::denied;
    memory.captureAuthorization->granted = false;
    launchWithModel();

    press();
    ASSERT_TRUE(waitForMessage(u"Permission denied by user"_qs));
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
    ASSERT_TRUE(waitForMessage(u"Cannot start recording: model not downloaded."_qs));
    release();

    // The large preset stands for the medium family here.
    state->setSelectedModel(ModelPreset::large);
    addModel(u"medium"_qs);
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    press();
    ASSERT_TRUE(waitForMessage(u"Failed to load model JIT: Failed to load whisper model"_qs));
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
    EXPECT_EQ(state->whisperManager().selectedModelId(), u"medium"_qs);
    EXPECT_EQ(typed(), u"Hello world."_qs);
}

TEST_F(DictationControllerTest, PressesDuringTheLoadStartOneRecording)
{
    launch();
    state->setSelectedModel(ModelPreset::large);
    addModel(u"medium"_qs);
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
    ASSERT_TRUE(
        waitUntil([&] { return messages().count(u"Successfully loaded model JIT"_qs) == 2; }));
    // The second finds the first one starting, or started.
    EXPECT_EQ(messages().count(u"Started recording in batch mode"_qs), 1);
    EXPECT_EQ(FakeWhisper::loads().size(), 1U);
}

TEST_F(DictationControllerTest, EndsIdleWhateverFails)
{
    launchWithModel();
    memory.captureError = PlatformError{5, u"No such device"_qs};
    press();
    ASSERT_TRUE(waitForMessage(u"Failed to start recording: No such device"_qs));
    release();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
    EXPECT_THAT(pill, IsEmpty());
    EXPECT_THAT(memory.systemSounds->played, IsEmpty());

    memory.audioEngine->startError.reset();
    log.clear();
    FakeWhisper::enqueue({.code = -7});
    dictate();
    EXPECT_EQ(messages().last(), u"Empty final transcription"_qs);
    EXPECT_EQ(memory.systemSounds->played.last(), u"Tink"_qs);
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
    EXPECT_EQ(typed(), u"Hello world."_qs);
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
    EXPECT_EQ(typed(), u"a"_qs);
    EXPECT_EQ(state->lastTranscript(), u"a"_qs);
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
    addModel(u"small-q8_0"_qs);
    addModel(u"base"_qs);
    addModel(u"tiny"_qs);
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

    // A load that was overtaken by a dictation's is made up for, one by the user's choice is not.
    addModel(u"small"_qs);
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        state->setSelectedModel(ModelPreset::medium);
        manager.loadModel(WhisperModelType::small);
    }
    ASSERT_TRUE(waitForModel("small-q8_0"));
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel("base"));
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        state->setSelectedModel(ModelPreset::medium);
        manager.loadModel(u"tiny"_qs);
    }
    ASSERT_TRUE(waitForModel("tiny"));
    QCoreApplication::processEvents();
    EXPECT_EQ(manager.selectedModelId(), u"tiny"_qs);
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel("base"));
    state->setSelectedModel(ModelPreset::medium);
    ASSERT_TRUE(waitForModel("small-q8_0"));
    state->setSelectedModel(ModelPreset::small);
    ASSERT_TRUE(waitForModel("base"));

    // Not in the middle of a recording, but when it has ended.
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    addModel(u"tiny-q5_1"_qs);
    state->setModelId(u"tiny-q5_1"_qs, ModelPreset::small);
    EXPECT_EQ(manager.selectedModelId(), u"base"_qs);
    release();
    ASSERT_TRUE(waitForModel("tiny-q5_1"));

    // A download of the preset's model that ends.
    state->setModelId(u"base-q5_1"_qs, ModelPreset::small);
    EXPECT_EQ(manager.selectedModelId(), u"tiny-q5_1"_qs);
    manager.downloadModel(u"base-q5_1"_qs);
    addModel(u"base-q5_1"_qs);
    manager.refreshModelStates();
    ASSERT_TRUE(waitForModel("base-q5_1"));

    // A file that was put there by hand: the press finds it.
    manager.unloadModel();
    state->setSelectedModel(ModelPreset::large);
    state->setModelId(u"tiny"_qs, ModelPreset::large);
    addModel(u"tiny"_qs);
    press();
    ASSERT_TRUE(waitForModel("tiny"));
    release();
}

} // namespace
