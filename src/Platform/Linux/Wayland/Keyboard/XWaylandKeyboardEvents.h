#pragma once

#include "Platform/KeyboardEvents.h"
#include "Platform/Linux/X11/X11Workspace.h"

#include <memory>

namespace Velloro {

/// The strokes of an X server that runs beside a compositor which lets nobody send strokes of its
/// own: they reach the windows of that server only, so they are not sent while none of these has
/// the focus.
class XWaylandKeyboardEvents final : public KeyboardEvents
{
public:
    explicit XWaylandKeyboardEvents(std::unique_ptr<KeyboardEvents> strokes);

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override;
    void pause(std::chrono::microseconds duration) override;

private:
    std::unique_ptr<KeyboardEvents> m_strokes;
    X11Workspace m_windows;
};

} // namespace Velloro
