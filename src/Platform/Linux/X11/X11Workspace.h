#pragma once

#include "Platform/Linux/PasteStroke.h"
#include "Platform/Linux/X11/X11Clients.h"
#include "Platform/Workspace.h"

#include <memory>
#include <optional>

namespace Velloro {

/// The active window of an X server, and whose it is. Waits for the X server alone.
class X11Workspace final : public Workspace
{
public:
    /// A null connection knows no application.
    explicit X11Workspace(std::shared_ptr<X11Connection> connection);

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() override;
    [[nodiscard]] std::optional<uint64_t> frontmostWindow() override;

    /// The class of the active window; nothing when there is none, or it has no class.
    [[nodiscard]] std::optional<WindowClass> activeWindowClass();

    /// The window that the window manager calls active; without one, the window that has the
    /// keyboard focus.
    [[nodiscard]] xcb_window_t activeWindow();
    /// Whether the window answers to `_NET_WM_PING`.
    [[nodiscard]] bool answersPings(xcb_window_t window);

private:
    [[nodiscard]] xcb_window_t focusedWindow();
    [[nodiscard]] std::optional<WindowClass> windowClass(xcb_window_t window);
    [[nodiscard]] QByteArray property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type);
    /// The process that the window names.
    [[nodiscard]] std::optional<pid_t> namedProcess(xcb_window_t window);
    [[nodiscard]] bool isOnAnotherMachine(xcb_window_t window);

    std::shared_ptr<X11Connection> m_connection;
    /// Nothing without a connection.
    std::optional<X11Clients> m_clients;
};

} // namespace Velloro
