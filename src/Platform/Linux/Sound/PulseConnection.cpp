#include "Platform/Linux/Sound/PulseConnection.h"

#include <utility>
#include <vector>

namespace Velloro {

PulseConnection::Lock::Lock(PulseConnection &connection)
    : m_connection(connection)
{
    pa_threaded_mainloop_lock(m_connection.m_loop);
}

PulseConnection::Lock::~Lock()
{
    pa_threaded_mainloop_unlock(m_connection.m_loop);
}

PulseConnection::Timer::Timer(PulseConnection &connection, std::chrono::milliseconds delay,
                              std::function<void()> expired)
    : m_connection(connection)
    , m_expired(std::move(expired))
{
    const pa_usec_t when = pa_rtclock_now() + std::chrono::microseconds(delay).count();
    const auto expire = [](pa_mainloop_api *, pa_time_event *, const timeval *, void *timer) {
        // What is called may destroy the timer.
        const auto expired = std::move(static_cast<Timer *>(timer)->m_expired);
        expired();
    };
    m_event = pa_context_rttime_new(m_connection.m_context, when, expire, this);
}

PulseConnection::Timer::~Timer()
{
    if (m_event)
        pa_threaded_mainloop_get_api(m_connection.m_loop)->time_free(m_event);
}

void PulseConnection::cancel(pa_operation *operation)
{
    pa_operation_cancel(operation);
    pa_operation_unref(operation);
}

void PulseConnection::disconnect(pa_stream *stream)
{
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

PulseConnection::PulseConnection(QByteArray server)
    : m_server(std::move(server))
    , m_loop(pa_threaded_mainloop_new())
{
    pa_threaded_mainloop_set_name(m_loop, "audio");
    m_isRunning = pa_threaded_mainloop_start(m_loop) == 0;
}

PulseConnection::~PulseConnection()
{
    {
        const Lock lock(*this);
        close();
    }
    pa_threaded_mainloop_stop(m_loop);
    pa_threaded_mainloop_free(m_loop);
}

pa_context_state_t PulseConnection::open()
{
    if (!m_isRunning)
        return PA_CONTEXT_FAILED;
    if (m_context && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context)))
        return pa_context_get_state(m_context);

    close();
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Velloro");
    if (!m_context)
        return PA_CONTEXT_FAILED;
    ++m_generation;
    const auto changed = [](pa_context *, void *connection) {
        static_cast<PulseConnection *>(connection)->stateChanged();
    };
    pa_context_set_state_callback(m_context, changed, this);
    // Starting a server is the session's business; libpulse would wait for it without a bound.
    pa_context_connect(m_context, m_server.isEmpty() ? nullptr : m_server.constData(),
                       PA_CONTEXT_NOAUTOSPAWN, nullptr);
    const pa_context_state_t state = pa_context_get_state(m_context);
    return state == PA_CONTEXT_UNCONNECTED ? PA_CONTEXT_FAILED : state;
}

int PulseConnection::error() const
{
    const int code = m_context ? pa_context_errno(m_context) : PA_ERR_INTERNAL;
    return code == PA_OK ? PA_ERR_CONNECTIONREFUSED : code;
}

int PulseConnection::addStateListener(std::function<void()> listener)
{
    m_listeners.emplace(++m_nextListener, std::move(listener));
    return m_nextListener;
}

void PulseConnection::removeStateListener(int id)
{
    m_listeners.erase(id);
}

bool PulseConnection::waitUntil(const std::function<bool()> &done, std::chrono::milliseconds limit)
{
    if (!m_isRunning || !m_context)
        return done();
    bool expired = false;
    const Timer timer(*this, limit, [this, &expired] {
        expired = true;
        wake();
    });
    while (!done()) {
        if (expired)
            return false;
        pa_threaded_mainloop_wait(m_loop);
    }
    return true;
}

void PulseConnection::wake()
{
    pa_threaded_mainloop_signal(m_loop, 0);
}

void PulseConnection::runOnThread(const std::function<void()> &work)
{
    if (!m_isRunning) {
        work();
        return;
    }
    struct Job
    {
        PulseConnection &connection;
        const std::function<void()> &work;
        bool isDone = false;
    } job{*this, work};
    const auto run = [](pa_mainloop_api *, void *data) {
        auto &job = *static_cast<Job *>(data);
        job.work();
        job.isDone = true;
        job.connection.wake();
    };
    pa_mainloop_api_once(pa_threaded_mainloop_get_api(m_loop), run, &job);
    while (!job.isDone)
        pa_threaded_mainloop_wait(m_loop);
}

void PulseConnection::close()
{
    if (!m_context)
        return;
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    pa_context_unref(std::exchange(m_context, nullptr));
}

void PulseConnection::stateChanged()
{
    wake();
    std::vector<int> ids;
    for (const auto &[id, listener] : m_listeners)
        ids.push_back(id);
    for (const int id : ids) {
        // A listener may have removed another one, or itself.
        if (const auto found = m_listeners.find(id); found != m_listeners.end()) {
            const auto listener = found->second;
            listener();
        }
    }
}

} // namespace Velloro
