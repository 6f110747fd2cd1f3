#include "Base/LogOutput.h"

#include "Base/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

enum class Progress { complete, wouldBlock, failed };

/// Writes to a descriptor without waiting. The descriptor's own flags are shared with whoever
/// started the program and must stay as they are.
class Writer
{
public:
    explicit Writer(int descriptor)
        : m_descriptor(descriptor)
    {
        struct stat status = {};
        if (fstat(descriptor, &status) != 0)
            return;
        m_isSocket = S_ISSOCK(status.st_mode);
        // A second opening of a pipe or terminal has flags of its own.
        if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) {
            m_own = FileDescriptor::open("/proc/self/fd/" + QByteArray::number(descriptor),
                                         O_WRONLY | O_NONBLOCK | O_NOCTTY);
        }
    }

    /// Removes from `bytes` what was written.
    Progress write(QByteArray &bytes)
    {
        while (!bytes.isEmpty()) {
            const ssize_t written = writeSome(bytes);
            if (written >= 0)
                bytes.remove(0, written);
            else if (errno == EAGAIN || errno == EWOULDBLOCK)
                return Progress::wouldBlock;
            else if (errno != EINTR)
                return Progress::failed;
        }
        return Progress::complete;
    }

    void waitUntilWritable() const
    {
        pollfd request = {descriptor(), POLLOUT, 0};
        poll(&request, 1, -1);
    }

private:
    [[nodiscard]] int descriptor() const { return m_own.isOpen() ? m_own.get() : m_descriptor; }

    ssize_t writeSome(const QByteArray &bytes) const
    {
        const auto size = static_cast<size_t>(bytes.size());
        if (m_isSocket)
            return send(m_descriptor, bytes.constData(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (m_own.isOpen())
            return ::write(m_own.get(), bytes.constData(), size);
        pollfd request = {m_descriptor, POLLOUT, 0};
        if (poll(&request, 1, 0) == 0) {
            errno = EAGAIN;
            return -1;
        }
        // So much fits where anything does.
        return ::write(m_descriptor, bytes.constData(), std::min<size_t>(size, PIPE_BUF));
    }

    int m_descriptor;
    FileDescriptor m_own;
    bool m_isSocket = false;
};

} // namespace

/// Shared with the thread, which may be left behind at the end of the program.
struct LogOutput::State
{
    State(int descriptor, size_t limit)
        : writer(descriptor)
        , limit(limit)
    {
    }

    void enqueue(QByteArray bytes)
    {
        waitingSize += static_cast<size_t>(bytes.size());
        waiting.push_back(std::move(bytes));
    }

    void noteDropped()
    {
        enqueue("[Log] " + QByteArray::number(droppedCount) + " lines dropped\n");
        droppedCount = 0;
    }

    void fail()
    {
        waiting.clear();
        waitingSize = 0;
        droppedCount = 0;
    }

    void drain();

    Writer writer;
    const size_t limit;
    std::mutex mutex;
    std::condition_variable emptied;
    // Under the mutex:
    std::deque<QByteArray> waiting;
    size_t waitingSize = 0;
    size_t droppedCount = 0;
    bool isDraining = false;
};

void LogOutput::State::drain()
{
    // Signals are the main thread's affair.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);

    std::unique_lock lock(mutex);
    while (!waiting.empty()) {
        const auto before = waiting.front().size();
        const Progress progress = writer.write(waiting.front());
        waitingSize -= static_cast<size_t>(before - waiting.front().size());
        if (progress == Progress::failed) {
            fail();
        } else if (progress == Progress::wouldBlock) {
            lock.unlock();
            writer.waitUntilWritable();
            lock.lock();
        } else {
            waiting.pop_front();
            if (waiting.empty() && droppedCount > 0)
                noteDropped();
        }
    }
    isDraining = false;
    emptied.notify_all();
}

LogOutput::LogOutput(int descriptor, size_t limit)
    : m_state(std::make_shared<State>(descriptor, limit))
{
}

LogOutput::~LogOutput()
{
    flush(endLimit);
}

void LogOutput::write(const QByteArray &line)
{
    const std::lock_guard lock(m_state->mutex);
    QByteArray rest = line;
    if (!m_state->isDraining && m_state->writer.write(rest) != Progress::wouldBlock)
        return;
    if (m_state->waitingSize + static_cast<size_t>(rest.size()) > m_state->limit) {
        ++m_state->droppedCount;
        return;
    }
    if (m_state->droppedCount > 0)
        m_state->noteDropped();
    m_state->enqueue(rest);
    if (!std::exchange(m_state->isDraining, true))
        std::thread([state = m_state] { state->drain(); }).detach();
}

bool LogOutput::flush(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_state->mutex);
    return m_state->emptied.wait_for(lock, limit, [this] { return !m_state->isDraining; });
}

} // namespace Velloro
