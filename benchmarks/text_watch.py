"""On the desktop: presses the hotkey when told to, and tells when text was changed anywhere.

Reads "down" and "up" from standard input. Prints lines of a word and a time in seconds of the
monotonic clock: "down" and "up" when the last key was pressed or released, "text" when the
accessibility bus told that text was inserted.
"""

import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from velloro_tools.desktop import press_key as press  # noqa: E402

KEYS = ("Alt_L", "space")


def tell(word):
    print(word, f"{time.monotonic():.6f}", flush=True)


def main():
    display = press.x11.XOpenDisplay(None)
    press.xi.XIQueryVersion(display, press.byref(press.c_int(2)), press.byref(press.c_int(2)))
    device = press.xi.XOpenDevice(display, press.find_keyboard(display, "Xvfb keyboard"))
    codes = [press.keycode_of(display, key) for key in KEYS]

    def send(code, is_press):
        press.xtst.XTestFakeDeviceKeyEvent(display, device, code, is_press, None, 0, 0)
        press.x11.XSync(display, 0)

    def obey(source, _condition):
        word = source.readline().strip()
        if not word:
            Atspi.event_quit()
            return False
        if word == "down":
            for code in codes:
                send(code, 1)
        else:
            # The release of one key of the combination is what ends the recording.
            send(codes[1], 0)
        tell(word)
        if word == "up":
            send(codes[0], 0)
        return True

    listener = Atspi.EventListener.new(lambda event: tell("text"))
    listener.register("object:text-changed:insert")
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, obey)
    tell("ready")
    Atspi.event_main()


if __name__ == "__main__":
    main()
