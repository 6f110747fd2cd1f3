#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <memory>
#include <optional>
#include <sys/types.h>

namespace Velloro {

/// The programs that are connected to an X server, found by any window of theirs. Waits for the X
/// server alone.
class X11Clients
{
public:
    explicit X11Clients(std::shared_ptr<X11Connection> connection);

    /// The process that the X server sees behind the window; nothing where it does not tell, or the
    /// process is on another machine.
    [[nodiscard]] std::optional<pid_t> process(xcb_window_t window);
    /// Whether what one window fetches from the clipboard is for the other: both are of one
    /// connection or one process, or of Wine, where one process has the clipboard for all windows.
    [[nodiscard]] bool shareClipboard(xcb_window_t one, xcb_window_t other);

private:
    std::shared_ptr<X11Connection> m_connection;
    bool m_serverKnowsProcesses = false;
};

} // namespace Velloro
