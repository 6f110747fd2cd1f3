#pragma once

#include "Platform/Linux/Sound/PulseConnection.h"
#include "Platform/SystemSounds.h"

#include <QString>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace Velloro {

struct Tone;

/// The cues, made in code and kept by the sound server after their first use, so that playing
/// one is a single message to it. A cue that can't be played at once is dropped.
class PulseSystemSounds final : public SystemSounds
{
public:
    explicit PulseSystemSounds(std::shared_ptr<PulseConnection> connection);
    /// Takes the cues out of the server again.
    ~PulseSystemSounds() override;

    void play(const QString &name) override;

private:
    /// One cue and how far it has got in the current connection.
    struct Cue
    {
        PulseSystemSounds &sounds;
        QByteArray sampleName;
        /// What it sounds like.
        const Tone &tone;
        /// Made at the first use.
        std::vector<float> samples;
        /// The connection in which the server has it, 0 for none.
        unsigned generation = 0;
        PulseConnection::Stream upload;
        /// When it was to be heard; none when nothing waits.
        std::optional<std::chrono::steady_clock::time_point> requested;
        PulseConnection::Operation playing;
    };

    // With the connection's lock held.
    void advance(Cue &cue);
    void upload(Cue &cue);
    void uploadStateChanged(Cue &cue);
    void connectionChanged();

    const std::shared_ptr<PulseConnection> m_connection;
    int m_listener = 0;
    std::map<QString, Cue> m_cues;
};

} // namespace Velloro
