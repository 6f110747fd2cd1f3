#include "Support/RandomSpeech.h"
#include "Support/WhisperContextTestBase.h"

#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> largestAllocation = 0;

} // namespace

void *operator new(size_t size)
{
    if (size > largestAllocation)
        largestAllocation = size;
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, size_t) noexcept
{
    std::free(memory);
}

namespace Velloro {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr size_t passInterval = 24'000;

class WhisperStreamingTest : public WhisperContextTestBase
{
protected:
    ~WhisperStreamingTest() override
    {
        // Deliveries on their way reach `segments` as long as it is there.
        FakeWhisper::reset();
        context.reset();
        settle();
        QCoreApplication::processEvents();
    }

    void start()
    {
        await(context->startStreaming([this](const TranscriptionSegment &segment) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            segments.push_back(segment);
        }));
    }

    void loadAndStart()
    {
        load();
        start();
        takeLines();
    }

    void feed(size_t count, float value = 0.0F)
    {
        await(context->addAudioSamples(std::vector<float>(count, value)));
    }

    /// Runs a pass that hears these segments.
    void hear(const QList<QByteArray> &texts)
    {
        FakeWhisper::enqueueSegments(texts);
        feed(passInterval);
    }

    /// Waits until the executor has nothing to do, without running the event loop: a finished
    /// pass has built its segment, and its delivery is still to come.
    static void settle()
    {
        ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
    }

    /// The sample counts of the passes so far.
    static std::vector<size_t> passes()
    {
        std::vector<size_t> sizes;
        for (const FakeWhisper::Call &call : FakeWhisper::calls())
            sizes.push_back(call.samples.size());
        return sizes;
    }

    std::vector<TranscriptionSegment> segments;
};

TEST_F(WhisperStreamingTest, ConfirmsWhatTwoPassesAgreeOn)
{
    load();
    takeLines();
    start();
    hear({" Hello world", " this"});
    hear({" hello world, this is"});
    hear({" Hello world, this is a test"});
    await(context->stopStreaming());

    const auto segment = [](const char *text, const char *uncommitted, double endTime) {
        return TranscriptionSegment{QString::fromUtf8(text), QString::fromUtf8(uncommitted), 0,
                                    endTime, true};
    };
    EXPECT_THAT(segments, ElementsAre(segment("", "Hello world this", 1.5),
                                      segment("hello", "world, this is", 3),
                                      segment("hello world, this is", "a test", 4.5)));
    EXPECT_THAT(
        takeLines(),
        ElementsAre(line("Streaming started with LocalAgreement"),
                    line("Streaming: confirmed='...' uncommitted='Hello world this...'"),
                    line("Streaming: confirmed='hello...' uncommitted='world, this is...'"),
                    line("Streaming: confirmed='hello world, this is...' uncommitted='a test...'"),
                    line("Streaming stopped")));

    const auto calls = FakeWhisper::calls();
    ASSERT_THAT(calls, SizeIs(3));
    EXPECT_EQ(calls[1].prompt, std::nullopt);
    EXPECT_EQ(calls[2].prompt, QByteArray("hello"));
    for (const FakeWhisper::Call &call : calls) {
        EXPECT_TRUE(call.greedy);
        EXPECT_FALSE(call.noContext);
        EXPECT_TRUE(call.quiet);
        EXPECT_TRUE(call.othersUntouched);
        EXPECT_TRUE(call.timingsReset);
        EXPECT_EQ(call.threads, 2);
        EXPECT_EQ(call.language, "en");
    }
}

TEST_F(WhisperStreamingTest, AgreesWordByWord)
{
    struct Case
    {
        const char *what;
        std::vector<QList<std::optional<QByteArray>>> passes;
        const char *text;
        const char *uncommitted;
    };
    const std::vector<Case> cases = {
        {"case differs, also beyond ASCII", {{"The ÉTÉ"}, {"the été"}}, "the été", ""},
        {"comma differs", {{"world"}, {"world,"}}, "", "world,"},
        {"accent differs", {{"cafe"}, {"café"}}, "", "café"},
        {"nothing after a difference", {{"a b c d"}, {"a x c d"}}, "a", "x c d"},
        {"first form stays", {{"Go"}, {"go now"}, {"GO NOW please"}}, "go NOW", "please"},
        {"fewer words than confirmed", {{"a b c"}, {"a b c"}, {"z"}}, "a b c", ""},
        {"confirmed words are not compared with", {{"a"}, {"a"}, {"z b"}, {"z b"}}, "a b", ""},
        {"null segments", {{std::nullopt}, {std::nullopt, " a", std::nullopt, "b "}}, "", "a b"},
        {"blanks of all kinds and tabs",
         {{"\u00a0a\u00a0b\tc\u2003d\u3000e  f\u202f"}},
         "",
         "a b c d e f"},
        {"a line break is part of a word", {{"\n a\nb \n"}}, "", "a\nb"},
        {"a segment ends a word", {{"a", "b"}, {"a b"}}, "a b", ""},
    };
    load();
    for (const Case &item : cases) {
        SCOPED_TRACE(item.what);
        start();
        for (const auto &pass : item.passes) {
            FakeWhisper::enqueue({.segments = pass});
            feed(passInterval);
        }
        ASSERT_FALSE(segments.empty());
        EXPECT_EQ(segments.back().text, QString::fromUtf8(item.text));
        EXPECT_EQ(segments.back().uncommitted, QString::fromUtf8(item.uncommitted));
        EXPECT_EQ(segments.back().isPartial, *item.uncommitted != '\0');
    }
}

