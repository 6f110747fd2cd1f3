#include "Base/StringLiterals.h"
#include "Platform/Linux/Sound/BufferAssembler.h"
#include "Platform/Linux/Sound/PulseAudioEngine.h"
#include "Platform/Linux/Sound/PulseCaptureAuthorization.h"
#include "Platform/Linux/Sound/PulseSystemSounds.h"
#include "Support/PulseServer.h"
#include "Support/WaitUntil.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <mutex>
#include <random>
#include <unistd.h>

using namespace Velloro;
using namespace std::chrono_literals;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr uint32_t bufferSize = 4096;

/// Milliseconds: far more than anything here takes unless it waits without a bound.
constexpr qint64 hangGuard = 10'000;

/// A signal in which every frame and every channel can be told from its neighbours, exact in 32-bit
/// floats.
float signalAt(uint64_t frame, uint32_t channel)
{
    constexpr uint64_t period = 1 << 22;
    return static_cast<float>((frame + channel * 100'003ULL) % period + 1) / float(1 << 23);
}

/// The frame at which the first channel first has that value.
uint64_t frameOf(float value)
{
    return static_cast<uint64_t>(value * float(1 << 23)) - 1;
}

std::vector<float> interleavedSignal(uint64_t firstFrame, size_t frames, uint32_t channels)
{
    std::vector<float> samples;
    samples.reserve(frames * channels);
    for (uint64_t frame = firstFrame; frame < firstFrame + frames; ++frame) {
        for (uint32_t channel = 0; channel < channels; ++channel)
            samples.push_back(signalAt(frame, channel));
    }
    return samples;
}

/// Checks what a tap receives against the signal, frame by frame, beginning with the signal's frame
/// that is heard first; silence before it is skipped.
class SignalListener
{
public:
    explicit SignalListener(AudioFormat format)
        : m_format(format)
    {
    }

    AudioEngine::Tap tap()
    {
        return [this](const AudioBuffer &buffer) { hear(buffer); };
    }

    void hear(const AudioBuffer &buffer)
    {
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(buffer.format, m_format);
        EXPECT_EQ(buffer.floatChannelData.size(), m_format.channelCount);
        EXPECT_EQ(m_shortBuffers, 0) << "only the last buffer may be shorter";
        m_shortBuffers += buffer.frameLength == bufferSize ? 0 : 1;
        m_thread = QThread::currentThreadId();
        for (uint32_t i = 0; i < buffer.frameLength; ++i) {
            if (m_frames == 0) {
                if (buffer.floatChannelData[0][i] == 0)
                    continue;
                m_firstFrame = frameOf(buffer.floatChannelData[0][i]);
            }
            const uint64_t frame = m_firstFrame + m_frames;
            for (uint32_t channel = 0; channel < m_format.channelCount; ++channel) {
                if (buffer.floatChannelData[channel][i] != signalAt(frame, channel))
                    ++m_wrongSamples;
            }
            ++m_frames;
        }
        m_heard.notify_all();
    }

    /// Blocks until at least so many frames of the signal were heard; false after ten seconds.
    bool waitFor(uint64_t frames)
    {
        std::unique_lock lock(m_mutex);
        return m_heard.wait_for(lock, 10s, [&] { return m_frames >= frames; });
    }

    uint64_t firstFrame() const { return locked(m_firstFrame); }
    uint64_t frames() const { return locked(m_frames); }
    uint64_t wrongSamples() const { return locked(m_wrongSamples); }
    Qt::HANDLE thread() const { return locked(m_thread); }

private:
    template <typename T>
    T locked(const T &value) const
    {
        const std::lock_guard lock(m_mutex);
        return value;
    }

    const AudioFormat m_format;
    mutable std::mutex m_mutex;
    std::condition_variable m_heard;
    uint64_t m_firstFrame = 0;
    uint64_t m_frames = 0;
    uint64_t m_wrongSamples = 0;
    int m_shortBuffers = 0;
    Qt::HANDLE m_thread = nullptr;
};

/// A microphone that delivers exactly what the test writes, as fast as it is taken.
class PipeMicrophone
{
public:
    PipeMicrophone(PulseServer &server, const AudioFormat &format, const QString &name)
        : m_format(format)
    {
        const QString fifo = server.path(name + u".fifo"_s);
        m_module = server.loadModule(
            u"module-pipe-source source_name=%1 file=%2 format=float32le rate=%3 "
            "channels=%4"_s.arg(name, fifo)
                .arg(format.sampleRate)
                .arg(format.channelCount));
        m_file = ::open(QFile::encodeName(fifo).constData(), O_WRONLY | O_NONBLOCK);
        if (m_file >= 0)
            ::fcntl(m_file, F_SETFL, 0);
    }
    ~PipeMicrophone() { ::close(m_file); }
    PipeMicrophone(const PipeMicrophone &) = delete;
    PipeMicrophone &operator=(const PipeMicrophone &) = delete;

    [[nodiscard]] bool isOpen() const { return m_file >= 0; }
    [[nodiscard]] QString module() const { return m_module; }

    /// Speaks that many frames of the signal, never far ahead of the listener.
    void speak(SignalListener &listener, uint64_t frames)
    {
        // Written in one piece each, and whole frames: the server reads 4096 bytes at a time.
        const size_t pieceFrames = 4096 / (sizeof(float) * m_format.channelCount);
        for (const uint64_t end = m_spoken + frames; m_spoken < end;) {
            const auto count = std::min<uint64_t>(pieceFrames, end - m_spoken);
            const auto piece = interleavedSignal(m_spoken, count, m_format.channelCount);
            const auto bytes = static_cast<ssize_t>(piece.size() * sizeof(float));
            ASSERT_EQ(::write(m_file, piece.data(), static_cast<size_t>(bytes)), bytes);
            m_spoken += count;
            if (m_spoken > 4 * bufferSize) {
                ASSERT_TRUE(listener.waitFor(m_spoken - 4 * bufferSize));
            }
        }
    }

private:
    AudioFormat m_format;
    QString m_module;
    int m_file = -1;
    uint64_t m_spoken = 0;
};

class PulseAudioTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!PulseServer::isInstalled())
            GTEST_SKIP() << "pulseaudio is not installed";
        ASSERT_TRUE(server.start());
        connection = std::make_shared<PulseConnection>(server.address());
    }

    /// A sink "voice", and a microphone that hears what is played into it.
    void addVoice(const QString &format)
    {
        ASSERT_FALSE(server.loadModule(u"module-null-sink sink_name=voice "_s + format).isEmpty());
        ASSERT_FALSE(server
                         .loadModule(u"module-remap-source master=voice.monitor "
                                     "source_name=microphone "_s
                                     + format)
                         .isEmpty());
    }

    /// Starts with a tap of the input's own format, as the capture manager does.
    static void startListening(PulseAudioEngine &engine, AudioEngine::Tap tap)
    {
        engine.installTap(bufferSize, engine.inputFormat(), std::move(tap));
        const auto started = engine.start();
        ASSERT_TRUE(started) << started.error().description().toStdString();
    }

    bool waitForSourceOutputs(int count)
    {
        return waitUntil([&] { return server.list(u"source-outputs"_s).size() == count; });
    }

    PulseServer server;
    std::shared_ptr<PulseConnection> connection;
};

} // namespace

