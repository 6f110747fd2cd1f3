#include "Platform/Linux/Wayland/Gnome/ShellStrokes.h"

#include <linux/input-event-codes.h>

namespace Velloro {

ShellStrokes::ShellStrokes(std::shared_ptr<ShellExtension> extension)
    : m_extension(std::move(extension))
{
}

bool ShellStrokes::press(const Stroke &stroke)
{
    QList<uint32_t> keys;
    if (stroke.isWithControl)
        keys << KEY_LEFTCTRL;
    if (stroke.isWithShift)
        keys << KEY_LEFTSHIFT;
    return m_extension->stroke(keys << stroke.key);
}

} // namespace Velloro
