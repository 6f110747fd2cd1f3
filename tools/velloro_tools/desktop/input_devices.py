"""The user's keyboard and pointer on a compositor, each by the way that it offers to programs.

All devices have the same three methods: `key(name, is_down)` with a keysym's name, `move(x, y)` in
pixels of the whole desktop, `button(number, is_down)` with X's numbers. Each returns when the
compositor has dealt with it.
"""

import os
import time

from .errors import DesktopError, wait_for
from .wayland_client import File, WaylandClient, anonymous_file

# Where the keys are on the usual keyboard, by the kernel's numbers.
KEYS = {
    "Escape": 1, "BackSpace": 14, "Tab": 15, "Return": 28, "Control_L": 29, "Shift_L": 42,
    "Alt_L": 56, "space": 57, "Caps_Lock": 58, "F9": 67, "Home": 102, "Up": 103, "Left": 105,
    "Right": 106, "End": 107, "Down": 108, "Insert": 110, "Delete": 111, "Super_L": 125,
    **{str(digit): 1 + digit for digit in range(1, 10)}, "0": 11,
    **{letter: first + place for first, row in ((16, "qwertyuiop"), (30, "asdfghjkl"),
                                                (44, "zxcvbnm"))
       for place, letter in enumerate(row)}}
BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}
MODIFIERS = {"Shift_L": 1, "Control_L": 4, "Alt_L": 8, "Super_L": 64}

# Between two keys of somebody who types quickly, in seconds.
FINGERS = 0.03

REMOTE_DESKTOP = "org.gnome.Mutter.RemoteDesktop"

KEYMAP = b"""xkb_keymap {
    xkb_keycodes { include "evdev+aliases(qwerty)" };
    xkb_types { include "complete" };
    xkb_compat { include "complete" };
    xkb_symbols { include "pc+us+inet(evdev)" };
};\0"""
KEYMAP_FORMAT_TEXT = 1

CREATE_VIRTUAL_KEYBOARD = 0
KEYBOARD_KEYMAP, KEYBOARD_KEY, KEYBOARD_MODIFIERS = 0, 1, 2
CREATE_VIRTUAL_POINTER = 0
POINTER_MOTION_ABSOLUTE, POINTER_BUTTON, POINTER_FRAME = 1, 2, 4
FAKE_AUTHENTICATE, FAKE_BUTTON, FAKE_MOTION_ABSOLUTE, FAKE_KEY = 0, 2, 9, 10


def code_of(key):
    if key not in KEYS:
        raise DesktopError(f"the keyboard has no key {key!r}")
    return KEYS[key]


def now():
    """The time as devices tell it, in milliseconds."""
    return time.monotonic_ns() // 1_000_000 & 0xffffffff


class WlrootsDevices:
    """Virtual devices of the wlroots compositors. `size` tells the size of the whole desktop."""

    def __init__(self, path, size):
        self._client = WaylandClient(path)
        self._size = size
        self._held = 0
        seat = self._client.bind("wl_seat", 1)
        manager = self._client.bind("zwp_virtual_keyboard_manager_v1", 1)
        self._keyboard = self._client.make()
        self._client.request(manager, CREATE_VIRTUAL_KEYBOARD, seat, self._keyboard)
        manager = self._client.bind("zwlr_virtual_pointer_manager_v1", 1)
        self._pointer = self._client.make()
        self._client.request(manager, CREATE_VIRTUAL_POINTER, seat, self._pointer)
        keymap = anonymous_file(KEYMAP)
        self._client.request(self._keyboard, KEYBOARD_KEYMAP, KEYMAP_FORMAT_TEXT, File(keymap),
                             len(KEYMAP))
        os.close(keymap)
        self._client.roundtrip()

    def close(self):
        self._client.close()

    def key(self, name, is_down):
        self._client.request(self._keyboard, KEYBOARD_KEY, now(), code_of(name), int(is_down))
        if modifier := MODIFIERS.get(name):
            self._held = self._held | modifier if is_down else self._held & ~modifier
            # The compositor derives none from the keys.
            self._client.request(self._keyboard, KEYBOARD_MODIFIERS, self._held, 0, 0, 0)
        self._client.roundtrip()

    def move(self, x, y):
        self._client.request(self._pointer, POINTER_MOTION_ABSOLUTE, now(), x, y, *self._size())
        self._client.request(self._pointer, POINTER_FRAME)
        self._client.roundtrip()

    def button(self, number, is_down):
        self._client.request(self._pointer, POINTER_BUTTON, now(), BUTTONS[number], int(is_down))
        self._client.request(self._pointer, POINTER_FRAME)
        self._client.roundtrip()


class KwinDevices:
    """KWin's input for testing."""

    def __init__(self, path):
        self._client = WaylandClient(path)
        self._devices = self._client.bind("org_kde_kwin_fake_input", 4)
        self._client.request(self._devices, FAKE_AUTHENTICATE, "the user", "types and clicks")
        self._client.roundtrip()

    def close(self):
        self._client.close()

    def key(self, name, is_down):
        self._request(FAKE_KEY, code_of(name), int(is_down))

    def move(self, x, y):
        self._request(FAKE_MOTION_ABSOLUTE, float(x), float(y))

    def button(self, number, is_down):
        self._request(FAKE_BUTTON, BUTTONS[number], int(is_down))

    def _request(self, opcode, *arguments):
        self._client.request(self._devices, opcode, *arguments)
        self._client.roundtrip()


class MutterDevices:
    """GNOME's input for whoever shows a desktop from afar. `pointer` tells where the pointer is."""

    def __init__(self, bus, pointer):
        self._bus = bus
        self._pointer = pointer
        self._session, = bus.call(REMOTE_DESKTOP, "/org/gnome/Mutter/RemoteDesktop",
                                  f"{REMOTE_DESKTOP}.CreateSession")
        self._call("Start")

    def close(self):
        self._call("Stop")

    def key(self, name, is_down):
        self._call("NotifyKeyboardKeycode", "(ub)", code_of(name), is_down)
        # The input method answers each key in its own time, which nobody is told.
        time.sleep(FINGERS)

    def move(self, x, y):
        here = self._pointer()
        self._call("NotifyPointerMotionRelative", "(dd)", float(x - here[0]), float(y - here[1]))
        wait_for(lambda: tuple(self._pointer()) == (x, y), "the pointer's arrival")

    def button(self, number, is_down):
        self._call("NotifyPointerButton", "(ib)", BUTTONS[number], is_down)

    def _call(self, member, signature="()", *arguments):
        self._bus.call(REMOTE_DESKTOP, self._session, f"{REMOTE_DESKTOP}.Session.{member}",
                       signature, arguments)
