"""Runs a command on a private desktop, without a screen, a sound card or a session of one's own.

The desktop has a display (an X server with a window manager that takes no keys, or the Wayland
compositor that is named), a session bus, an accessibility bus and a sound server whose default
source "microphone" hears what is played into the sink "voice" (`paplay -d voice FILE`). Home and
settings are temporary. All of it ends with the command; its exit status is returned.
"""

import argparse
import signal
import subprocess
import sys

from .desktop import DESKTOPS, DesktopError, MissingComponent

NOT_INSTALLED = 77


def interrupted(number, _frame):
    sys.exit(128 + number)


def main():
    parser = argparse.ArgumentParser(prog="tools/private-desktop", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--desktop", choices=DESKTOPS, default="x11", metavar="NAME",
                        help="one of " + ", ".join(DESKTOPS))
    parser.add_argument("--screen", default="1280x800", metavar="WxH")
    parser.add_argument("command", nargs=argparse.REMAINDER, metavar="-- COMMAND...")
    arguments = parser.parse_args()
    command = arguments.command[1:] if arguments.command[:1] == ["--"] else arguments.command
    if not command:
        parser.error("no command given")

    size = tuple(map(int, arguments.screen.split("x")))

    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupted)
    try:
        with DESKTOPS[arguments.desktop](size) as desktop:
            process = subprocess.Popen(command, env=desktop.environment)
            if signal.getsignal(signal.SIGINT) is signal.default_int_handler:
                # The command gets an interruption too, and decides.
                signal.signal(signal.SIGINT, lambda *_: None)
            status = process.wait()
            return status if status >= 0 else 128 - status
    except MissingComponent as error:
        print(f"private-desktop: [  SKIPPED ] {error}", file=sys.stderr)
        return NOT_INSTALLED
    except (DesktopError, OSError) as error:
        print(f"private-desktop: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 128 + signal.SIGINT


if __name__ == "__main__":
    sys.exit(main())
