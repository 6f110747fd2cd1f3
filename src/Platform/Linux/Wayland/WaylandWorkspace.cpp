#include "Platform/Linux/Wayland/WaylandWorkspace.h"

#include <utility>

namespace Velloro {

WaylandWorkspace::WaylandWorkspace(std::shared_ptr<WindowList> windows)
    : m_windows(std::move(windows))
{
}

std::optional<RunningApplication> WaylandWorkspace::frontmostApplication()
{
    const auto window = m_windows->activeWindow();
    if (!window || !window->process)
        return std::nullopt;
    return RunningApplication{*window->process, isKnownToPaste(window->windowClass)};
}

std::optional<uint64_t> WaylandWorkspace::frontmostWindow()
{
    const auto window = m_windows->activeWindow();
    return window ? std::optional(window->number) : std::nullopt;
}

} // namespace Velloro