TEST(BufferAssemblerTest, CutsPiecesOfAnyLengthIntoBuffersOfOne)
{
    constexpr uint32_t channels = 3;
    constexpr size_t frames = 100'000;
    const AudioFormat format{44100.0, channels};
    SignalListener listener(format);
    BufferAssembler assembler(bufferSize, format, listener.tap());

    const auto signal = interleavedSignal(0, frames, channels);
    std::minstd_rand random(1);
    for (size_t done = 0; done < signal.size();) {
        const size_t piece = std::min<size_t>(
            std::uniform_int_distribution<size_t>(1, 9000)(random), signal.size() - done);
        assembler.append(std::span(signal).subspan(done, piece));
        done += piece;
    }
    EXPECT_EQ(listener.frames(), frames / bufferSize * bufferSize);
    assembler.flush();
    EXPECT_EQ(listener.frames(), frames);
    EXPECT_EQ(listener.wrongSamples(), 0U);
}

// Ten minutes at the most common rate; nothing lost, doubled or changed, up to the last frame.
TEST_F(PulseAudioTest, DeliversEverySampleOnce)
{
    const struct
    {
        AudioFormat format;
        uint64_t frames;
    } cases[] = {{{48000.0, 1}, 28'800'007}, {{44100.0, 2}, 441'011}, {{16000.0, 4}, 160'013}};
    int number = 0;
    for (const auto &[format, frames] : cases) {
        const QString name = u"microphone%1"_s.arg(++number);
        PipeMicrophone microphone(server, format, name);
        ASSERT_TRUE(microphone.isOpen());
        server.run(u"pactl"_s, {u"set-default-source"_s, name});

        PulseAudioEngine engine(connection);
        ASSERT_EQ(engine.inputFormat(), format);
        SignalListener listener(format);
        startListening(engine, listener.tap());
        microphone.speak(listener, frames);
        const uint64_t inFullBuffers = frames / bufferSize * bufferSize;
        EXPECT_TRUE(listener.waitFor(inFullBuffers));
        // The rest is on its way, and is waited for unless the server is stuck.
        QElapsedTimer time;
        time.start();
        engine.removeTap();
        const bool isStuck = time.elapsed() >= 150;
        engine.stop();
        EXPECT_EQ(listener.firstFrame(), 0U);
        EXPECT_EQ(listener.frames(), isStuck ? std::max(listener.frames(), inFullBuffers) : frames);
        EXPECT_EQ(listener.wrongSamples(), 0U);
        EXPECT_NE(listener.thread(), QThread::currentThreadId());
    }
}

