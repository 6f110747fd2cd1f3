#pragma once

#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"
#include "Platform/Workspace.h"

#include <memory>

namespace Velloro {

/// What is in front on GNOME: as our extension of its shell tells where the user has enabled that,
/// and otherwise as far as the X server beside it knows.
class ShellWorkspace final : public Workspace
{
public:
    ShellWorkspace(std::shared_ptr<ShellExtension> extension,
                   std::unique_ptr<Workspace> withExtension,
                   std::unique_ptr<Workspace> withoutExtension);

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() override;
    [[nodiscard]] std::optional<uint64_t> frontmostWindow() override;

private:
    [[nodiscard]] Workspace &inUse() const;

    std::shared_ptr<ShellExtension> m_extension;
    std::unique_ptr<Workspace> m_withExtension;
    std::unique_ptr<Workspace> m_withoutExtension;
};

} // namespace Velloro
