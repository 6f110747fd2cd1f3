"""Presses keys as a user does: on the keyboard itself, not on the XTEST device.

usage: press_key.py [--device NAME] ACTION KEY... [ACTION KEY...]...

ACTION is down (press the keys in order), up (release them in order) or tap (press them in order
and release them in reverse: a chord). KEY is a keysym's name (Alt_L, space, v) or a keycode of at
least two digits (64). Keys that were pressed stay down after the command has ended.

The keyboard is the device with that name, "Xvfb keyboard" unless said otherwise, or failing that
the first keyboard that is not an XTEST one.
"""

import ctypes
import sys
from ctypes import POINTER, Structure, byref, c_char_p, c_int, c_ubyte, c_uint, c_ulong, c_void_p

x11 = ctypes.CDLL("libX11.so.6")
xi = ctypes.CDLL("libXi.so.6")
xtst = ctypes.CDLL("libXtst.so.6")

XI_SLAVE_KEYBOARD = 4
# What a keyboard is while a grab of its own is active, that is while the hotkey is held.
XI_FLOATING_SLAVE = 5
XI_ALL_DEVICES = 0


class XIDeviceInfo(Structure):
    _fields_ = [
        ("deviceid", c_int),
        ("name", c_char_p),
        ("use", c_int),
        ("attachment", c_int),
        ("enabled", c_int),
        ("num_classes", c_int),
        ("classes", c_void_p),
    ]


x11.XOpenDisplay.restype = c_void_p
x11.XOpenDisplay.argtypes = [c_char_p]
x11.XSync.argtypes = [c_void_p, c_int]
x11.XCloseDisplay.argtypes = [c_void_p]
x11.XStringToKeysym.restype = c_ulong
x11.XStringToKeysym.argtypes = [c_char_p]
x11.XKeysymToKeycode.restype = c_ubyte
x11.XKeysymToKeycode.argtypes = [c_void_p, c_ulong]
xi.XIQueryDevice.restype = POINTER(XIDeviceInfo)
xi.XIQueryDevice.argtypes = [c_void_p, c_int, POINTER(c_int)]
xi.XIQueryVersion.argtypes = [c_void_p, POINTER(c_int), POINTER(c_int)]
xi.XOpenDevice.restype = c_void_p
xi.XOpenDevice.argtypes = [c_void_p, c_ulong]
xtst.XTestFakeDeviceKeyEvent.argtypes = [
    c_void_p, c_void_p, c_uint, c_int, c_void_p, c_int, c_ulong]


def find_keyboard(display, wanted):
    count = c_int()
    devices = xi.XIQueryDevice(display, XI_ALL_DEVICES, byref(count))
    keyboards = [(d.deviceid, d.name.decode()) for d in devices[:count.value]
                 if "XTEST" not in d.name.decode()
                 and (d.use == XI_SLAVE_KEYBOARD
                      or d.use == XI_FLOATING_SLAVE and "keyboard" in d.name.decode())]
    for device, name in keyboards:
        if name == wanted:
            return device
    if not keyboards:
        sys.exit("press-key: the X server has no keyboard but the XTEST one")
    return keyboards[0][0]


def keycode_of(display, key):
    if key.isdigit() and len(key) > 1:
        return int(key)
    code = x11.XKeysymToKeycode(display, x11.XStringToKeysym(key.encode()))
    if code == 0:
        sys.exit(f"press-key: no key gives {key!r}")
    return code


def main(arguments):
    wanted = "Xvfb keyboard"
    if arguments[:1] == ["--device"]:
        wanted, arguments = arguments[1], arguments[2:]
    if len(arguments) < 2 or arguments[0] not in ("down", "up", "tap"):
        sys.exit(__doc__)

    actions = []
    for word in arguments:
        if word in ("down", "up", "tap"):
            actions.append((word, []))
        else:
            actions[-1][1].append(word)

    display = x11.XOpenDisplay(None)
    if not display:
        sys.exit("press-key: cannot open the display")
    xi.XIQueryVersion(display, byref(c_int(2)), byref(c_int(2)))
    device = xi.XOpenDevice(display, find_keyboard(display, wanted))

    def send(keycode, is_press):
        xtst.XTestFakeDeviceKeyEvent(display, device, keycode, is_press, None, 0, 0)
        x11.XSync(display, 0)

    for action, keys in actions:
        codes = [keycode_of(display, key) for key in keys]
        if action in ("down", "tap"):
            for code in codes:
                send(code, 1)
        if action == "up":
            for code in codes:
                send(code, 0)
        if action == "tap":
            for code in reversed(codes):
                send(code, 0)
    x11.XCloseDisplay(display)


if __name__ == "__main__":
    main(sys.argv[1:])
