#pragma once

#include "Platform/Linux/Sound/PulseConnection.h"

#include <QByteArray>
#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace Velloro {

/// Asks the sound server for the default microphone, connecting first where necessary. A microphone
/// is a source that is not the monitor of an output: the default source, or the first other one
/// when the default is only a monitor.
///
/// Created, answered and destroyed with the connection's lock held.
class PulseMicrophoneQuery
{
public:
    enum class Outcome {
        found,
        /// The server has no microphone.
        none,
        /// The server does not let us in.
        refused,
        /// There is no server, or it does not answer in time.
        unreachable
    };

    struct Answer
    {
        Outcome outcome = Outcome::unreachable;
        /// Where nothing was found: why, as libpulse's code.
        int error = 0;
        /// The source's own name, rate and channels.
        QByteArray name;
        pa_sample_spec sampleSpec{};
        pa_channel_map channelMap{};
    };

    using Completion = std::function<void(const Answer &answer)>;

    /// Calls `completion` exactly once within the limit, possibly from within the constructor,
    /// unless destroyed before. It must not destroy the query.
    PulseMicrophoneQuery(PulseConnection &connection, std::chrono::milliseconds limit,
                         Completion completion);
    ~PulseMicrophoneQuery();
    PulseMicrophoneQuery(const PulseMicrophoneQuery &) = delete;
    PulseMicrophoneQuery &operator=(const PulseMicrophoneQuery &) = delete;

    [[nodiscard]] bool isAnswered() const { return m_isAnswered; }

    /// The same, waiting for the answer; not on the connection's own thread.
    [[nodiscard]] static Answer ask(PulseConnection &connection, std::chrono::milliseconds limit);

private:
    void connectionChanged();
    void askServer();
    void addSource(const pa_source_info &source);
    void answerIfComplete();
    void fail(Outcome outcome, int error);
    void answer(const Answer &answer);

    PulseConnection &m_connection;
    Completion m_completion;
    bool m_isAnswered = false;
    bool m_mayConnectAgain = false;
    int m_listener = 0;
    std::optional<PulseConnection::Timer> m_timer;
    PulseConnection::Operation m_serverInfo;
    PulseConnection::Operation m_sourceList;
    std::optional<QByteArray> m_defaultSource;
    bool m_hasAllSources = false;
    std::vector<Answer> m_microphones;
};

} // namespace Velloro
