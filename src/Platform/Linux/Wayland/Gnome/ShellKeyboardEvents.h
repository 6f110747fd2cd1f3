#pragma once

#include "Platform/KeyboardEvents.h"
#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"

#include <memory>

namespace Velloro {

/// Key strokes on GNOME: by our extension of its shell where the user has enabled that, and
/// otherwise into the windows of the X server beside it.
class ShellKeyboardEvents final : public KeyboardEvents
{
public:
    ShellKeyboardEvents(std::shared_ptr<ShellExtension> extension,
                        std::unique_ptr<KeyboardEvents> withExtension,
                        std::unique_ptr<KeyboardEvents> withoutExtension);

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override;
    void pause(std::chrono::microseconds duration) override;

private:
    std::shared_ptr<ShellExtension> m_extension;
    std::unique_ptr<KeyboardEvents> m_withExtension;
    std::unique_ptr<KeyboardEvents> m_withoutExtension;
    /// The one that pressed last releases, too.
    KeyboardEvents *m_inUse = nullptr;
};

} // namespace Velloro
