#include "Platform/Linux/Wayland/Gnome/ShellWorkspace.h"

#include <utility>

namespace Velloro {

ShellWorkspace::ShellWorkspace(std::shared_ptr<ShellExtension> extension,
                               std::unique_ptr<Workspace> withExtension,
                               std::unique_ptr<Workspace> withoutExtension)
    : m_extension(std::move(extension))
    , m_withExtension(std::move(withExtension))
    , m_withoutExtension(std::move(withoutExtension))
{
}

std::optional<RunningApplication> ShellWorkspace::frontmostApplication()
{
    return inUse().frontmostApplication();
}

std::optional<uint64_t> ShellWorkspace::frontmostWindow()
{
    return inUse().frontmostWindow();
}

Workspace &ShellWorkspace::inUse() const
{
    return *(m_extension->isAvailable() ? m_withExtension : m_withoutExtension);
}

} // namespace Velloro