TEST_F(PulseAudioTest, MicrophoneIsOpenOnlyWhileRecording)
{
    addVoice(u"rate=48000 channels=1"_s);
    PulseAudioEngine engine(connection);
    PulseCaptureAuthorization authorization(connection);
    EXPECT_EQ(authorization.authorizationStatus(), AuthorizationStatus::authorized);
    const int idle = int(server.list(u"source-outputs"_s).size());
    for (int i = 0; i < 2; ++i) {
        std::atomic<int> buffers = 0;
        startListening(engine, [&](const AudioBuffer &) { ++buffers; });
        EXPECT_TRUE(waitForSourceOutputs(idle + 1));
        EXPECT_TRUE(waitUntil([&] { return buffers > 0; }));
        engine.removeTap();
        const int atRemoval = buffers;
        engine.stop();
        EXPECT_TRUE(waitForSourceOutputs(idle));
        EXPECT_EQ(buffers, atRemoval);
    }
}

TEST_F(PulseAudioTest, VanishedMicrophoneIsReportedOnceWithAllThatWasHeard)
{
    const AudioFormat format{48000.0, 1};
    PipeMicrophone other(server, format, u"other"_s);
    PipeMicrophone microphone(server, format, u"microphone"_s);
    server.run(u"pactl"_s, {u"set-default-source"_s, u"microphone"_s});
    PulseAudioEngine engine(connection);
    int interruptions = 0;
    SignalListener listener(format);
    uint64_t heardAtInterruption = 0;
    engine.setInterruptionHandler([&] {
        ++interruptions;
        heardAtInterruption = listener.frames();
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
        engine.removeTap();
        engine.stop();
    });
    startListening(engine, listener.tap());
    microphone.speak(listener, 10'000);
    ASSERT_TRUE(listener.waitFor(8192));
    server.unloadModule(microphone.module());
    ASSERT_TRUE(waitUntil([&] { return interruptions > 0; }));
    EXPECT_GT(heardAtInterruption, 8192U) << "the frames that waited for a full buffer";
    EXPECT_EQ(listener.wrongSamples(), 0U);
    EXPECT_EQ(listener.frames(), heardAtInterruption);

    // The next recording is of the microphone that is left.
    SignalListener next(format);
    startListening(engine, next.tap());
    other.speak(next, 10'000);
    EXPECT_TRUE(next.waitFor(8192));
    engine.removeTap();
    engine.stop();
    EXPECT_EQ(interruptions, 1);
}

TEST_F(PulseAudioTest, RestartedServerIsFoundAgain)
{
    addVoice(u"rate=48000 channels=1"_s);
    PulseAudioEngine engine(connection);
    PulseCaptureAuthorization authorization(connection);
    PulseSystemSounds sounds(connection);
    int interruptions = 0;
    engine.setInterruptionHandler([&] { ++interruptions; });
    std::atomic<int> buffers = 0;
    const auto count = [&](const AudioBuffer &) { ++buffers; };

    startListening(engine, count);
    server.kill();
    ASSERT_TRUE(waitUntil([&] { return interruptions > 0; }));
    engine.removeTap();
    engine.stop();

    sounds.play(u"Pop"_s);
    EXPECT_EQ(authorization.authorizationStatus(), AuthorizationStatus::notDetermined);
    EXPECT_EQ(engine.inputFormat(), AudioFormat{});
    engine.installTap(bufferSize, {}, count);
    const auto refused = engine.start();
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().code, 0);
    EXPECT_FALSE(refused.error().localizedDescription.isEmpty());
    engine.removeTap();

    // Twice: the connection of the first round dies while nobody looks.
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(server.start());
        addVoice(u"rate=48000 channels=1"_s);
        EXPECT_EQ(authorization.authorizationStatus(), AuthorizationStatus::authorized);
        buffers = 0;
        startListening(engine, count);
        EXPECT_TRUE(waitUntil([&] { return buffers > 0; }));
        engine.removeTap();
        engine.stop();
        server.kill();
    }
    EXPECT_EQ(interruptions, 1);
}

