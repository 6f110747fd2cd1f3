#include "Platform/Linux/Wayland/Gnome/ShellKeyboardEvents.h"

#include <utility>

namespace Velloro {

ShellKeyboardEvents::ShellKeyboardEvents(std::shared_ptr<ShellExtension> extension,
                                         std::unique_ptr<KeyboardEvents> withExtension,
                                         std::unique_ptr<KeyboardEvents> withoutExtension)
    : m_extension(std::move(extension))
    , m_withExtension(std::move(withExtension))
    , m_withoutExtension(std::move(withoutExtension))
    , m_inUse(m_withoutExtension.get())
{
}

bool ShellKeyboardEvents::post(uint32_t keyCode, bool keyDown, uint64_t flags)
{
    if (keyDown)
        m_inUse = (m_extension->isAvailable() ? m_withExtension : m_withoutExtension).get();
    return m_inUse->post(keyCode, keyDown, flags);
}

void ShellKeyboardEvents::pause(std::chrono::microseconds duration)
{
    m_inUse->pause(duration);
}

} // namespace Velloro
