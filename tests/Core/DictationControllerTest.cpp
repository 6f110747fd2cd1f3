#include "Core/Dictation/DictationController.h"

#include "Base/StringLiterals.h"
#include "Support/DictationControllerTestBase.h"

using namespace Velloro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using DictationControllerTest = DictationControllerTestBase;

/// Cues that are told when they are played.
class ToldSounds : public SystemSounds
{
public:
    explicit ToldSounds(RecordedPill::Listener listener)
        : m_listener(std::move(listener))
    {
    }
    void play(const QString &name) override { m_listener(u"cue "_s + name); }

private:
    RecordedPill::Listener m_listener;
};

TEST_F(DictationControllerTest, TypesWhatWasSaidWhileTheHotkeyWasHeld)
{
    launchWithModel();
    state->setSelectedLanguage(WhisperLanguage::polish);
    state->setCustomDictionary(strings({"Kubernetes"}));

    QStringList events;
    QString typedBefore;
    const auto tell = [&](const QString &event) {
        if (std::exchange(typedBefore, typed()) != typed())
            events << u"type "_s + typed();
        events << event;
    };
    log.setListener([&](const QString &line) {
        const QString tag = u"[Dictation] "_s;
        if (line.startsWith(tag))
            tell(line.mid(tag.size()));
    });
    memory.platform.systemSounds
        = std::make_unique<ToldSounds>([&](const QString &cue) { tell(cue); });
    controller = std::make_unique<DictationController>(*state, memory.platform, *hotkeys, [&] {
        return std::make_unique<RecordedPill>(
            [&](const QString &call) { tell(u"pill "_s + call); });
    });
    QObject::connect(state.get(), &AppState::transcriptionStateChanged, controller.get(),
                     [&] { tell(caseName(state->transcriptionState())); });
    QObject::connect(state.get(), &AppState::transcriptionHistoryChanged, controller.get(),
                     [&] { tell(u"history"_s); });
    QObject::connect(state.get(), &AppState::recordingDurationChanged, controller.get(), [&] {
        if (state->recordingDuration() == 0)
            tell(u"duration 0"_s);
    });
    const QStringList start
        = strings({"Started recording in batch mode", "listening", "pill show"});
    const QStringList end = strings(
        {"Stopped recording, got 4196 samples. Mode: batch", "transcribing",
         "Text corrected: 'no dzień dobry' -> 'Dzień dobry'", "type Dzień dobry", "history",
         "Final transcription: 'Dzień dobry'", "idle", "pill hide", "cue Tink"});

    for (const bool isFirst : {true, false}) {
        SCOPED_TRACE(isFirst);
        events.clear();
        typedBefore.clear();
        memory.accessibility->focusText(QString(), {0, 0});
        FakeWhisper::enqueueSegments({" no dzień", " dobry"});
        press();
        ASSERT_TRUE(waitForState(TranscriptionState::listening));
        ASSERT_TRUE(waitUntil([&] { return state->recordingDuration() > 0; }));
        EXPECT_DOUBLE_EQ(state->recordingDuration(), 0.05);
        speak(4096);
        speak(100);
        FakeWhisper::Hold hold;
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
        // The timer has stopped: it would have run out before this one does.
        const double duration = state->recordingDuration();
        bool isLater = false;
        QTimer::singleShot(150, [&] { isLater = true; });
        ASSERT_TRUE(waitUntil([&] { return isLater; }));
        EXPECT_EQ(state->recordingDuration(), duration);
        hold.release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
        const QStringList reset = isFirst ? QStringList() : strings({"duration 0"});
        EXPECT_EQ(events, start + reset + strings({"cue Pop"}) + end);
    }
    EXPECT_EQ(state->lastTranscript(), u"Dzień dobry"_s);
    EXPECT_EQ(state->transcriptionHistory().size(), 2);
    const auto calls = FakeWhisper::calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].language, "pl");
    EXPECT_EQ(calls[0].prompt, QByteArray("Kubernetes"));
    EXPECT_EQ(calls[0].samples.size(), 4196U);
    log.setListener({});
    controller.reset();
}

TEST_F(DictationControllerTest, ToggleModeStopsAtTheSecondPressAndIsBusyMeanwhile)
{
    launchWithModel();
    state->setRecordingMode(RecordingMode::toggle);
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    release();
    QCoreApplication::processEvents();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::listening);
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
            waitForMessage(u"Cannot start recording: already recording (state: transcribing)"_s));
    }
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(typed(), u"Hello world."_s);
}

