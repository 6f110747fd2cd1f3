#pragma once

#include "Platform/Linux/X11/Keyboard/X11Keyboards.h"
#include "Platform/Linux/X11/Keyboard/X11Keymap.h"

#include <memory>

namespace Velloro {

/// Whether another program has the X server's keyboard to itself.
class X11KeyboardGrab
{
public:
    explicit X11KeyboardGrab(std::shared_ptr<X11Connection> connection);
    ~X11KeyboardGrab();

    X11KeyboardGrab(const X11KeyboardGrab &) = delete;
    X11KeyboardGrab &operator=(const X11KeyboardGrab &) = delete;

    /// Whether another program has the keyboard now, for whatever reason.
    [[nodiscard]] bool isGrabbed();
    /// A grab that a held modifier has set off (a desktop that waits for a tap on Super) does not
    /// count. Where there is a grab, it is told apart by releasing for the applications the
    /// modifiers that another program waits for, and waiting 0.1 s at most for the grab's end.
    [[nodiscard]] bool isHeldByAnother();

private:
    /// Whether a press of the key gives another program the keyboard.
    [[nodiscard]] bool setsOffGrab(uint8_t keycode);

    std::shared_ptr<X11Connection> m_connection;
    X11Keymap m_keymap;
    X11Keyboards m_keyboards;
    /// Never shown.
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

} // namespace Velloro
