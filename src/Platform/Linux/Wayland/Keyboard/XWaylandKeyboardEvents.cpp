#include "Platform/Linux/Wayland/Keyboard/XWaylandKeyboardEvents.h"

#include <utility>

namespace Velloro {

XWaylandKeyboardEvents::XWaylandKeyboardEvents(std::unique_ptr<KeyboardEvents> strokes)
    : m_strokes(std::move(strokes))
    , m_windows(X11Connection::open())
{
}

bool XWaylandKeyboardEvents::post(uint32_t keyCode, bool keyDown, uint64_t flags)
{
    // What is down comes up wherever the focus is.
    if (keyDown && !m_windows.frontmostWindow())
        return false;
    return m_strokes->post(keyCode, keyDown, flags);
}

void XWaylandKeyboardEvents::pause(std::chrono::microseconds duration)
{
    m_strokes->pause(duration);
}

} // namespace Velloro