TEST_F(PulseAudioTest, MonitorsAreNoMicrophones)
{
    PulseCaptureAuthorization authorization(connection);
    PulseAudioEngine engine(connection);
    const auto request = [&] {
        std::atomic<int> answers = 0;
        std::atomic<bool> granted = false;
        authorization.requestAccess([&](bool given) {
            granted = given;
            ++answers;
        });
        EXPECT_TRUE(waitUntil([&] { return answers > 0; }));
        EXPECT_EQ(answers, 1);
        return granted.load();
    };

    server.loadModule(u"module-null-sink sink_name=voice"_s);
    EXPECT_EQ(authorization.authorizationStatus(), AuthorizationStatus::restricted);
    EXPECT_EQ(engine.inputFormat(), AudioFormat{});
    EXPECT_FALSE(engine.start());
    EXPECT_FALSE(request());

    server.loadModule(u"module-remap-source master=voice.monitor rate=32000 channels=1"_s);
    server.run(u"pactl"_s, {u"set-default-source"_s, u"voice.monitor"_s});
    EXPECT_EQ(authorization.authorizationStatus(), AuthorizationStatus::authorized);
    EXPECT_EQ(engine.inputFormat(), (AudioFormat{32000.0, 1}));
    EXPECT_TRUE(request());
}

