#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace Velloro {

/// Runs jobs one at a time, in the order in which they were submitted, on a thread of its own.
///
/// Destruction waits for nothing: what was submitted still runs, then the thread ends. Jobs must
/// not throw and must keep alive what they touch.
class SerialExecutor
{
public:
    SerialExecutor();
    ~SerialExecutor();
    SerialExecutor(const SerialExecutor &) = delete;
    SerialExecutor &operator=(const SerialExecutor &) = delete;

    /// Any thread, a job's own included.
    void submit(std::function<void()> job);

    /// Waits until no executor of the process has anything to do, at most for `limit`. What is not
    /// done by then is abandoned: no further job begins, and a job that is inside a long call goes
    /// no further than its next `checkpoint`. For the end of the program, while everything that
    /// jobs touch is still there; false when something was abandoned. The application object calls
    /// it when it is destroyed.
    static bool finishAll(std::chrono::milliseconds limit);
    /// Whether something was. It may run on until the process ends, so the process must end without
    /// the destruction of static objects, which it may use: by `_exit`.
    [[nodiscard]] static bool hasAbandoned();

    /// For jobs, after a long call: does not return once the program has abandoned them.
    static void checkpoint();

private:
    struct Queue;
    std::shared_ptr<Queue> m_queue;
};

} // namespace Velloro