TEST_F(DictationControllerTest, WithoutReleasesEitherModeStopsAtTheSecondPress)
{
    launchWithModel();
    for (const RecordingMode mode : allCases<RecordingMode>()) {
        SCOPED_TRACE(int(mode));
        state->setRecordingMode(mode);
        memory.hotkeyRegistration->toggle();
        ASSERT_TRUE(waitForState(TranscriptionState::listening));
        speak(4096);
        memory.hotkeyRegistration->toggle();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
    }
    EXPECT_EQ(messages().count(u"Started recording in batch mode"_s), 2);
}

TEST_F(DictationControllerTest, ChecksTheFocusedElementOfTheApplicationInFront)
{
    struct Case
    {
        const char *description;
        std::optional<RunningApplication> frontmost;
        bool hasElement;
        std::optional<AccessibilityRole> role;
        bool isRequired;
        bool starts;
    };
    constexpr auto button = AccessibilityRole::button;
    const RunningApplication inFront{7};
    const Case cases[] = {
        {"text field", inFront, true, AccessibilityRole::textField, true, true},
        {"button", inFront, true, button, true, false},
        {"button, check off", inFront, true, button, false, true},
        {"button in a terminal", RunningApplication{7, true}, true, button, true, true},
        {"no role", inFront, true, std::nullopt, true, true},
        {"no focused element", inFront, false, std::nullopt, true, true},
        {"element of another application", RunningApplication{8}, true, button, true, true},
        {"no application", std::nullopt, true, button, true, true},
    };
    launchWithModel();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.description);
        log.clear();
        memory.workspace->frontmost = c.frontmost;
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
            ASSERT_TRUE(waitForMessage(u"Text field not focused, showing notification"_s));
            EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
            release();
        }
    }
    ASSERT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_EQ(memory.userNotifications->delivered[0].first, u"Velloro"_s);
    EXPECT_EQ(memory.userNotifications->delivered[0].second,
              u"Please click on a text field before recording. You can disable this "
              "check in Settings."_s);
}

TEST_F(DictationControllerTest, RecordsNothingWhereNoFieldHasTheKeyboard)
{
    launchWithModel();
    InMemoryScreenLock &screen = *memory.screenLock;
    screen.isScreenLocked = true;
    press();
    ASSERT_TRUE(waitForMessage(u"Cannot start recording: the screen is locked"_s));
    EXPECT_TRUE(memory.userNotifications->delivered.empty()) << "nobody is there";
    screen.isScreenLocked = false;
    screen.isTaken = true;
    press();
    ASSERT_TRUE(
        waitForMessage(u"Cannot start recording: another program has taken the keyboard"_s));
    EXPECT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_THAT(pill, IsEmpty());
    EXPECT_EQ(memory.audioEngine, nullptr);
}

TEST_F(DictationControllerTest, ALockEndsTheRecordingAndItsWordsGoToTheHistoryAlone)
{
    launchWithModel();
    InMemoryScreenLock &screen = *memory.screenLock;
    const auto expectKept = [&](qsizetype count) {
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
        EXPECT_EQ(typed(), u""_s);
        EXPECT_EQ(state->transcriptionHistory().size(), count);
        EXPECT_EQ(memory.userNotifications->delivered.size(), size_t(count));
        screen.isScreenLocked = screen.isTaken = false;
    };
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    speak(4096);
    screen.lock();
    EXPECT_NE(state->transcriptionState(), TranscriptionState::listening);
    expectKept(1);
    release();

    // A locker that only takes the keyboard.
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    speak(4096);
    screen.isTaken = true;
    release();
    expectKept(2);
}

TEST_F(DictationControllerTest, WordsThatCannotBePastedGoToTheHistoryAlone)
{
    launchWithModel();
    memory.accessibility->trusted = false;
    memory.pasteboard->isContested = true;
    dictate();
    EXPECT_EQ(memory.output.filter(u" down "_s), QStringList());
    EXPECT_EQ(state->transcriptionHistory().size(), 1);
    ASSERT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_THAT(memory.userNotifications->delivered[0].second.toStdString(),
                testing::AllOf(testing::HasSubstr("clipboard"), testing::HasSubstr("history")));

    memory.pasteboard->isContested = false;
    dictate();
    EXPECT_EQ(memory.output.filter(u" down "_s).size(), 1);
    EXPECT_EQ(memory.userNotifications->delivered.size(), 1U);
}

