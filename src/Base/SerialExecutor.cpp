#include "Base/SerialExecutor.h"

#include <QCoreApplication>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace Velloro {

namespace {

/// How long the end of the program waits for running work.
constexpr std::chrono::milliseconds exitLimit{500};

/// The jobs of the whole process.
struct Census
{
    std::mutex mutex;
    std::condition_variable changed;
    int unfinished = 0;
    bool abandoned = false;
};

/// Never destroyed, because threads outlive `main`.
Census &census()
{
    static Census *const instance = std::make_unique<Census>().release();
    return *instance;
}

void finishAtExit()
{
    SerialExecutor::finishAll(exitLimit);
}

} // namespace

struct SerialExecutor::Queue
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> jobs;
    bool closed = false;

    /// The next job, awaited; none once the queue is closed and empty.
    std::function<void()> next()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return closed || !jobs.empty(); });
        if (jobs.empty())
            return {};
        std::function<void()> job = std::move(jobs.front());
        jobs.pop_front();
        return job;
    }
};

SerialExecutor::SerialExecutor()
    : m_queue(std::make_shared<Queue>())
{
    static std::once_flag once;
    std::call_once(once, [] { qAddPostRoutine(finishAtExit); });

    std::thread([queue = m_queue] {
        while (std::function<void()> job = queue->next()) {
            checkpoint();
            job();
            // What the job holds goes before it counts as finished.
            job = {};
            const std::lock_guard lock(census().mutex);
            --census().unfinished;
            census().changed.notify_all();
        }
    }).detach();
}

SerialExecutor::~SerialExecutor()
{
    const std::lock_guard lock(m_queue->mutex);
    m_queue->closed = true;
    m_queue->changed.notify_all();
}

void SerialExecutor::submit(std::function<void()> job)
{
    {
        const std::lock_guard lock(census().mutex);
        ++census().unfinished;
    }
    const std::lock_guard lock(m_queue->mutex);
    m_queue->jobs.push_back(std::move(job));
    m_queue->changed.notify_all();
}

bool SerialExecutor::finishAll(std::chrono::milliseconds limit)
{
    std::unique_lock lock(census().mutex);
    const bool finished = !census().abandoned
        && census().changed.wait_for(lock, limit, [] { return census().unfinished == 0; });
    census().abandoned = !finished;
    return finished;
}

bool SerialExecutor::hasAbandoned()
{
    const std::lock_guard lock(census().mutex);
    return census().abandoned;
}

void SerialExecutor::checkpoint()
{
    std::unique_lock lock(census().mutex);
    if (census().abandoned)
        census().changed.wait(lock, [] { return false; });
}

} // namespace Velloro
