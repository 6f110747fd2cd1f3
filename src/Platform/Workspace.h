#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace Velloro {

/// The application that owns the active window.
struct RunningApplication
{
    pid_t processIdentifier = 0;
    /// A terminal or an editor that is known to take text, whatever the accessibility interface
    /// says of what has the focus in it.
    bool isKnownToTakeText = false;

    friend bool operator==(const RunningApplication &, const RunningApplication &) = default;
};

/// What is in front on the user's desktop. Main thread only; never waits without a bound.
class Workspace
{
public:
    virtual ~Workspace() = default;

    /// The application in front; nothing when no window is active or its process is not known.
    [[nodiscard]] virtual std::optional<RunningApplication> frontmostApplication() = 0;

    /// A number that tells the active window from others; nothing when no window is active.
    [[nodiscard]] virtual std::optional<uint64_t> frontmostWindow() = 0;
};

} // namespace Velloro
