#include "Platform/Linux/Sound/PulseSystemSounds.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace Velloro {

/// A sine that falls from one frequency to another and dies away.
struct Tone
{
    double seconds;
    double startFrequency;
    double endFrequency;
    /// Seconds in which the amplitude falls to a third.
    double decay;
    double amplitude;
};

namespace {

// Later than this a cue would say something that isn't so any more.
constexpr auto lifetime = 300ms;
constexpr pa_sample_spec cueFormat{PA_SAMPLE_FLOAT32NE, 48000, 1};

/// One cue under the name by which it is played.
struct NamedTone
{
    QStringView name;
    Tone tone;
};

constexpr NamedTone cueTones[] = {
    {u"Pop", {0.10, 660.0, 330.0, 0.022, 0.30}},
    {u"Tink", {0.18, 1760.0, 1750.0, 0.045, 0.20}},
};

std::vector<float> synthesize(const Tone &tone)
{
    constexpr double attack = 0.002;
    constexpr double release = 0.010;
    const auto rate = static_cast<double>(cueFormat.rate);
    std::vector<float> samples(static_cast<size_t>(tone.seconds * rate));
    double phase = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i) / rate;
        const double progress = time / tone.seconds;
        const double frequency = tone.startFrequency
            * std::pow(tone.endFrequency / tone.startFrequency, progress);
        phase += 2 * std::numbers::pi * frequency / rate;
        const double edges = std::min({1.0, time / attack, (tone.seconds - time) / release});
        samples[i] = static_cast<float>(tone.amplitude * edges * std::exp(-time / tone.decay)
                                        * std::sin(phase));
    }
    return samples;
}

} // namespace

PulseSystemSounds::PulseSystemSounds(std::shared_ptr<PulseConnection> connection)
    : m_connection(std::move(connection))
{
    for (const NamedTone &each : cueTones) {
        const QString name = each.name.toString();
        const QByteArray sampleName = "velloro-" + name.toLower().toLatin1();
        m_cues.emplace(name,
                       Cue{*this, sampleName, each.tone, {}, 0, nullptr, std::nullopt, nullptr});
    }
    const PulseConnection::Lock lock(*m_connection);
    m_listener = m_connection->addStateListener([this] { connectionChanged(); });
}

PulseSystemSounds::~PulseSystemSounds()
{
    const PulseConnection::Lock lock(*m_connection);
    m_connection->removeStateListener(m_listener);
    // The server keeps the samples until it is told, and the connection may be closed next.
    struct Removals
    {
        PulseConnection &connection;
        std::vector<PulseConnection::Operation> operations;
        size_t answered = 0;
    } removals{*m_connection, {}};
    const auto removed = [](pa_context *, int, void *data) {
        auto &removals = *static_cast<Removals *>(data);
        ++removals.answered;
        removals.connection.wake();
    };
    for (auto &[name, cue] : m_cues) {
        cue.playing.reset();
        cue.upload.reset();
        if (cue.generation != m_connection->generation() || cue.generation == 0)
            continue;
        if (pa_operation *removal = pa_context_remove_sample(
                m_connection->context(), cue.sampleName.constData(), removed, &removals))
            removals.operations.emplace_back(removal);
    }
    if (!removals.operations.empty())
        m_connection->waitUntil([&] { return removals.answered == removals.operations.size(); },
                                100ms);
}

void PulseSystemSounds::play(const QString &name)
{
    const auto found = m_cues.find(name);
    if (found == m_cues.end())
        return;
    const PulseConnection::Lock lock(*m_connection);
    found->second.requested = steady_clock::now();
    if (m_connection->open() == PA_CONTEXT_READY)
        advance(found->second);
}

void PulseSystemSounds::advance(Cue &cue)
{
    if (cue.upload || !cue.requested)
        return;
    if (cue.generation != m_connection->generation()) {
        upload(cue);
        return;
    }
    const auto requested = std::exchange(cue.requested, std::nullopt);
    if (steady_clock::now() - *requested > lifetime)
        return;
    // Should somebody have emptied the server's store, the next call begins from the start.
    const auto played = [](pa_context *, uint32_t index, void *data) {
        if (index == PA_INVALID_INDEX)
            static_cast<Cue *>(data)->generation = 0;
    };
    cue.playing.reset(
        pa_context_play_sample_with_proplist(m_connection->context(), cue.sampleName.constData(),
                                             nullptr, PA_VOLUME_INVALID, nullptr, played, &cue));
}

void PulseSystemSounds::upload(Cue &cue)
{
    pa_proplist *properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, "event");
    cue.upload.reset(pa_stream_new_with_proplist(
        m_connection->context(), cue.sampleName.constData(), &cueFormat, nullptr, properties));
    pa_proplist_free(properties);
    if (!cue.upload)
        return;
    pa_stream_set_state_callback(
        cue.upload.get(),
        [](pa_stream *, void *data) {
            auto &cue = *static_cast<Cue *>(data);
            cue.sounds.uploadStateChanged(cue);
        },
        &cue);
    if (cue.samples.empty())
        cue.samples = synthesize(cue.tone);
    if (pa_stream_connect_upload(cue.upload.get(), cue.samples.size() * sizeof(float)) < 0)
        cue.upload.reset();
}

void PulseSystemSounds::uploadStateChanged(Cue &cue)
{
    switch (pa_stream_get_state(cue.upload.get())) {
    case PA_STREAM_READY:
        pa_stream_write(cue.upload.get(), cue.samples.data(), cue.samples.size() * sizeof(float),
                        nullptr, 0, PA_SEEK_RELATIVE);
        pa_stream_finish_upload(cue.upload.get());
        break;
    case PA_STREAM_TERMINATED:
        cue.upload.reset();
        cue.generation = m_connection->generation();
        advance(cue);
        break;
    case PA_STREAM_FAILED:
        cue.upload.reset();
        cue.requested.reset();
        break;
    default:
        break;
    }
}

void PulseSystemSounds::connectionChanged()
{
    pa_context *context = m_connection->context();
    if (!context || pa_context_get_state(context) != PA_CONTEXT_READY)
        return;
    for (auto &[name, cue] : m_cues)
        advance(cue);
}

} // namespace Velloro
