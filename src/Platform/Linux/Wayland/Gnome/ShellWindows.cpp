#include "Platform/Linux/Wayland/Gnome/ShellWindows.h"

namespace Velloro {

ShellWindows::ShellWindows(std::shared_ptr<ShellExtension> extension)
    : m_extension(std::move(extension))
{
}

std::optional<WindowList::Window> ShellWindows::activeWindow()
{
    const auto window = m_extension->focusedWindow();
    if (!window)
        return std::nullopt;
    return Window{.number = window->number,
                  .windowClass = {window->windowClass, window->windowClass},
                  .process = window->process > 0 ? std::optional(window->process) : std::nullopt};
}

} // namespace Velloro