TEST_F(WhisperStreamingTest, ConfirmedWordsStay)
{
    load();
    qsizetype confirmed = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        RandomSpeech speech(seed);
        start();
        segments.clear();
        // Long enough for the window to lose its beginning.
        for (int pass = 0; pass < 12; ++pass)
            hear({speech.nextPass()});
        ASSERT_THAT(segments, SizeIs(12));
        QStringList before;
        for (const TranscriptionSegment &segment : segments) {
            const QStringList words = segment.text.split(u' ', Qt::SkipEmptyParts);
            EXPECT_EQ(words.mid(0, before.size()), before);
            before = words;
        }
        confirmed += before.size();
    }
    EXPECT_GT(confirmed, 40);
}

TEST_F(WhisperStreamingTest, LogsPrefixesAndNothingForSilence)
{
    loadAndStart();
    const QByteArray forty = "abcdefghijabcdefghijabcdefghijabcdefghij";
    hear({});
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_THAT(segments, ElementsAre(TranscriptionSegment{{}, {}, 0, 1.5, false}));
    hear({forty});
    hear({forty + " 12345678901234567890123"});
    EXPECT_EQ(takeLines().back(),
              line("Streaming: confirmed='abcdefghijabcdefghijabcdefghij...' "
                   "uncommitted='12345678901234567890...'"));

    // Whole user-perceived characters.
    const QByteArray family = "👩‍👩‍👧";
    const QByteArray thumb = "👍🏽";
    const QByteArray accented = "o\u0323\u0308";
    start();
    takeLines();
    const QByteArray confirmed = family.repeated(25) + accented.repeated(10);
    hear({confirmed});
    hear({confirmed + ' ' + accented.repeated(15) + thumb.repeated(10)});
    EXPECT_EQ(takeLines().back(),
              line(QByteArray("Streaming: confirmed='" + family.repeated(25) + accented.repeated(5)
                              + "...' uncommitted='" + accented.repeated(15) + thumb.repeated(5)
                              + "...'")));
}

