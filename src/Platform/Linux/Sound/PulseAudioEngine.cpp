#include "Platform/Linux/Sound/PulseAudioEngine.h"

#include "Base/StringLiterals.h"

#include <QElapsedTimer>
#include <algorithm>
#include <span>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// At the stop, what has been spoken but is still on its way is waited for this long at most. A
// fragment's length, 20 ms, is what it mostly takes.
constexpr auto drainLimit = 150ms;
// What the start may take even where the question before it has used up the press's patience.
constexpr std::chrono::milliseconds leastPatience = 100ms;
// The server sends this often: the less, the less is on its way at the stop.
constexpr uint32_t fragmentsPerSecond = 50;

PlatformError platformError(int code)
{
    return {code, QString::fromUtf8(pa_strerror(code))};
}

PlatformError platformError(const PulseMicrophoneQuery::Answer &answer)
{
    if (answer.outcome == PulseMicrophoneQuery::Outcome::none)
        return {answer.error, u"No microphone is connected"_s};
    return platformError(answer.error);
}

} // namespace

PulseAudioEngine::PulseAudioEngine(std::shared_ptr<PulseConnection> connection)
    : m_connection(std::move(connection))
{
}

PulseAudioEngine::~PulseAudioEngine()
{
    stop();
}

AudioFormat PulseAudioEngine::inputFormat()
{
    const PulseConnection::Lock lock(*m_connection);
    QElapsedTimer time;
    time.start();
    m_microphone = PulseMicrophoneQuery::ask(*m_connection, PulseConnection::patience);
    m_patience = PulseConnection::patience - std::chrono::milliseconds(time.elapsed());
    if (m_microphone.outcome != PulseMicrophoneQuery::Outcome::found)
        return {};
    return {static_cast<double>(m_microphone.sampleSpec.rate), m_microphone.sampleSpec.channels};
}

void PulseAudioEngine::installTap(uint32_t bufferSize, const AudioFormat &format, Tap tap)
{
    const PulseConnection::Lock lock(*m_connection);
    m_format = format;
    m_assembler.reset();
    if (bufferSize > 0 && format.channelCount > 0)
        m_assembler.emplace(bufferSize, format, std::move(tap));
}

void PulseAudioEngine::removeTap()
{
    const PulseConnection::Lock lock(*m_connection);
    if (!m_assembler)
        return;
    awaitCapturedFrames();
    m_connection->runOnThread([this] { m_assembler->flush(); });
    m_assembler.reset();
}

tl::expected<void, PlatformError> PulseAudioEngine::start()
{
    const PulseConnection::Lock lock(*m_connection);
    m_isRunning = false;
    m_stream.reset();
    ++m_generation;
    m_bytesReceived = 0;

    if (m_microphone.outcome != PulseMicrophoneQuery::Outcome::found)
        return tl::unexpected(platformError(m_microphone));

    // The tap's format, which is the source's own unless the source changed since it was asked for;
    // then the server converts.
    const pa_sample_spec sampleSpec{PA_SAMPLE_FLOAT32NE, static_cast<uint32_t>(m_format.sampleRate),
                                    static_cast<uint8_t>(m_format.channelCount)};
    if (!pa_sample_spec_valid(&sampleSpec))
        return tl::unexpected(platformError(PA_ERR_INVALID));
    pa_channel_map channelMap = m_microphone.channelMap;
    if (channelMap.channels != sampleSpec.channels)
        pa_channel_map_init_extend(&channelMap, sampleSpec.channels, PA_CHANNEL_MAP_DEFAULT);

    m_stream.reset(pa_stream_new(m_connection->context(), "Dictation", &sampleSpec, &channelMap));
    if (!m_stream)
        return tl::unexpected(platformError(m_connection->error()));
    pa_stream_set_state_callback(
        m_stream.get(),
        [](pa_stream *, void *engine) {
            static_cast<PulseAudioEngine *>(engine)->streamStateChanged();
        },
        this);
    pa_stream_set_read_callback(
        m_stream.get(),
        [](pa_stream *, size_t, void *engine) {
            static_cast<PulseAudioEngine *>(engine)->readStream();
        },
        this);
    pa_stream_set_moved_callback(
        m_stream.get(),
        [](pa_stream *, void *engine) { static_cast<PulseAudioEngine *>(engine)->streamMoved(); },
        this);

    pa_buffer_attr attributes{};
    attributes.maxlength = UINT32_MAX;
    attributes.fragsize = static_cast<uint32_t>(pa_frame_size(&sampleSpec))
        * (sampleSpec.rate / fragmentsPerSecond);
    const auto flags
        = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_stream.get(), m_microphone.name.constData(), &attributes, flags)
        < 0) {
        m_stream.reset();
        return tl::unexpected(platformError(m_connection->error()));
    }

    const auto isSettled = [this] {
        const pa_stream_state_t state = pa_stream_get_state(m_stream.get());
        return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
    };
    const bool inTime = m_connection->waitUntil(isSettled, std::max(m_patience, leastPatience));
    if (!inTime || pa_stream_get_state(m_stream.get()) != PA_STREAM_READY) {
        const int error = inTime ? m_connection->error() : int(PA_ERR_TIMEOUT);
        m_stream.reset();
        return tl::unexpected(platformError(error));
    }
    m_isRunning = true;
    return {};
}

