#pragma once

#include <QByteArray>
#include <chrono>
#include <cstddef>
#include <memory>

namespace Velloro {

/// Where the lines of the log go: a file, a pipe, a socket or a terminal that others may share, and
/// that may have a reader who does not read.
///
/// A line is written at once where that can be done without waiting. Otherwise it waits, with those
/// after it, for a thread that exists as long as something waits. Beyond a limit lines are dropped,
/// and a line says how many. Any thread; the lines keep the order of the calls.
class LogOutput
{
public:
    /// How long the end waits for a slow reader.
    static constexpr std::chrono::milliseconds endLimit{500};

    /// Does not own the descriptor, which stays blocking, and keeps at most `limit` bytes waiting.
    explicit LogOutput(int descriptor, size_t limit = 1024 * 1024);
    LogOutput(const LogOutput &) = delete;
    LogOutput &operator=(const LogOutput &) = delete;
    /// Waits a little for a slow reader; what is left then is lost.
    ~LogOutput();

    /// `line` ends with its line break.
    void write(const QByteArray &line);
    /// Whether everything was written within the limit.
    bool flush(std::chrono::milliseconds limit);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace Velloro
