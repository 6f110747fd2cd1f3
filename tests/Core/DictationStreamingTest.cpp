#include "Base/Graphemes.h"
#include "Base/StringLiterals.h"
#include "Managers/TextCorrector.h"
#include "Support/DictationControllerTestBase.h"
#include "Support/InMemoryTextField.h"
#include "Support/RandomSpeech.h"

#include <QRegularExpression>

using namespace Velloro;

namespace {

constexpr int passInterval = 24'000;

class DictationStreamingTest : public DictationControllerTestBase
{
protected:
    void start()
    {
        if (!controller)
            launchWithModel();
        state->setEnableRealtimeStreaming(true);
        log.clear();
        press();
        ASSERT_TRUE(waitForState(TranscriptionState::listening));
    }

    /// A segment as the recogniser delivers it.
    void segment(const char *text, const char *uncommitted = "")
    {
        controller->handleTranscriptionSegment(
            {.text = QString::fromUtf8(text), .uncommitted = QString::fromUtf8(uncommitted)});
    }

    /// Releases the hotkey; the final transcription hears this.
    void stop(const QByteArray &heard)
    {
        FakeWhisper::enqueueSegments({heard});
        speak(100);
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
    }

    /// Speaks for as long as a pass needs, and waits until its segment has been dealt with.
    void pass(const QByteArray &heard)
    {
        const size_t passes = FakeWhisper::calls().size();
        FakeWhisper::enqueueSegments({heard});
        speak(passInterval);
        ASSERT_TRUE(waitUntil([&] { return FakeWhisper::calls().size() > passes; }));
        // The executor builds the segment, the main thread takes it, the executor notes that.
        ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
        QCoreApplication::processEvents();
        ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
    }

    /// Speaks, and waits until the recogniser has been given what was said.
    void speakAndWait(int samples)
    {
        // Another loudness than before, which shows that the microphone has been asked.
        const float former = state->audioLevel();
        memory.audioEngine->deliver({std::vector<float>(samples, former > 0.8F ? 0.1F : 0.5F)});
        ASSERT_TRUE(waitUntil([&] { return state->audioLevel() != former; }));
        QCoreApplication::processEvents();
    }

    /// Releases the hotkey while a pass runs or its segment is on its way, and chunks may wait;
    /// none of that reaches the field before the final text does.
    void stopDuringPass(RandomSpeech &speech, const QByteArray &heard,
                        const InMemoryTextField &field)
    {
        const QString standing = field.text();
        const bool pending = speech.below(2) == 0;
        const int waiting = speech.below(3);
        size_t calls = FakeWhisper::calls().size() + 2;
        FakeWhisper::Hold hold;
        FakeWhisper::enqueueSegments({speech.nextPass()});
        if (pending && waiting > 0) {
            // A delivery on its way does not keep what waits from being the next pass.
            FakeWhisper::enqueueSegments({speech.nextPass()});
            ++calls;
        }
        FakeWhisper::enqueueSegments({heard});
        speakAndWait(passInterval);
        ASSERT_TRUE(hold.waitUntilHeld());
        for (int chunk = 0; chunk < waiting; ++chunk)
            speakAndWait(8000);
        release();
        if (pending) {
            // The controller hears of the release when the segment is already on its way.
            hold.letOneThrough();
            ASSERT_TRUE(waiting > 0 ? hold.waitUntilHeld()
                                    : SerialExecutor::finishAll(std::chrono::seconds(20)));
        }
        ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
        if (!pending || waiting > 0)
            hold.letOneThrough();
        // The final transcription is held.
        ASSERT_TRUE(waitUntil([&] { return FakeWhisper::calls().size() == calls; }));
        QCoreApplication::processEvents();
        EXPECT_EQ(field.text(), standing);
        hold.release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
    }

