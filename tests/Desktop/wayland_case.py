"""What the tests on a Wayland compositor share."""

import itertools
import json
import pathlib

from velloro_tools.desktop import SwayDesktop, wait_for

LISTENING_WINDOW = pathlib.Path(__file__).with_name("listening_window.py")


class OnSway:
    """Before the case that it is mixed into: the desktop is sway's."""

    def make_desktop(self):
        return SwayDesktop()


class ListeningWindow:
    """The window of listening_window.py, which has the focus then."""

    _numbers = itertools.count()

    def __init__(self, user):
        self._desktop = user.desktop
        # None reads what another has printed.
        self._log = f"listening-{next(self._numbers)}"
        self.process = user.open(["/usr/bin/python3", LISTENING_WINDOW], log=self._log)
        self.wait_for("focus")

    def events(self, kind):
        lines = self._desktop.log(self._log).splitlines()
        return [event for event in map(json.loads, lines) if event["kind"] == kind]

    def wait_for(self, kind, count=1):
        return wait_for(lambda: len(self.events(kind)) >= count and self.events(kind),
                        f"the window's event {kind!r}")
