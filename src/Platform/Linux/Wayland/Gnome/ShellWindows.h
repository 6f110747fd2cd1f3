#pragma once

#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"
#include "Platform/Linux/Wayland/Windows/WindowList.h"

#include <memory>

namespace Velloro {

/// The windows of GNOME, by our extension of its shell.
class ShellWindows final : public WindowList
{
public:
    explicit ShellWindows(std::shared_ptr<ShellExtension> extension);

    [[nodiscard]] bool isAlive() const override { return m_extension->isAvailable(); }
    [[nodiscard]] std::optional<Window> activeWindow() override;

private:
    std::shared_ptr<ShellExtension> m_extension;
};

} // namespace Velloro
