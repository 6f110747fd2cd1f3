#include "Support/WhisperContextTestBase.h"

#include "Base/StringLiterals.h"

#include <QCoreApplication>
#include <QThread>

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

    void feed(size_t count) { await(context->addAudioSamples(std::vector<float>(count))); }

    /// Runs a pass that hears these segments.
    void hear(const QList<QByteArray> &texts)
    {
        FakeWhisper::enqueueSegments(texts);
        feed(passInterval);
    }

    /// Waits until the executor has nothing to do, without running the event loop: a finished
    /// pass has built its segment, and its delivery is still to come.
    static void settle() { ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20))); }

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
    FakeWhisper::enqueue({.segments = {std::nullopt, " Hello world, this is", " a test "}});
    feed(passInterval);
    await(context->stopStreaming());

    const auto segment = [](const char *text, const char *uncommitted, double endTime) {
        return TranscriptionSegment{QString::fromUtf8(text), QString::fromUtf8(uncommitted), 0,
                                    endTime, true};
    };
    EXPECT_THAT(segments,
                ElementsAre(segment("", "Hello world this", 1.5),
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

TEST_F(WhisperStreamingTest, ThePromptJoinsConfirmedTextAndDictionary)
{
    loadAndStart();
    await(context->setCustomDictionary({u"Kubernetes"_s, u"Grafana"_s}));
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
    EXPECT_THAT(segments,
                ElementsAre(Field(&TranscriptionSegment::uncommitted, u"one"),
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
    for (int chunk = 1; chunk <= 1000; ++chunk)
        last = context->addAudioSamples(std::vector<float>(8000, static_cast<float>(chunk)));
    hold.release();
    await(last);
    EXPECT_THAT(passes(), ElementsAre(24'000, 240'000));
    EXPECT_EQ(FakeWhisper::calls().back().samples.front(), 971.0F);
    EXPECT_EQ(FakeWhisper::calls().back().samples.back(), 1000.0F);
    EXPECT_DOUBLE_EQ(segments.back().startTime, (24'000 + 8'000'000 - 240'000) / 16'000.0);
    EXPECT_DOUBLE_EQ(segments.back().endTime, (24'000 + 8'000'000) / 16'000.0);
    // The recording time lives until the next start.
    start();
    feed(passInterval);
    EXPECT_EQ(segments.back().startTime, 0);
}

TEST_F(WhisperStreamingTest, AStopDropsTheBacklog)
{
    loadAndStart();
    FakeWhisper::Hold hold;
    const QFuture<void> running = context->addAudioSamples(std::vector<float>(passInterval));
    ASSERT_TRUE(hold.waitUntilHeld());
    const QFuture<void> waiting = context->addAudioSamples(std::vector<float>(passInterval));
    context->setLanguage(u"de"_s);
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
    context->setLanguage(u"de"_s);
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
