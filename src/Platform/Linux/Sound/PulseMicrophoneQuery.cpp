#include "Platform/Linux/Sound/PulseMicrophoneQuery.h"

#include <algorithm>
#include <utility>

namespace Velloro {

PulseMicrophoneQuery::PulseMicrophoneQuery(PulseConnection &connection,
                                           std::chrono::milliseconds limit, Completion completion)
    : m_connection(connection)
    , m_completion(std::move(completion))
{
    // A connection that was ready already may turn out to be dead: the server was restarted a
    // moment ago. Then a new one is tried.
    const unsigned generation = m_connection.generation();
    m_mayConnectAgain = m_connection.open() == PA_CONTEXT_READY
        && m_connection.generation() == generation;
    m_listener = m_connection.addStateListener([this] { connectionChanged(); });
    if (m_connection.context()) {
        m_timer.emplace(m_connection, limit,
                        [this] { fail(Outcome::unreachable, PA_ERR_TIMEOUT); });
    }
    connectionChanged();
}

PulseMicrophoneQuery::~PulseMicrophoneQuery()
{
    m_connection.removeStateListener(m_listener);
}

PulseMicrophoneQuery::Answer PulseMicrophoneQuery::ask(PulseConnection &connection,
                                                       std::chrono::milliseconds limit)
{
    std::optional<Answer> result;
    const PulseMicrophoneQuery query(connection, limit, [&](const Answer &answer) {
        result = answer;
        connection.wake();
    });
    connection.waitUntil([&] { return result.has_value(); }, 2 * limit);
    return result.value_or(Answer{});
}

void PulseMicrophoneQuery::connectionChanged()
{
    if (m_isAnswered)
        return;
    pa_context *context = m_connection.context();
    const pa_context_state_t state = context ? pa_context_get_state(context) : PA_CONTEXT_FAILED;
    if (state == PA_CONTEXT_READY) {
        askServer();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        const int error = m_connection.error();
        if (error == PA_ERR_ACCESS || error == PA_ERR_AUTHKEY) {
            fail(Outcome::refused, error);
        } else if (std::exchange(m_mayConnectAgain, false)) {
            m_serverInfo.reset();
            m_sourceList.reset();
            if (!PA_CONTEXT_IS_GOOD(m_connection.open()))
                fail(Outcome::unreachable, m_connection.error());
        } else {
            fail(Outcome::unreachable, error);
        }
    }
}

void PulseMicrophoneQuery::askServer()
{
    m_defaultSource.reset();
    m_hasAllSources = false;
    m_microphones.clear();

    const auto serverInfo = [](pa_context *, const pa_server_info *info, void *data) {
        auto *query = static_cast<PulseMicrophoneQuery *>(data);
        query->m_defaultSource = info ? QByteArray(info->default_source_name) : QByteArray();
        query->answerIfComplete();
    };
    const auto source = [](pa_context *, const pa_source_info *info, int end, void *data) {
        auto *query = static_cast<PulseMicrophoneQuery *>(data);
        if (end == 0) {
            query->addSource(*info);
        } else {
            query->m_hasAllSources = true;
            query->answerIfComplete();
        }
    };
    m_serverInfo.reset(pa_context_get_server_info(m_connection.context(), serverInfo, this));
    m_sourceList.reset(pa_context_get_source_info_list(m_connection.context(), source, this));
    if (!m_serverInfo || !m_sourceList)
        fail(Outcome::unreachable, m_connection.error());
}

void PulseMicrophoneQuery::addSource(const pa_source_info &source)
{
    if (source.monitor_of_sink != PA_INVALID_INDEX)
        return;
    m_microphones.push_back(
        {Outcome::found, PA_OK, source.name, source.sample_spec, source.channel_map});
}

void PulseMicrophoneQuery::answerIfComplete()
{
    if (!m_defaultSource || !m_hasAllSources)
        return;
    if (m_microphones.empty()) {
        fail(Outcome::none, PA_ERR_NOENTITY);
        return;
    }
    const auto chosen = std::find_if(m_microphones.begin(), m_microphones.end(),
                                     [this](auto &found) { return found.name == m_defaultSource; });
    answer(chosen == m_microphones.end() ? m_microphones.front() : *chosen);
}

void PulseMicrophoneQuery::fail(Outcome outcome, int error)
{
    answer({outcome, error, {}, {}, {}});
}

void PulseMicrophoneQuery::answer(const Answer &answer)
{
    if (std::exchange(m_isAnswered, true))
        return;
    m_timer.reset();
    m_completion(answer);
}

} // namespace Velloro