void PulseAudioEngine::stop()
{
    const PulseConnection::Lock lock(*m_connection);
    m_isRunning = false;
    m_stream.reset();
    ++m_generation;
}

void PulseAudioEngine::setInterruptionHandler(InterruptionHandler handler)
{
    m_interruptionHandler = std::move(handler);
}

void PulseAudioEngine::streamStateChanged()
{
    m_connection->wake();
    if (m_isRunning && !PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream.get())))
        interrupted();
}

void PulseAudioEngine::streamMoved()
{
    // The server was told not to, and what the new source delivers isn't the user's choice.
    if (m_isRunning)
        interrupted();
}

void PulseAudioEngine::readStream()
{
    const void *data = nullptr;
    size_t bytes = 0;
    while (pa_stream_peek(m_stream.get(), &data, &bytes) == 0 && bytes > 0) {
        const size_t samples = bytes / sizeof(float);
        if (m_assembler && data)
            m_assembler->append({static_cast<const float *>(data), samples});
        else if (m_assembler)
            m_assembler->appendSilence(samples);
        m_bytesReceived += bytes;
        pa_stream_drop(m_stream.get());
    }
    m_connection->wake();
}

void PulseAudioEngine::awaitCapturedFrames()
{
    if (!m_isRunning)
        return;
    // The server says how much it has captured that has not been read here yet.
    bool isAnswered = false;
    uint64_t bytesExpected = 0;
    struct Question
    {
        PulseAudioEngine &engine;
        bool &isAnswered;
        uint64_t &bytesExpected;
    } question{*this, isAnswered, bytesExpected};
    const auto answered = [](pa_stream *stream, int, void *data) {
        const auto &question = *static_cast<Question *>(data);
        question.isAnswered = true;
        pa_usec_t latency = 0;
        int isNegative = 0;
        question.bytesExpected = question.engine.m_bytesReceived;
        if (pa_stream_get_latency(stream, &latency, &isNegative) == 0 && !isNegative)
            question.bytesExpected += pa_usec_to_bytes(latency, pa_stream_get_sample_spec(stream));
        question.engine.m_connection->wake();
    };
    const PulseConnection::Operation operation(
        pa_stream_update_timing_info(m_stream.get(), answered, &question));
    if (!operation)
        return;
    const auto isDrained
        = [&] { return !m_isRunning || (isAnswered && m_bytesReceived >= bytesExpected); };
    m_connection->waitUntil(isDrained, drainLimit);
}

void PulseAudioEngine::interrupted()
{
    m_isRunning = false;
    if (m_assembler)
        m_assembler->flush();
    m_connection->wake();
    QMetaObject::invokeMethod(
        &m_mainThread,
        [this, generation = m_generation] {
            // Only the main thread changes the number.
            if (generation == m_generation && m_interruptionHandler)
                m_interruptionHandler();
        },
        Qt::QueuedConnection);
}

} // namespace Velloro
