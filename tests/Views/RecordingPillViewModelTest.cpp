#include "Views/Pill/RecordingPillViewModel.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class RecordingPillViewModelTest : public ::testing::Test
{
protected:
    InMemoryPlatform memory;
    AppState appState{memory.platform};
    RecordingPillViewModel model{appState};
};

TEST_F(RecordingPillViewModelTest, RaisesTheBarsWithTheLevelByTheirWeights)
{
    const struct
    {
        float level;
        std::vector<double> heights;
    } cases[] = {
        {0, {6, 6, 6, 6, 6}},
        {0.5F, {10.9, 13.0, 11.95, 12.65, 11.25}},
        {1, {15.8, 20, 17.9, 19.3, 16.5}},
        {3, {20, 20, 20, 20, 20}},
        {-1, {6, 6, 6, 6, 6}},
    };
    for (const auto &c : cases) {
        appState.setAudioLevel(c.level);
        EXPECT_THAT(model.barHeights(),
                    ::testing::Pointwise(::testing::DoubleNear(1e-4), c.heights))
            << c.level;
    }
}

TEST_F(RecordingPillViewModelTest, ShowsWholeMinutesAndSecondsAndTellsOfThemOnceASecond)
{
    const struct
    {
        double seconds;
        const char *text;
    } cases[] = {{0, "00:00"},    {59.9, "00:59"}, {60, "01:00"},
                 {3599, "59:59"}, {3600, "60:00"}, {6000, "100:00"}};
    for (const auto &c : cases)
        EXPECT_EQ(RecordingPillViewModel::formatDuration(c.seconds).toStdString(), c.text);

    QSignalSpy changes(&model, &RecordingPillViewModel::clockTextChanged);
    for (int tick = 1; tick <= 41; ++tick)
        appState.setRecordingDuration(tick * 0.05);
    EXPECT_EQ(changes.count(), 2);
    EXPECT_EQ(model.clockText(), u"00:02");
}

TEST_F(RecordingPillViewModelTest, RevealsNewCharactersOneByOne)
{
    appState.setPartialTranscript(u"hello"_s);
    ASSERT_TRUE(waitUntil([this] { return model.displayedText() == u"hello"; }));

    QStringList shown;
    QObject::connect(&model, &RecordingPillViewModel::displayedTextChanged, &model,
                     [&] { shown << model.displayedText(); });
    QElapsedTimer clock;
    clock.start();
    appState.setPartialTranscript(u"hello wo\U0001F469\u200D\U0001F680d"_s);
    EXPECT_EQ(model.displayedText(), u"hello") << "nothing is shown before the event loop runs";
    ASSERT_TRUE(waitUntil([&] { return shown.size() == 5; }));
    EXPECT_GE(clock.elapsed(), 80);
    EXPECT_EQ(shown,
              QStringList({u"hello "_s, u"hello w"_s, u"hello wo"_s,
                           u"hello wo\U0001F469\u200D\U0001F680"_s,
                           u"hello wo\U0001F469\u200D\U0001F680d"_s}));
    EXPECT_EQ(model.revealDuration(), 100);
}

TEST_F(RecordingPillViewModelTest, ReplacesARevisedOrShorterTextAtOnce)
{
    appState.setPartialTranscript(u"hello world"_s);
    ASSERT_TRUE(waitUntil([this] { return model.displayedText() == u"hello world"; }));
    for (const char16_t *text : {u"hello word", u"Hello word!", u""}) {
        appState.setPartialTranscript(QString::fromUtf16(text));
        EXPECT_EQ(model.displayedText(), QString::fromUtf16(text));
        EXPECT_EQ(model.revealDuration(), 150);
    }
}

TEST_F(RecordingPillViewModelTest, ALaterChangeDoesNotTakeBackScheduledCharacters)
{
    appState.setPartialTranscript(u"ab"_s);
    // "ab" is still to come when the text starts anew: its characters are appended all the same.
    appState.setPartialTranscript(u"abc"_s);
    ASSERT_TRUE(waitUntil([this] { return model.displayedText().size() == 5; }));
    EXPECT_EQ(model.displayedText().count(u'a'), 2);
}

TEST_F(RecordingPillViewModelTest, HasTheStreamingLineAndItsCursorOnlyWhereTheyBelong)
{
    using State = TranscriptionState;
    const struct
    {
        bool streaming;
        State state;
        const char *text;
        bool line;
        bool cursor;
    } cases[] = {
        {false, State::listening, "words", false, false},
        {false, State::transcribing, "", false, false},
        {true, State::idle, "", false, false},
        {true, State::listening, "", true, true},
        {true, State::listening, "words", true, true},
        {true, State::transcribing, "", true, false},
        {true, State::transcribing, "words", true, true},
        {true, State::inserting, "", false, false},
    };
    for (const auto &c : cases) {
        appState.setEnableRealtimeStreaming(c.streaming);
        appState.setTranscriptionState(c.state);
        appState.setPartialTranscript(QString::fromUtf8(c.text));
        ASSERT_TRUE(waitUntil([&] { return model.displayedText() == QString::fromUtf8(c.text); }));
        EXPECT_EQ(model.hasStreamingLine(), c.line) << caseName(c.state).toStdString() << c.text;
        EXPECT_EQ(model.hasCursor(), c.cursor) << caseName(c.state).toStdString() << c.text;
    }
}

TEST_F(RecordingPillViewModelTest, BlinksOnlyOnTheScreen)
{
    QSignalSpy blinks(&model, &RecordingPillViewModel::cursorVisibleChanged);
    model.setOnScreen(true);
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(waitUntil([&] { return blinks.count() == 2; }));
    EXPECT_GE(clock.elapsed(), 900) << "half a second each way";
    EXPECT_TRUE(model.cursorVisible());
    model.setOnScreen(false);
    EXPECT_FALSE(blinks.wait(700));
}

} // namespace
} // namespace Velloro