TEST_F(DictationControllerTest, WordsThatNoStrokeCanPasteAreLeftOnTheClipboard)
{
    launchWithModel();
    memory.accessibility->trusted = false;
    memory.keyboardEvents->refuses = true;
    dictate();
    EXPECT_EQ(memory.pasteboard->content, state->lastTranscript());
    ASSERT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_THAT(
        memory.userNotifications->delivered[0].second.toStdString(),
        testing::AllOf(testing::HasSubstr("on the clipboard"), testing::HasSubstr("Ctrl+V")));
}

TEST_F(DictationControllerTest, AsksForTheMicrophoneAndStartsOnceItIsGranted)
{
    memory.captureAuthorization->status = AuthorizationStatus::denied;
    memory.captureAuthorization->granted = false;
    launchWithModel();

    press();
    ASSERT_TRUE(waitForMessage(u"Permission denied by user"_s));
    release();
    EXPECT_FALSE(state->hasMicrophonePermission());

    // Whatever has the focus: the question may have taken it.
    memory.workspace->frontmost = RunningApplication{7};
    auto button = std::make_shared<InMemoryAccessibility::Element>();
    button->role = AccessibilityRole::button;
    memory.accessibility->focusedOf[7] = button;
    memory.captureAuthorization->granted = true;
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_TRUE(state->hasMicrophonePermission());
    EXPECT_EQ(
        messages(),
        strings({"Microphone permission not granted, requesting...", "Permission denied by user",
                 "Microphone permission not granted, requesting...",
                 "Permission granted, starting recording...", "Started recording in batch mode"}));
}

TEST_F(DictationControllerTest, LoadsTheModelJustInTime)
{
    launch();
    press();
    ASSERT_TRUE(waitForMessage(u"Cannot start recording: model not downloaded."_s));
    release();

    // The large preset stands for the medium family here.
    state->setSelectedModel(ModelPreset::large);
    addModel(u"medium"_s);
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    press();
    ASSERT_TRUE(waitForMessage(u"Failed to load model JIT: Failed to load whisper model"_s));
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
    EXPECT_EQ(state->whisperManager().selectedModelId(), u"medium"_s);
    EXPECT_EQ(typed(), u"Hello world."_s);
}

TEST_F(DictationControllerTest, APressWaitsForTheLoadThatIsUnderWay)
{
    // The file of the preset's type would be there, too.
    addModel(u"small"_s);
    addModel(u"tiny"_s);
    addModel(u"base"_s);
    launch();
    state->setSelectedLanguage(WhisperLanguage::polish);
    state->setCustomDictionary(strings({"Kubernetes"}));
    WhisperManager &manager = state->whisperManager();
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        manager.loadModel(u"tiny"_s);
        press();
        release();
        ASSERT_TRUE(waitForMessage(u"Model not loaded, attempting"_s));
        ASSERT_TRUE(hold.waitUntilHeld());
        // The user thinks better of it.
        manager.loadModel(u"base"_s);
        EXPECT_TRUE(controller->isBusy());
    }
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_EQ(readModels(), strings({"tiny", "base"}));
    EXPECT_EQ(messages(),
              strings({"Model not loaded, attempting to load selected model...",
                       "Successfully loaded model JIT", "Started recording in batch mode"}));
    speak(4096);
    press();
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(FakeWhisper::calls().at(0).language, "pl");
    EXPECT_EQ(FakeWhisper::calls().at(0).prompt, QByteArray("Kubernetes"));
    EXPECT_FALSE(controller->isBusy());
}

TEST_F(DictationControllerTest, APressOutlivesTheFailureOfTheLoadItWaitsFor)
{
    launch();
    addModel(u"tiny"_s);
    addModel(u"base"_s);
    WhisperManager &manager = state->whisperManager();
    FakeWhisper::setLoadScript([](const QString &path) { return !path.contains(u"tiny"); });
    const auto pressDuringLoadOf = [&](const QString &model, const QString &chosenMeanwhile) {
        manager.unloadModel();
        log.clear();
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        if (!model.isEmpty())
            manager.loadModel(model);
        press();
        release();
        ASSERT_TRUE(waitForMessage(u"Model not loaded, attempting"_s));
        ASSERT_TRUE(hold.waitUntilHeld());
        if (!chosenMeanwhile.isEmpty())
            manager.loadModel(chosenMeanwhile);
    };

    // Nothing else is there.
    pressDuringLoadOf(u"tiny"_s, {});
    ASSERT_TRUE(waitForMessage(u"Failed to load model JIT: Failed to load whisper model"_s));
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);

    // The file of the preset's type is.
    addModel(u"small"_s);
    pressDuringLoadOf(u"tiny"_s, {});
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_EQ(manager.selectedModelId(), u"small"_s);
    press();
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));

    // Another model is chosen while that one is on its way.
    pressDuringLoadOf({}, u"base"_s);
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    EXPECT_EQ(manager.selectedModelId(), u"base"_s);
    EXPECT_EQ(readModels(), strings({"tiny", "tiny", "small", "small", "base"}));
}

