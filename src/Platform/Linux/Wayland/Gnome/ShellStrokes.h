#pragma once

#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"
#include "Platform/Linux/Wayland/Keyboard/StrokeSender.h"

#include <memory>

namespace Velloro {

/// Presses keys by our extension of GNOME Shell.
class ShellStrokes final : public StrokeSender
{
public:
    explicit ShellStrokes(std::shared_ptr<ShellExtension> extension);

    [[nodiscard]] bool press(const Stroke &stroke) override;
    /// The extension has released the keys already.
    void release(const Stroke &) override {}

private:
    std::shared_ptr<ShellExtension> m_extension;
};

} // namespace Velloro
