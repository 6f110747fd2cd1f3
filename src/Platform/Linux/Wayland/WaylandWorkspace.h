#pragma once

#include "Platform/Linux/Wayland/Windows/WindowList.h"
#include "Platform/Workspace.h"

#include <memory>

namespace Velloro {

/// What is in front under a Wayland compositor, as far as it tells.
class WaylandWorkspace final : public Workspace
{
public:
    explicit WaylandWorkspace(std::shared_ptr<WindowList> windows);

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() override;
    [[nodiscard]] std::optional<uint64_t> frontmostWindow() override;

private:
    std::shared_ptr<WindowList> m_windows;
};

} // namespace Velloro
