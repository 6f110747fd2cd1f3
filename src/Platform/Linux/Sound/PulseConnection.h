#pragma once

#include "Base/CustomDelete.h"

#include <QByteArray>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <pulse/pulseaudio.h>

namespace Velloro {

/// The process's one connection to the sound server and the thread that serves it; shared by all
/// audio services. It connects when first used, and anew after the server went away when it is used
/// again; in between nothing runs and nothing is polled.
///
/// Everything but the constructor and the destructor is called with a `Lock` held, or on the
/// connection's own thread, which holds it whenever it calls back.
class PulseConnection
{
public:
    /// Holds the connection's thread off. Not to be nested where something is waited for.
    class Lock
    {
    public:
        explicit Lock(PulseConnection &connection);
        ~Lock();
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        PulseConnection &m_connection;
    };

    /// Calls back once on the connection's thread, unless destroyed before.
    class Timer
    {
    public:
        Timer(PulseConnection &connection, std::chrono::milliseconds delay,
              std::function<void()> expired);
        ~Timer();
        Timer(const Timer &) = delete;
        Timer &operator=(const Timer &) = delete;

    private:
        PulseConnection &m_connection;
        std::function<void()> m_expired;
        pa_time_event *m_event = nullptr;
    };

    /// Cancelled, it never calls back into what may be gone.
    static void cancel(pa_operation *operation);
    using Operation = std::unique_ptr<pa_operation, CustomDelete<&PulseConnection::cancel>>;
    /// Disconnected, it never calls back either.
    static void disconnect(pa_stream *stream);
    using Stream = std::unique_ptr<pa_stream, CustomDelete<&PulseConnection::disconnect>>;

    /// The longest that a press of the hotkey waits for the server, with all that it asks.
    static constexpr std::chrono::milliseconds patience{500};

    /// Empty means the user's server.
    explicit PulseConnection(QByteArray server = {});
    /// The services that use the connection are gone by then.
    ~PulseConnection();
    PulseConnection(const PulseConnection &) = delete;
    PulseConnection &operator=(const PulseConnection &) = delete;

    /// Begins to connect unless connected or connecting, never waits, and returns the state.
    pa_context_state_t open();
    /// Null until the first `open`.
    [[nodiscard]] pa_context *context() const { return m_context; }
    /// Another number for every connection made.
    [[nodiscard]] unsigned generation() const { return m_generation; }
    /// The latest error's code, one of libpulse's.
    [[nodiscard]] int error() const;

    /// Registers a function to be called at every change of the connection's state.
    int addStateListener(std::function<void()> listener);
    void removeStateListener(int id);

    /// Waits until `done`, asked after every `wake`, and returns its last answer; false when the
    /// limit passed. Not on the connection's own thread.
    bool waitUntil(const std::function<bool()> &done, std::chrono::milliseconds limit);
    void wake();

    /// Runs `work` on the connection's own thread and waits for its end.
    void runOnThread(const std::function<void()> &work);

private:
    void close();
    void stateChanged();

    const QByteArray m_server;
    pa_threaded_mainloop *m_loop = nullptr;
    bool m_isRunning = false;
    pa_context *m_context = nullptr;
    unsigned m_generation = 0;
    int m_nextListener = 0;
    std::map<int, std::function<void()>> m_listeners;
};

} // namespace Velloro