TEST_F(DictationControllerTest, PressesDuringTheLoadStartOneRecording)
{
    launch();
    addModel(u"small"_s);
    FakeWhisper::Hold transcription;
    {
        FakeWhisper::Hold load(FakeWhisper::Point::load);
        for (int presses = 1; presses <= 2; ++presses) {
            press();
            ASSERT_TRUE(waitUntil([&] { return messages().size() == presses; }));
            release();
        }
        // Keeps the model busy, so that both are between their checks and the microphone.
        state->whisperManager().whisperContext()->transcribe({0.5F});
    }
    ASSERT_TRUE(
        waitUntil([&] { return messages().count(u"Successfully loaded model JIT"_s) == 2; }));
    transcription.release();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    // In hold mode, too, a press in the middle starts nothing, and only a release ends it.
    press();
    ASSERT_TRUE(waitForMessage(u"Cannot start recording: already recording (state: listening)"_s));
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(messages().count(u"Started recording in batch mode"_s), 1);
    EXPECT_EQ(readModels(), strings({"small"}));
}

TEST_F(DictationControllerTest, AModelChosenDuringTheRecordingLosesNoWord)
{
    addModel(u"tiny"_s);
    launchWithModel();
    state->setSelectedLanguage(WhisperLanguage::polish);
    state->setCustomDictionary(strings({"Kubernetes"}));
    WhisperManager &manager = state->whisperManager();
    for (const bool loads : {true, false}) {
        SCOPED_TRACE(loads);
        FakeWhisper::setLoadScript(
            [=](const QString &path) { return loads || !path.contains(u"tiny"); });
        manager.loadModel(WhisperModelType::small);
        ASSERT_TRUE(waitForModel(u"small"_s));
        memory.accessibility->focusText(QString(), {0, 0});
        press();
        ASSERT_TRUE(waitForState(TranscriptionState::listening));
        speak(4096);
        {
            FakeWhisper::Hold hold(FakeWhisper::Point::load);
            manager.loadModel(u"tiny"_s);
            release();
            ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
        }
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
        EXPECT_EQ(typed(), u"Hello world."_s);
        EXPECT_EQ(manager.selectedModelId(), loads ? u"tiny"_s : u"small"_s);
        EXPECT_EQ(FakeWhisper::calls().back().language, "pl");
        EXPECT_EQ(FakeWhisper::calls().back().prompt, QByteArray("Kubernetes"));
    }
}

TEST_F(DictationControllerTest, EndsIdleWhateverFails)
{
    launchWithModel();
    memory.captureError = PlatformError{5, u"No such device"_s};
    press();
    ASSERT_TRUE(waitForMessage(u"Failed to start recording: No such device"_s));
    release();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
    EXPECT_THAT(pill, IsEmpty());
    EXPECT_THAT(memory.systemSounds->played, IsEmpty());

    memory.audioEngine->startError.reset();
    log.clear();
    FakeWhisper::enqueue({.code = -7});
    dictate();
    EXPECT_EQ(messages().last(), u"Empty final transcription"_s);
    EXPECT_EQ(memory.systemSounds->played.last(), u"Tink"_s);
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());
    EXPECT_EQ(typed(), QString());
    EXPECT_EQ(memory.userNotifications->delivered.back().second,
              u"Your recording could not be turned into text: Transcription failed."_s);
}

TEST_F(DictationControllerTest, MicrophoneThatVanishesEndsTheRecordingWithWhatWasSaid)
{
    launchWithModel();
    press();
    ASSERT_TRUE(waitForState(TranscriptionState::listening));
    speak(4096);
    memory.audioEngine->interrupt();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(typed(), u"Hello world."_s);
    release();
    dictate();
    EXPECT_EQ(state->transcriptionHistory().size(), 2);
    EXPECT_EQ(pillsMade, 1) << "kept for the next recording";
}

TEST_F(DictationControllerTest, SilentSettingsAndOneLetterTexts)
{
    launchWithModel();
    state->setPlaySounds(false);
    state->setEnableTextCorrection(false);
    FakeWhisper::enqueueSegments({" a"});
    dictate();
    EXPECT_EQ(typed(), u"a"_s);
    EXPECT_EQ(state->lastTranscript(), u"a"_s);
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

} // namespace
