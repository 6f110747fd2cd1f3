#include "Managers/AudioCaptureManager.h"

#include "Base/StringLiterals.h"
#include "Managers/AudioProcessing.h"
#include "Managers/SampleStore.h"
#include "Support/InMemoryAudioEngine.h"
#include "Support/InMemoryCaptureAuthorization.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QCoroTimer>
#include <QThread>
#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>
#include <limits>
#include <new>
#include <numeric>
#include <thread>

using namespace Velloro;
using ::testing::ElementsAre;
using ::testing::FloatEq;
using ::testing::FloatNear;
using ::testing::IsEmpty;

namespace {

thread_local size_t allocations = 0;

} // namespace

// Counted, thread by thread.
void *operator new(size_t size)
{
    ++allocations;
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

namespace {

using Samples = std::vector<float>;

Samples ramp(size_t count, float first = 0)
{
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

Samples resampled(const Samples &input, double ratio)
{
    Samples output{99, 99};
    AudioProcessing::resampleChunk(input, ratio, output);
    return output;
}

class AudioCaptureManagerTest : public ::testing::Test
{
protected:
    AudioCaptureManagerTest()
    {
        platform.makeAudioEngine = [this] {
            ++enginesMade;
            return std::exchange(madeEngine, nullptr);
        };
        auto made = std::make_unique<InMemoryCaptureAuthorization>();
        authorization = made.get();
        platform.captureAuthorization = std::move(made);
    }

    /// Delivers that many buffers of a ramp that goes on from call to call, in mono at 16 kHz, and
    /// returns how often this thread allocated meanwhile.
    size_t deliverRamp(size_t buffers)
    {
        Samples samples;
        const float *channel = nullptr;
        size_t allocated = 0;
        for (size_t i = 0; i < buffers; ++i) {
            // What a float counts exactly.
            samples = ramp(4096, static_cast<float>(m_rampBuffers++ % 4000 * 4096));
            channel = samples.data();
            const size_t before = allocations;
            engine.deliver(AudioBuffer{{&channel, 1}, 4096, {16000.0, 1}});
            allocated += allocations - before;
        }
        return allocated;
    }

    template <typename Signal>
    void count(Signal signal, int &counter)
    {
        QObject::connect(&manager, signal, &manager, [&counter] { ++counter; });
    }

    // The one that the manager gets at its first recording.
    std::unique_ptr<InMemoryAudioEngine> madeEngine = std::make_unique<InMemoryAudioEngine>();
    InMemoryAudioEngine &engine = *madeEngine;
    int enginesMade = 0;
    InMemoryCaptureAuthorization *authorization = nullptr;
    Platform platform;
    LogRecorder log;
    AudioCaptureManager manager{platform};

private:
    size_t m_rampBuffers = 0;
};

} // namespace

TEST(AudioProcessingTest, MixesDownInChannelOrder)
{
    // Added in order, the last channel is lost in the first; in another order it would not be.
    const Samples a{0.5F, 1.0F, 1e8F};
    const Samples b{-0.5F, 2.0F, -1e8F};
    const Samples c{0.75F, 6.0F, 3.0F};
    const std::vector<const float *> channels{a.data(), b.data(), c.data()};
    Samples mono;
    AudioProcessing::mixDown({channels, 3, {}}, mono);
    EXPECT_THAT(mono, ElementsAre(0.25F, 3.0F, 1.0F));

    AudioProcessing::mixDown({std::span(channels).first(2), 1, {}}, mono);
    EXPECT_THAT(mono, ElementsAre(0.0F));
    AudioProcessing::mixDown({std::span(channels).first(1), 3, {}}, mono);
    EXPECT_EQ(mono, a);
}

TEST(AudioProcessingTest, ResamplesByLinearInterpolation)
{
    EXPECT_EQ(resampled({1, 2, 3}, 1.0), Samples({1, 2, 3}));
    EXPECT_THAT(resampled(ramp(10), 3.0), ElementsAre(0, 3, 6));
    EXPECT_THAT(resampled({0, 10, 20, 50, 80, 90}, 1.5),
                ElementsAre(FloatEq(0), FloatEq(15), FloatEq(50), FloatEq(85)));
    // From 8 kHz: the last position has no right neighbour and copies its left one.
    EXPECT_THAT(resampled({4, 8}, 0.5), ElementsAre(4, 6, 8, 8));
    EXPECT_THAT(resampled({1, 2}, 3.0), IsEmpty());
    EXPECT_THAT(resampled({}, 3.0), IsEmpty());
    EXPECT_THAT(resampled({1, 2}, 0.0), IsEmpty());

    // Sample 1 of a device at 44.1 kHz lies at 2.75625.
    const Samples fine = resampled(ramp(4096), 44100.0 / 16000.0);
    ASSERT_EQ(fine.size(), 1486U);
    EXPECT_FLOAT_EQ(fine[1], 2.75625F);
    EXPECT_FLOAT_EQ(fine[1485], 4093.03125F);
    EXPECT_EQ(resampled(ramp(4096), 3.0).size(), 1365U);
}

TEST(AudioProcessingTest, MetersInDecibels)
{
    const struct
    {
        Samples samples;
        float decibels;
        float level;
    } cases[] = {
        {Samples(4096, 0.0F), -200.0F, 0.0F},
        {{1, -1, 1, -1}, 0.0F, 1.0F},
        {Samples(4096, 0.0316F), -30.0063F, 0.49990F},
        {{0.3F, -0.4F}, -9.0309F, 0.84948F},
        {Samples(10, 0.001F), -60.0F, 0.0F},
        {Samples(10, 4.0F), 12.0412F, 1.0F},
        {{std::numeric_limits<float>::quiet_NaN()}, -200.0F, 0.0F},
    };
    for (const auto &expected : cases) {
        const float decibels = AudioProcessing::decibels(expected.samples);
        EXPECT_NEAR(decibels, expected.decibels, 2e-3) << expected.samples[0];
        EXPECT_NEAR(AudioProcessing::normalizedLevel(decibels), expected.level, 1e-4)
            << expected.samples[0];
    }
}

TEST(SampleStoreTest, KeepsEverythingAcrossBlocks)
{
    SampleStore store;
    Samples expected;
    for (size_t i = 0; expected.size() < 2 * SampleStore::blockSize + 5; ++i) {
        const Samples piece = ramp(200'003, static_cast<float>(i));
        store.append(piece);
        expected.insert(expected.end(), piece.begin(), piece.end());
        EXPECT_EQ(store.size(), expected.size());
        if (i < 6)
            store.replenish();
    }
    Samples copied{1};
    const size_t first = SampleStore::blockSize - 2;
    store.copy(first, SampleStore::blockSize + 4, copied);
    EXPECT_TRUE(std::equal(copied.begin() + 1, copied.end(), expected.begin() + first));
    EXPECT_EQ(copied.size(), SampleStore::blockSize + 5);
    EXPECT_EQ(store.take(), expected);
}

TEST_F(AudioCaptureManagerTest, RecordsMixesResamplesAndReturnsEverything)
{
    engine.format = {48000.0, 2};
    int recordingChanges = 0;
    count(&AudioCaptureManager::isRecordingChanged, recordingChanges);

    ASSERT_TRUE(manager.startRecording());
    EXPECT_TRUE(manager.isRecording());
    EXPECT_EQ(engine.calls.mid(engine.calls.size() - 3),
              QStringList({u"inputFormat"_s, u"installTap"_s, u"start"_s}));
    EXPECT_EQ(engine.bufferSize, 4096U);
    EXPECT_EQ(engine.tapFormat, engine.format);

    engine.deliver({ramp(4096), ramp(4096, 2)});
    engine.deliver({Samples(4096, 0.5F), Samples(4096, -0.5F)});
    engine.remainder = {{8, 0, 0, 8}, {4, 0, 0, 4}};
    const Samples recording = manager.stopRecording();
    EXPECT_EQ(engine.calls.mid(engine.calls.size() - 2), QStringList({u"removeTap"_s, u"stop"_s}));

    ASSERT_EQ(recording.size(), 1365U + 1365U + 1U);
    EXPECT_EQ(recording[0], 1.0F);
    EXPECT_EQ(recording[1364], 4093.0F);
    EXPECT_EQ(recording[1365], 0.0F);
    EXPECT_EQ(recording[2730], 6.0F);
    EXPECT_FALSE(manager.isRecording());
    EXPECT_FALSE(engine.isRunning);
    EXPECT_FALSE(engine.hasTap());
    EXPECT_EQ(recordingChanges, 2);
    EXPECT_THAT(manager.stopRecording(), IsEmpty());

    const QStringList messages = log.messages(u"AudioCapture"_s);
    EXPECT_EQ(messages.first(), u"Started recording at 48000.0Hz, resampling to 16000.0Hz"_s);
    EXPECT_EQ(messages.last(), u"Stopped recording, captured 2731 samples"_s);
}

TEST_F(AudioCaptureManagerTest, HandsOffChunksOnTheAudioThreadAtTheRateOfEachStart)
{
    const struct
    {
        double rate;
        size_t buffers;
        size_t chunk;
    } cases[] = {{48000.0, 6, 8190}, {44100.0, 6, 8916}, {22050.5, 3, 8916}, {16000.0, 2, 8192}};
    for (const auto &expected : cases) {
        engine.format = {expected.rate, 1};
        std::vector<Samples> chunks;
        QThread *chunkThread = nullptr;
        ASSERT_TRUE(manager.startRecording([&](Samples chunk) {
            chunks.push_back(std::move(chunk));
            chunkThread = QThread::currentThread();
        }));
        EXPECT_EQ(log.lines().last(),
                  u"[AudioCapture] Started recording at %1Hz, resampling to 16000.0Hz"_s.arg(
                      expected.rate, 0, 'f', 1));
        QThread *audioThread = nullptr;
        std::thread audio([&] {
            audioThread = QThread::currentThread();
            for (size_t i = 1; i < expected.buffers; ++i)
                engine.deliver({ramp(4096)});
            EXPECT_THAT(chunks, IsEmpty());
            engine.deliver({ramp(4096)});
            ASSERT_EQ(chunks.size(), 1U);
            engine.deliver({ramp(4096)});
        });
        audio.join();
        ASSERT_EQ(chunks.size(), 1U);
        EXPECT_EQ(chunks[0].size(), expected.chunk);
        EXPECT_EQ(chunkThread, audioThread);

        const Samples recording = manager.stopRecording();
        EXPECT_EQ(chunks.size(), 1U) << "what is left at the stop is not a chunk";
        EXPECT_EQ(recording.size(), expected.chunk / expected.buffers * (expected.buffers + 1));
        EXPECT_TRUE(std::equal(chunks[0].begin(), chunks[0].end(), recording.begin()));
    }
}

TEST_F(AudioCaptureManagerTest, AsyncChunksArriveOnTheMainThreadInOrder)
{
    std::vector<float> begun;
    std::vector<float> ended;
    // The handler's captures must outlive its suspension.
    ASSERT_TRUE(manager.startRecordingWithAsyncStreaming(
        [&begun, &ended,
         token = std::make_shared<float>(0.5F)](Samples chunk) -> QCoro::Task<void> {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            begun.push_back(chunk[0]);
            QTimer timer;
            timer.start(1);
            co_await timer;
            ended.push_back(chunk[0] + *token);
        }));
    std::thread audio([&] {
        for (int i = 0; i < 12; ++i)
            engine.deliver({Samples(4096, static_cast<float>(i))});
    });
    audio.join();
    EXPECT_THAT(begun, IsEmpty()) << "nothing may run on the audio thread";
    EXPECT_EQ(manager.stopRecording().size(), 12U * 1365U);
    ASSERT_TRUE(waitUntil([&] { return ended.size() == 2; }));
    EXPECT_THAT(begun, ElementsAre(0.0F, 6.0F));
    EXPECT_THAT(ended, ElementsAre(0.5F, 6.5F));
}

// Past the first minute, that is past the first block of the recording.
TEST_F(AudioCaptureManagerTest, AudioThreadAllocatesNothing)
{
    engine.format = {16000.0, 1};
    Samples streamed;
    std::atomic<size_t> received = 0;
    ASSERT_TRUE(manager.startRecordingWithAsyncStreaming([&](Samples chunk) -> QCoro::Task<void> {
        EXPECT_EQ(chunk.size(), 8192U);
        streamed.insert(streamed.end(), chunk.begin(), chunk.end());
        ++received;
        co_return;
    }));
    size_t allocated = 0;
    std::atomic<bool> isDone = false;
    std::thread audio([&] {
        for (size_t chunks = 8; chunks <= 144; chunks += 8) {
            allocated += deliverRamp(16);
            while (received < chunks)
                std::this_thread::yield();
        }
        isDone = true;
    });
    EXPECT_TRUE(waitUntil([&] { return isDone.load(); }, std::chrono::seconds(60)));
    audio.join();
    EXPECT_EQ(allocated, 0U);
    EXPECT_EQ(manager.stopRecording(), streamed);
}

TEST_F(AudioCaptureManagerTest, BusyMainThreadLosesAndDoublesNothing)
{
    engine.format = {16000.0, 1};
    Samples streamed;
    ASSERT_TRUE(manager.startRecordingWithAsyncStreaming([&](Samples chunk) -> QCoro::Task<void> {
        EXPECT_GE(chunk.size(), 8000U);
        EXPECT_LE(chunk.size(), 8000U + 4096U);
        streamed.insert(streamed.end(), chunk.begin(), chunk.end());
        co_return;
    }));
    std::thread([&] { EXPECT_EQ(deliverRamp(100), 0U); }).join();
    EXPECT_THAT(streamed, IsEmpty());
    ASSERT_TRUE(waitUntil([&] { return !streamed.empty(); }));
    // What has waited follows with the next buffers, some chunks with each.
    size_t buffers = 100;
    while (streamed.size() + 8000 <= buffers * 4096) {
        const size_t former = streamed.size();
        std::thread([&] { EXPECT_EQ(deliverRamp(1), 0U); }).join();
        ++buffers;
        ASSERT_TRUE(waitUntil([&] { return streamed.size() > former; }));
    }
    EXPECT_LT(buffers, 120U);
    const Samples recording = manager.stopRecording();
    EXPECT_EQ(recording.size(), buffers * 4096);
    QCoreApplication::processEvents();
    ASSERT_LE(streamed.size(), recording.size());
    EXPECT_TRUE(std::equal(streamed.begin(), streamed.end(), recording.begin()));
}

TEST_F(AudioCaptureManagerTest, SecondStartTouchesNothing)
{
    int chunks = 0;
    ASSERT_TRUE(manager.startRecording([&](const Samples &) { ++chunks; }));
    for (int i = 0; i < 3; ++i)
        engine.deliver({Samples(4096)});
    const auto calls = engine.calls;
    ASSERT_TRUE(manager.startRecording([](const Samples &) { FAIL() << "replaced"; }));
    EXPECT_EQ(engine.calls, calls);
    for (int i = 0; i < 3; ++i)
        engine.deliver({Samples(4096)});
    EXPECT_EQ(chunks, 1);
    EXPECT_EQ(manager.stopRecording().size(), 8190U);
}

TEST_F(AudioCaptureManagerTest, LevelIsTheFirstChannelsAndReachesTheMainThread)
{
    engine.format = {48000.0, 2};
    ASSERT_TRUE(manager.startRecording());
    int changes = 0;
    count(&AudioCaptureManager::audioLevelChanged, changes);

    engine.deliver({Samples(4096, 1.0F), Samples(4096)});
    EXPECT_EQ(manager.audioLevel(), 0.0F) << "not before the main thread's turn";
    engine.deliver({Samples(4096, 0.5F), Samples(4096, -0.5F)});
    ASSERT_TRUE(waitUntil([&] { return changes > 0; }));
    EXPECT_THAT(manager.audioLevel(), FloatNear((60 - 6.0206F) / 60, 1e-4F));

    // The same again is no change, and what carries no samples is no silence either.
    changes = 0;
    engine.deliver({Samples(4096, 0.5F), Samples(4096, -0.5F)});
    engine.deliver(AudioBuffer{{}, 4096, engine.format});
    engine.deliver(InMemoryAudioEngine::Channels(2));
    manager.refresh();
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(manager.stopRecording().size(), 3U * 1365U);
    EXPECT_THAT(manager.audioLevel(), FloatNear(0.8997F, 1e-3F)) << "kept after the stop";
}

TEST_F(AudioCaptureManagerTest, LogsTheLevelOfOneBufferInFiftyOne)
{
    ASSERT_TRUE(manager.startRecording());
    for (int buffer = 0; buffer < 51 * 200; ++buffer) {
        engine.deliver({{0.5F, -0.5F}});
        manager.refresh();
    }
    const QStringList levels = log.lines().filter(u"Audio Level"_s);
    // Six standard deviations.
    EXPECT_NEAR(static_cast<double>(levels.size()), 200, 84);
    EXPECT_EQ(levels.value(0), u"[AudioCapture] Audio Level: -6.02 dB"_s);
}

TEST_F(AudioCaptureManagerTest, DurationRunsAndEndsAtZero)
{
    int changes = 0;
    count(&AudioCaptureManager::recordingDurationChanged, changes);
    ASSERT_TRUE(manager.startRecording());
    EXPECT_EQ(manager.recordingDuration(), 0.0);
    // Ten times a second: even where everything is late, once before this runs out.
    const auto waitForATick = [] {
        bool isLater = false;
        QTimer::singleShot(std::chrono::milliseconds(200), Qt::PreciseTimer,
                           [&] { isLater = true; });
        ASSERT_TRUE(waitUntil([&] { return isLater; }));
    };
    waitForATick();
    EXPECT_GE(changes, 1);
    EXPECT_GE(manager.recordingDuration(), 0.09);
    manager.stopRecording();
    EXPECT_EQ(manager.recordingDuration(), 0.0);
    waitForATick();
    EXPECT_EQ(manager.recordingDuration(), 0.0);
}

TEST_F(AudioCaptureManagerTest, FailedStartLeavesItIdleAndTheNextOneWorks)
{
    const PlatformError error{7, u"No microphone is connected"_s};
    engine.startError = error;
    const auto refused = manager.startRecording();
    ASSERT_FALSE(refused);
    EXPECT_EQ(std::get<PlatformError>(refused.error()), error);
    EXPECT_EQ(localizedDescription(refused.error()), u"No microphone is connected (code 7)"_s);
    EXPECT_FALSE(manager.isRecording());
    EXPECT_FALSE(engine.hasTap());
    EXPECT_THAT(log.lines(), IsEmpty());

    engine.startError.reset();
    ASSERT_TRUE(manager.startRecording());
    engine.deliver({Samples(4096)});
    EXPECT_EQ(manager.stopRecording().size(), 1365U);

    EXPECT_EQ(enginesMade, 1);

    // There is no second engine.
    AudioCaptureManager without(platform);
    const auto failed = without.startRecordingWithAsyncStreaming({});
    ASSERT_FALSE(failed);
    EXPECT_EQ(std::get<AudioCaptureError>(failed.error()), AudioCaptureError::engineNotInitialized);
}

TEST_F(AudioCaptureManagerTest, InterruptionKeepsWhatWasCaptured)
{
    int interruptions = 0;
    count(&AudioCaptureManager::captureInterrupted, interruptions);
    ASSERT_TRUE(manager.startRecording());
    engine.deliver({Samples(4096)});
    engine.interrupt();
    EXPECT_EQ(interruptions, 1);
    EXPECT_TRUE(manager.isRecording());
    EXPECT_EQ(manager.stopRecording().size(), 1365U);
    engine.interrupt();
    EXPECT_EQ(interruptions, 1) << "nothing was recording";
}

TEST_F(AudioCaptureManagerTest, PermissionIsThePlatforms)
{
    for (const auto status : {AuthorizationStatus::notDetermined, AuthorizationStatus::restricted,
                              AuthorizationStatus::denied, AuthorizationStatus::authorized}) {
        authorization->status = status;
        EXPECT_EQ(manager.hasPermission(), status == AuthorizationStatus::authorized);
    }
    for (const bool granted : {true, false}) {
        authorization->answersAtOnce = false;
        std::optional<bool> answer;
        manager.requestPermission().then([&](bool given) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            answer = given;
        });
        std::thread([&] { authorization->answer(granted); }).join();
        ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
        EXPECT_EQ(answer, granted);
    }
}

// For the thread sanitizer above all: buffers, stops and starts at the same time.
TEST_F(AudioCaptureManagerTest, AudioThreadMayRunIntoTheStop)
{
    ASSERT_TRUE(manager.startRecording());
    std::atomic<bool> isEnding = false;
    std::atomic<size_t> delivered = 0;
    std::thread audio([&] {
        const InMemoryAudioEngine::Channels buffer{Samples(480, 0.1F)};
        while (!isEnding)
            delivered += engine.deliver(buffer) ? 160 : 0;
    });
    size_t returned = manager.stopRecording().size();
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(manager.startRecording([](const Samples &) {}));
        const size_t enough = delivered + 8000;
        EXPECT_TRUE(waitUntil([&] { return delivered > enough; }));
        returned += manager.stopRecording().size();
    }
    isEnding = true;
    audio.join();
    EXPECT_EQ(returned, delivered.load());
}