TEST_F(PulseAudioTest, ServerThatDoesNotAnswerCostsABoundedTime)
{
    addVoice(u"rate=48000 channels=1"_s);
    PulseAudioEngine engine(connection);
    PulseSystemSounds sounds(connection);
    auto authorization = std::make_unique<PulseCaptureAuthorization>(connection);
    startListening(engine, [](const AudioBuffer &) {});
    server.suspend();

    QElapsedTimer time;
    time.start();
    sounds.play(u"Pop"_s);
    engine.removeTap();
    engine.stop();
    EXPECT_EQ(authorization->authorizationStatus(), AuthorizationStatus::notDetermined);
    const AudioFormat none = engine.inputFormat();
    engine.installTap(bufferSize, none, [](const AudioBuffer &) {});
    EXPECT_FALSE(engine.start());

    // The server may stop answering between the question and the start.
    server.resume();
    ASSERT_TRUE(waitUntil([&] { return engine.inputFormat() != none; }));
    const AudioFormat format = engine.inputFormat();
    engine.installTap(bufferSize, format, [](const AudioBuffer &) {});
    server.suspend();
    EXPECT_FALSE(engine.start());
    engine.removeTap();

    // A request answers by itself, and one that is given up answers, too.
    std::atomic<int> answers = 0;
    const auto answered = [&](bool granted) {
        EXPECT_FALSE(granted);
        ++answers;
    };
    authorization->requestAccess(answered);
    EXPECT_LT(time.elapsed(), hangGuard);
    EXPECT_TRUE(waitUntil([&] { return answers == 1; }));
    authorization->requestAccess(answered);
    authorization.reset();
    EXPECT_EQ(answers, 2);
}

TEST_F(PulseAudioTest, CuesAreHeard)
{
    addVoice(u"format=float32le rate=48000 channels=1"_s);
    PulseAudioEngine engine(connection);
    std::atomic<bool> isHeard = false;
    std::atomic<bool> isSilent = false;
    std::atomic<float> peak = 0;
    // Short buffers, to see the time.
    engine.installTap(240, engine.inputFormat(), [&](const AudioBuffer &buffer) {
        float loudest = 0;
        for (uint32_t i = 0; i < buffer.frameLength; ++i)
            loudest = std::max(loudest, std::abs(buffer.floatChannelData[0][i]));
        peak = std::max(peak.load(), loudest);
        isHeard = isHeard || loudest > 0.05F;
        isSilent = loudest == 0;
    });
    ASSERT_TRUE(engine.start());
    ASSERT_TRUE(waitUntil([&] { return isSilent.load(); }));

    auto sounds = std::make_unique<PulseSystemSounds>(connection);
    sounds->play(u"Basso"_s);
    // The second round is played from the server's store, also after somebody emptied that.
    for (const char *name : {"Pop", "Tink", "Pop", "Tink"}) {
        isHeard = false;
        peak = 0;
        sounds->play(QString::fromLatin1(name));
        ASSERT_TRUE(waitUntil([&] { return isHeard.load(); })) << name;
        EXPECT_TRUE(waitUntil([&] { return isSilent.load(); }));
        EXPECT_LT(peak, 0.5F) << "soft";
    }
    EXPECT_THAT(server.list(u"samples"_s), SizeIs(2));
    server.run(u"pactl"_s, {u"remove-sample"_s, u"velloro-pop"_s});
    isHeard = false;
    sounds->play(u"Pop"_s);
    EXPECT_TRUE(waitUntil([&] {
        sounds->play(u"Pop"_s);
        return isHeard.load();
    }));
    sounds.reset();
    EXPECT_THAT(server.list(u"samples"_s), IsEmpty());

    // A server that answers after they have gone calls nobody.
    sounds = std::make_unique<PulseSystemSounds>(connection);
    sounds->play(u"Pop"_s);
    ASSERT_TRUE(waitUntil([&] { return !server.list(u"samples"_s).isEmpty(); }));
    server.suspend();
    sounds.reset();
    server.resume();
    EXPECT_TRUE(waitUntil([&] { return server.list(u"samples"_s).isEmpty(); }));
}