    /// The count in the last line that tells one.
    [[nodiscard]] int64_t counted() const
    {
        static const QRegularExpression counts(u"\\((?:total: )?(\\d+)(?: chars)?\\)$"_s);
        int64_t count = 0;
        for (const QString &message : messages()) {
            if (const auto match = counts.match(message); match.hasMatch())
                count = match.captured(1).toLongLong();
        }
        return count;
    }
};

TEST_F(DictationStreamingTest, NothingIsTypedOrDeletedWhileTheFieldHasLostTheKeyboard)
{
    start();
    segment("Here");
    EXPECT_EQ(typed(), u"Here"_s);
    memory.screenLock->isTaken = true;
    segment("Here it");
    EXPECT_EQ(typed(), u"Here"_s);
    memory.screenLock->isTaken = false;
    segment("Here it is");
    EXPECT_EQ(typed(), u"Here it is"_s);

    memory.screenLock->isTaken = true;
    stop(" Here it is.");
    EXPECT_EQ(typed(), u"Here it is"_s);
    EXPECT_EQ(state->lastTranscript(), u"Here it is."_s);
    EXPECT_EQ(memory.output, (QStringList{u"follow"_s, u"unfollow"_s}))
        << "no strokes, no pasteboard borrowed";
}

TEST_F(DictationStreamingTest, TypesWhatIsConfirmedAndReplacesItByTheFinalText)
{
    struct Case
    {
        const char *what;
        std::vector<std::pair<const char *, const char *>> segments;
        const char *standing;
        QStringList messages;
        int64_t deleted;
    };
    const std::vector<Case> cases = {
        {"growth, and nothing new",
         {{"Hello", "word"}, {" Hello world \n", ""}, {"Hello world", "again"}},
         "Hello world",
         strings({"Streaming start: 'Hello' (5 chars)", "Confirmed: +' world' (total: 11)"}),
         11},
        {"nothing confirmed", {{"", "abc"}, {" \n", "abcd"}}, "", {}, 0},
        {"divergence",
         {{"abcdefgh", ""}, {"abcdefxyz", ""}, {"abcdefxyz!", ""}},
         "abcdefgh abcdefxyz!",
         strings({"Streaming start: 'abcdefgh' (8 chars)",
                  "Streaming edge: 'abcdefxyz' (total: 18)", "Confirmed: +'!' (total: 19)"}),
         19},
        {"confirmed text that vanishes stays typed",
         {{"one two", ""}, {"", "three"}, {"one", ""}},
         "one two one",
         strings({"Streaming start: 'one two' (7 chars)", "Streaming edge: 'one' (total: 11)"}),
         11},
        {"an accent makes another letter, composition does not",
         {{"cafe", ""}, {"cafe\u0301", ""}, {"caf\u00e9", ""}, {"caf\u00e9 noir", ""}},
         "cafe cafe\u0301 noir",
         strings({"Streaming start: 'cafe' (4 chars)", "Streaming edge: 'cafe\u0301' (total: 9)",
                  "Confirmed: +' noir' (total: 14)"}),
         14},
        {"scripts of all kinds",
         {{"שלום 👩‍👩‍👧", ""},
          {"שלום 👩‍👩‍👧 你好 नमस्ते", ""}},
         "שלום 👩‍👩‍👧 你好 नमस्ते",
         {},
         -1},
    };
    const QString before = u"Dear 👩‍👩‍👧, "_s;
    const QString after = u" bye"_s;
    for (const bool accessible : {true, false}) {
        for (const Case &item : cases) {
            SCOPED_TRACE(item.what);
            InMemoryTextField field(memory, before + after, Graphemes::count(before));
            if (!accessible)
                field.refuseAccessibility();
            start();
            for (const auto &[text, uncommitted] : item.segments)
                segment(text, uncommitted);
            EXPECT_EQ(field.text(), before + QString::fromUtf8(item.standing) + after);
            if (!item.messages.isEmpty()) {
                EXPECT_EQ(messages().mid(1), item.messages);
            }
            const int64_t count = item.deleted < 0 ? counted() : item.deleted;
            memory.output.clear();
            log.clear();

            stop("Final text.");
            EXPECT_EQ(field.text(), before + u"Final text."_s + after);
            EXPECT_EQ(memory.output.count(u"51 down 0"_s), count);
            EXPECT_EQ(memory.output.count(u"pause 5000"_s), count);
            EXPECT_EQ(memory.output.count(u"pause 50000"_s), count > 0 ? 1 : 0);
            QStringList expected = strings({"Stopped recording, got 100 samples. Mode: streaming"});
            if (count > 0)
                expected << u"Deleting %1 characters of streaming text"_s.arg(count);
            EXPECT_EQ(messages(), expected + strings({"Final transcription: 'Final text.'"}));
        }
    }
}

TEST_F(DictationStreamingTest, EveryPassIsInTheSelectedLanguage)
{
    launchWithModel();
    state->setSelectedLanguage(WhisperLanguage::polish);
    start();
    pass(" no dobrze");
    stop(" no dobrze");
    ASSERT_EQ(FakeWhisper::calls().size(), 2U);
    for (const FakeWhisper::Call &call : FakeWhisper::calls())
        EXPECT_EQ(call.language, "pl");
}

TEST_F(DictationStreamingTest, DeletesThenPausesThenTypesTheFinalText)
{
    memory.accessibility->trusted = false;
    start();
    EXPECT_EQ(memory.output, strings({"follow"}));
    segment("ab");
    memory.output.clear();
    stop("Final.");
    EXPECT_EQ(
        memory.output,
        strings({"51 down 0", "51 up 0", "pause 5000", "51 down 0", "51 up 0", "pause 5000",
                 "pause 50000", "borrow Final.", "9 down 100000", "9 up 100000", "unfollow"}));
}

TEST_F(DictationStreamingTest, DeletesOnlyWhatWasSeenToArriveAndStillStandsBeforeTheCaret)
{
    struct Case
    {
        const char *what;
        bool accessible;
        std::function<void(InMemoryPlatform &)> afterFirst;
        std::function<void(InMemoryPlatform &)> atEnd;
        const char *standing;
        const char *final;
    };
    const auto nothing = [](InMemoryPlatform &) {};
    const auto unseen = [](InMemoryPlatform &memory) { memory.accessibility->showsWrites = false; };
    const auto seen = [](InMemoryPlatform &memory) { memory.accessibility->showsWrites = true; };
    const auto unfetched = [](InMemoryPlatform &memory) { memory.pasteboard->isFetched = false; };
    const auto elsewhere = [](InMemoryPlatform &memory) { memory.workspace->window = 2; };
    const auto press = [](InMemoryPlatform &memory) { memory.userInput->press(); };
    const auto back = [](InMemoryPlatform &memory) { memory.workspace->window = 1; };
    const std::vector<Case> cases = {
        {"pastes that nobody fetches any more", false, unfetched, nothing, "one two", "one End."},
        {"the caret goes elsewhere", true, unseen, nothing, "one", "oneEnd."},
        {"the caret is back at the end", true, unseen, seen, "one", "End."},
        {"another window", true, elsewhere, nothing, "one", "oneEnd."},
        {"another window, pasted into", false, elsewhere, nothing, "one", "oneEnd."},
        {"and back", false, elsewhere, back, "one", "End."},
        {"a key, after which the caret of a paste may be anywhere", false, press, nothing, "one",
         "oneEnd."},
        {"a key at the end", false, nothing, press, "one two three", "one two threeEnd."},
        {"a key after what was written", true, press, press, "one two three", "End."},
        {"another window at the end alone", false, nothing, elsewhere, "one two three",
         "one two threeEnd."},
    };
    for (const Case &item : cases) {
        SCOPED_TRACE(item.what);
        InMemoryTextField field(memory, u"mine "_s, 5);
        if (!item.accessible)
            field.refuseAccessibility();
        memory.workspace->window = 1;
        memory.pasteboard->isFetched = memory.accessibility->showsWrites = true;
        start();
        segment("one");
        item.afterFirst(memory);
        segment("one two");
        segment("one two three", "four");
        EXPECT_EQ(field.text(), u"mine "_s + QString::fromUtf8(item.standing));
        EXPECT_EQ(state->partialTranscript(), u"one two three four"_s);
        item.atEnd(memory);
        stop("End.");
        EXPECT_TRUE(field.text().startsWith(u"mine "_s)) << field.text().toStdString();
        EXPECT_TRUE(field.text().endsWith(u"End."_s)) << field.text().toStdString();
        EXPECT_EQ(field.text(), u"mine "_s + QString::fromUtf8(item.final));
    }
}

TEST_F(DictationStreamingTest, TypesOnWhenALateTextIsSeen)
{
    const InMemoryTextField field(memory, {}, 0);
    start();
    memory.accessibility->showsWrites = false;
    segment("one");
    segment("one two");
    EXPECT_EQ(field.text(), u"one"_s);
    memory.accessibility->showsWrites = true;
    segment("one two three");
    EXPECT_EQ(field.text(), u"one two three"_s);
    EXPECT_EQ(
        messages().mid(1),
        strings({"Streaming held back: the typed text is not seen before the caret",
                 "Streaming start: 'one' (3 chars)", "Confirmed: +' two three' (total: 13)"}));
    stop("End.");
    EXPECT_EQ(field.text(), u"End."_s);
}

TEST_F(DictationStreamingTest, WhatCouldNotBePastedComesWithTheNextWords)
{
    InMemoryTextField field(memory, u"mine "_s, 5);
    field.refuseAccessibility();
    start();
    memory.pasteboard->isContested = true;
    segment("one");
    memory.pasteboard->isContested = false;
    segment("one two");
    memory.pasteboard->isContested = true;
    segment("one two three");
    EXPECT_EQ(field.text(), u"mine one two"_s);
    EXPECT_EQ(messages().mid(1),
              strings({"Streaming held back: another program keeps the clipboard",
                       "Streaming start: 'one two' (7 chars)"}));
    // What was pasted before is still known to have arrived.
    memory.pasteboard->isContested = memory.pasteboard->isFetched = false;
    stop("End.");
    EXPECT_EQ(field.text(), u"mine End."_s);
}

TEST_F(DictationStreamingTest, PastesNothingBeforeTheEndWhereNobodyTellsWhatTheUserPresses)
{
    InMemoryTextField field(memory, u"mine "_s, 5);
    memory.userInput->tells = false;
    start();
    segment("one");
    EXPECT_EQ(field.text(), u"mine one"_s) << "a text that is written shows where the caret is";
    field.refuseAccessibility();
    segment("one two");
    segment("one two three");
    EXPECT_EQ(field.text(), u"mine one"_s);
    EXPECT_EQ(messages().mid(1),
              strings({"Streaming start: 'one' (3 chars)",
                       "Streaming held back: words typed here could not be removed again"}));
    stop("End.");
    EXPECT_EQ(field.text(), u"mine End."_s);
}

TEST_F(DictationStreamingTest, LogsTheBeginningsInWholeCharacters)
{
    const InMemoryTextField field(memory, {}, 0);
    start();
    const QString thumb = u"👍🏽"_s;
    const QString family = u"👩‍👩‍👧"_s;
    const auto confirm = [this](const QString &text) {
        segment(text.toUtf8().constData());
        return messages().last();
    };
    EXPECT_EQ(confirm(thumb.repeated(43)),
              u"Streaming start: '%1' (43 chars)"_s.arg(thumb.repeated(40)));
    EXPECT_EQ(confirm(thumb.repeated(43) + family.repeated(26)),
              u"Confirmed: +'%1' (total: 69)"_s.arg(family.repeated(25)));
    EXPECT_EQ(confirm(family.repeated(31)),
              u"Streaming edge: '%1' (total: 101)"_s.arg(family.repeated(30)));
}

TEST_F(DictationStreamingTest, ShowsTheTentativeTextInThePillOnly)
{
    const InMemoryTextField field(memory, {}, 0);
    start();
    segment("", " abc ");
    EXPECT_EQ(state->partialTranscript(), u"abc"_s);
    EXPECT_EQ(field.text(), QString());
    segment(" abc", "de\n");
    EXPECT_EQ(state->partialTranscript(), u"abc de"_s);
    segment("", "");
    EXPECT_EQ(state->partialTranscript(), QString());
    segment("abc", "rest");
    stop("abc.");
    EXPECT_EQ(state->partialTranscript(), QString());
}

TEST_F(DictationStreamingTest, NothingIsTypedAfterTheStop)
{
    const InMemoryTextField field(memory, {}, 0);
    start();
    pass("so it");
    pass("so it");
    EXPECT_EQ(field.text(), u"so it"_s);

    // The key is released in the middle of a pass, which confirms more.
    FakeWhisper::Hold hold;
    FakeWhisper::enqueueSegments({"so it goes on"});
    FakeWhisper::enqueueSegments({"So it goes."});
    speakAndWait(passInterval);
    ASSERT_TRUE(hold.waitUntilHeld());
    speakAndWait(passInterval);
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::transcribing));
    segment("so it goes on and on", "more");
    hold.letOneThrough();
    ASSERT_TRUE(waitUntil([] { return FakeWhisper::calls().size() == 4; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(field.text(), u"so it"_s);
    EXPECT_EQ(state->partialTranscript(), u"so it"_s);

    hold.release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    EXPECT_EQ(field.text(), u"So it goes."_s);
    segment("so it goes on and on");
    EXPECT_EQ(field.text(), u"So it goes."_s);
    // The chunk that waited for the pass was dropped.
    EXPECT_EQ(FakeWhisper::calls().size(), 4U);

    // The next recording knows nothing of this one.
    start();
    segment("new");
    EXPECT_EQ(messages().last(), u"Streaming start: 'new' (3 chars)"_s);
}

TEST_F(DictationStreamingTest, ALateSegmentOfAnEarlierRecordingIsIgnored)
{
    const InMemoryTextField field(memory, {}, 0);
    start();
    pass("the old");
    FakeWhisper::Hold hold;
    FakeWhisper::enqueueSegments({"the old"});
    speakAndWait(passInterval);
    ASSERT_TRUE(hold.waitUntilHeld());
    // The model goes while it listens, and the next recording loads one anew.
    state->whisperManager().unloadModel();
    release();
    ASSERT_TRUE(waitForState(TranscriptionState::idle));
    start();
    segment("new");

    hold.release();
    ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
    QCoreApplication::processEvents();
    EXPECT_EQ(field.text(), u"new"_s);
    EXPECT_EQ(state->partialTranscript(), u"new"_s);
    stop("New.");
    EXPECT_EQ(field.text(), u"New."_s);
}

TEST_F(DictationStreamingTest, EndsIdleWhateverFails)
{
    const InMemoryTextField field(memory, {}, 0);
    launchWithModel();
    state->setEnableRealtimeStreaming(true);
    memory.captureError = PlatformError{5, u"No such device"_s};
    press();
    ASSERT_TRUE(waitForMessage(u"Failed to start recording: No such device"_s));
    release();
    EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
    memory.audioEngine->startError.reset();

    // Nothing was heard: what was typed is taken back.
    start();
    segment("a b");
    stop("");
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(messages().last(), u"Empty final transcription"_s);
    EXPECT_TRUE(state->transcriptionHistory().isEmpty());

    // The recogniser fails, or the model goes in the middle and chunks are dropped: nothing better
    // is to be had than what was typed.
    for (const bool unloads : {false, true}) {
        SCOPED_TRACE(unloads);
        const InMemoryTextField newField(memory, {}, 0);
        FakeWhisper::reset();
        start();
        EXPECT_EQ(messages().last(), u"Started recording with realtime streaming"_s);
        pass("a b");
        pass("a b");
        if (unloads)
            state->whisperManager().unloadModel();
        else
            FakeWhisper::enqueue({.code = 3});
        speakAndWait(100);
        EXPECT_EQ(newField.text(), u"a b"_s);
        release();
        ASSERT_TRUE(waitForState(TranscriptionState::idle));
        EXPECT_EQ(newField.text(), u"a b"_s);
        EXPECT_EQ(messages().last(), u"Empty final transcription"_s);
        ASSERT_EQ(state->transcriptionHistory().size(), unloads ? 2 : 1);
        EXPECT_EQ(state->transcriptionHistory().first().text, u"a b"_s);
        EXPECT_EQ(state->lastTranscript(), u"a b"_s);
    }
}

TEST_F(DictationStreamingTest, WhatStandsIsWhatWasCounted)
{
    launchWithModel();
    state->setPlaySounds(false);
    const QString before = u"før 🙂 "_s;
    const QString after = u" efter"_s;
    for (unsigned seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE(seed);
        // The record of all that was heard would be copied over and over.
        FakeWhisper::reset();
        RandomSpeech speech(seed);
        const InMemoryTextField field(memory, before + after, Graphemes::count(before));
        state->setEnableTextCorrection(speech.below(2) == 0);
        start();
        QString standing;
        for (int passes = 1 + speech.below(9); passes > 0; --passes) {
            pass(speech.nextPass());
            const QString text = field.text();
            ASSERT_TRUE(text.startsWith(before) && text.endsWith(after));
            const QString now = text.mid(before.size(), text.size() - before.size() - after.size());
            EXPECT_TRUE(now.startsWith(standing)) << now.toStdString();
            EXPECT_EQ(Graphemes::count(now), counted());
            standing = now;
        }
        // Confirmed words never change.
        EXPECT_TRUE(messages().filter(u"Streaming edge"_s).isEmpty());
        const QByteArray heard = speech.finalText();
        if (speech.below(3) == 0)
            stop(heard);
        else
            stopDuringPass(speech, heard, field);
        const QString said = QString::fromUtf8(heard).trimmed();
        const QString final = before
            + (state->enableTextCorrection() ? TextCorrector::correct(said, u"en"_s) : said)
            + after;
        EXPECT_EQ(field.text(), final);
        QCoreApplication::processEvents();
        EXPECT_EQ(field.text(), final);
        if (HasFailure())
            break;
    }
}

} // namespace