TEST_F(WhisperStreamingTest, APassComesWithEvery24000NewSamples)
{
    loadAndStart();
    feed(8000, 0.1F);
    feed(8000, 0.2F);
    EXPECT_THAT(passes(), IsEmpty());
    feed(8000, 0.3F);
    EXPECT_THAT(passes(), ElementsAre(24'000));
    feed(23'999);
    EXPECT_THAT(passes(), SizeIs(1));
    feed(1);
    EXPECT_THAT(passes(), ElementsAre(24'000, 48'000));
    const std::vector<float> heard = FakeWhisper::calls().front().samples;
    EXPECT_EQ(heard.at(7999), 0.1F);
    EXPECT_EQ(heard.at(8000), 0.2F);
    EXPECT_EQ(heard.at(23'999), 0.3F);
}

TEST_F(WhisperStreamingTest, AFailedPassChangesNothingAndIsRepeated)
{
    loadAndStart();
    hear({"a"});
    FakeWhisper::enqueue({.segments = {"junk"}, .code = 3});
    takeLines();
    feed(passInterval);
    EXPECT_THAT(takeLines(), ElementsAre(line("Streaming transcription failed with code 3")));
    EXPECT_THAT(segments, SizeIs(1));
    FakeWhisper::enqueueSegments({"a b"});
    feed(10);
    EXPECT_THAT(passes(), ElementsAre(24'000, 48'000, 48'010));
    EXPECT_EQ(segments.back().text, u"a");
}

TEST_F(WhisperStreamingTest, TheWindowHoldsFifteenSeconds)
{
    loadAndStart();
    // The trim happens, although the second pass fails: what was processed moves with the window,
    // or to its front if it is gone, so that a new pass is due at once.
    for (const auto &[processed, added] :
         {std::pair<size_t, size_t>{24'000, 244'000}, {220'000, 30'000}}) {
        SCOPED_TRACE(processed);
        FakeWhisper::reset();
        segments.clear();
        start();
        feed(processed, 0.1F);
        FakeWhisper::enqueue({.code = 1});
        feed(added, 0.2F);
        FakeWhisper::enqueueSegments({"a"});
        feed(10, 0.3F);

        ASSERT_THAT(passes(), ElementsAre(processed, 240'000, 240'000));
        const std::vector<float> failed = FakeWhisper::calls()[1].samples;
        EXPECT_EQ(std::count(failed.begin(), failed.end(), 0.2F), std::min<size_t>(added, 240'000));
        EXPECT_EQ(failed.back(), 0.2F);
        EXPECT_EQ(FakeWhisper::calls()[2].samples.back(), 0.3F);
        ASSERT_THAT(segments, SizeIs(2));
        const double total = static_cast<double>(processed + added + 10);
        EXPECT_DOUBLE_EQ(segments.back().startTime, (total - 240'000) / 16'000);
        EXPECT_DOUBLE_EQ(segments.back().endTime, total / 16'000);
    }
    // Words stay when the audio before them goes, and positions do not move.
    FakeWhisper::enqueueSegments({"a"});
    feed(passInterval);
    EXPECT_EQ(segments.back().text, u"a");

    // The offset lives until the next start.
    start();
    feed(passInterval);
    EXPECT_EQ(segments.back().startTime, 0);
}

TEST_F(WhisperStreamingTest, ThePromptJoinsConfirmedTextAndDictionary)
{
    loadAndStart();
    await(context->setCustomDictionary({u"Kubernetes"_qs, u"Grafana"_qs}));
    hear({"so the meeting"});
    hear({"so the meeting"});
    hear({});
    await(context->setCustomDictionary({}));
    hear({});
    const auto calls = FakeWhisper::calls();
    EXPECT_EQ(calls.at(1).prompt, QByteArray("Kubernetes, Grafana"));
    EXPECT_EQ(calls.at(2).prompt, QByteArray("so the meeting. Kubernetes, Grafana"));
    EXPECT_EQ(calls.at(3).prompt, QByteArray("so the meeting"));
}

TEST_F(WhisperStreamingTest, NothingHappensWithoutAModelOrOutsideStreaming)
{
    start();
    takeLines();
    feed(passInterval);
    EXPECT_THAT(takeLines(), IsEmpty());

    loadAndStart();
    await(context->stopStreaming());
    feed(passInterval);
    start();
    feed(8000);
    await(context->unloadModel());
    load();
    feed(passInterval);
    EXPECT_THAT(passes(), IsEmpty());
    EXPECT_THAT(segments, IsEmpty());
}

TEST_F(WhisperStreamingTest, AStopDoesNotStopADeliveryOnItsWay)
{
    loadAndStart();
    const QFuture<void> fed = context->addAudioSamples(std::vector<float>(passInterval));
    settle();
    const QFuture<void> stopped = context->stopStreaming();
    settle();
    EXPECT_TRUE(stopped.isFinished());
    EXPECT_FALSE(fed.isFinished());
    EXPECT_THAT(segments, IsEmpty());

    await(fed);
    EXPECT_THAT(segments, SizeIs(1));
    // The bookkeeping after the delivery finds the emptied window.
    start();
    feed(passInterval - 1);
    EXPECT_THAT(passes(), SizeIs(1));
    feed(1);
    EXPECT_THAT(passes(), SizeIs(2));
}

TEST_F(WhisperStreamingTest, AnAppendDuringADeliveryStartsTheNextPass)
{
    loadAndStart();
    FakeWhisper::enqueueSegments({"one"});
    FakeWhisper::enqueueSegments({"one two"});
    const QFuture<void> first = context->addAudioSamples(std::vector<float>(passInterval));
    settle();
    const QFuture<void> second = context->addAudioSamples(std::vector<float>(100));
    settle();
    EXPECT_THAT(passes(), ElementsAre(24'000, 24'100));
    EXPECT_FALSE(first.isFinished());

    await(second);
    EXPECT_TRUE(first.isFinished());
    EXPECT_THAT(segments, ElementsAre(Field(&TranscriptionSegment::uncommitted, u"one"),
                                      Field(&TranscriptionSegment::uncommitted, u"two")));
    feed(passInterval - 1);
    EXPECT_THAT(passes(), SizeIs(2));
}

TEST_F(WhisperStreamingTest, ASecondStartReplacesTheCallback)
{
    loadAndStart();
    hear({"a"});
    int others = 0;
    await(context->startStreaming([&others](const TranscriptionSegment &segment) {
        ++others;
        EXPECT_EQ(segment.text, QString());
    }));
    hear({"a"});
    EXPECT_EQ(others, 1);
    EXPECT_THAT(segments, SizeIs(1));
}

TEST_F(WhisperStreamingTest, ABacklogBecomesOnePass)
{
    loadAndStart();
    FakeWhisper::Hold hold;
    const QFuture<void> first = context->addAudioSamples(std::vector<float>(passInterval));
    ASSERT_TRUE(hold.waitUntilHeld());
    QFuture<void> last;
    for (int chunk = 0; chunk < 10; ++chunk)
        last = context->addAudioSamples(std::vector<float>(8000));
    hold.release();
    await(last);
    EXPECT_TRUE(first.isFinished());
    EXPECT_THAT(passes(), ElementsAre(24'000, 104'000));
}

TEST_F(WhisperStreamingTest, ALongBacklogKeepsOnlyWhatAPassHears)
{
    loadAndStart();
    FakeWhisper::Hold hold;
    context->addAudioSamples(std::vector<float>(passInterval));
    ASSERT_TRUE(hold.waitUntilHeld());
    QFuture<void> last;
    largestAllocation = 0;
    for (int chunk = 1; chunk <= 1000; ++chunk)
        last = context->addAudioSamples(std::vector<float>(8000, static_cast<float>(chunk)));
    hold.release();
    await(last);
    EXPECT_THAT(passes(), ElementsAre(24'000, 240'000));
    EXPECT_EQ(FakeWhisper::calls().back().samples.front(), 971.0F);
    EXPECT_EQ(FakeWhisper::calls().back().samples.back(), 1000.0F);
    EXPECT_DOUBLE_EQ(segments.back().startTime, (24'000 + 8'000'000 - 240'000) / 16'000.0);
    EXPECT_DOUBLE_EQ(segments.back().endTime, (24'000 + 8'000'000) / 16'000.0);
    // Never more of it than two windows and what a vector takes in advance.
    EXPECT_LE(largestAllocation, 4 * 240'000 * sizeof(float));
}

TEST_F(WhisperStreamingTest, AStopDropsTheBacklog)
{
    loadAndStart();
    FakeWhisper::Hold hold;
    const QFuture<void> running = context->addAudioSamples(std::vector<float>(passInterval));
    ASSERT_TRUE(hold.waitUntilHeld());
    const QFuture<void> waiting = context->addAudioSamples(std::vector<float>(passInterval));
    context->setLanguage(u"de"_qs);
    const QFuture<void> later = context->addAudioSamples(std::vector<float>(passInterval));
    const QFuture<void> stopped = context->stopStreaming();
    const auto batch = context->transcribe(std::vector<float>(5));
    hold.release();

    EXPECT_EQ(await(batch), u"Hello world.");
    await(running);
    EXPECT_TRUE(waiting.isFinished() && later.isFinished() && stopped.isFinished());
    EXPECT_THAT(passes(), ElementsAre(24'000, 5));
    EXPECT_THAT(segments, SizeIs(1));
}

TEST_F(WhisperStreamingTest, ABacklogKeepsItsPlaceAmongOtherCalls)
{
    loadAndStart();
    FakeWhisper::Hold hold;
    context->addAudioSamples(std::vector<float>(passInterval));
    ASSERT_TRUE(hold.waitUntilHeld());
    context->addAudioSamples(std::vector<float>(passInterval));
    context->setLanguage(u"de"_qs);
    const QFuture<void> last = context->addAudioSamples(std::vector<float>(passInterval));
    hold.release();
    await(last);
    const auto calls = FakeWhisper::calls();
    ASSERT_THAT(passes(), ElementsAre(24'000, 48'000, 72'000));
    EXPECT_EQ(calls[1].language, "en");
    EXPECT_EQ(calls[2].language, "de");
}

TEST_F(WhisperStreamingTest, AContextMayGoWhileASegmentIsDelivered)
{
    loadAndStart();
    const QFuture<void> fed = context->addAudioSamples(std::vector<float>(passInterval));
    settle();
    context.reset();
    await(fed);
    EXPECT_THAT(segments, SizeIs(1));
    settle();
    EXPECT_EQ(FakeWhisper::liveContexts(), 0);
}

TEST_F(WhisperStreamingTest, TheCallbackMayLetTheContextGo)
{
    load();
    await(context->startStreaming([this](const TranscriptionSegment &) { context.reset(); }));
    feed(passInterval);
    EXPECT_EQ(context, nullptr);
}

} // namespace
} // namespace Velloro
