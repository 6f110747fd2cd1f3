"""The private desktop of KWin, KDE's compositor."""

import os
import pathlib
import shutil
import sys

from .errors import wait_for
from .input_devices import KwinDevices
from .picture import pixmap
from .wayland_client import WaylandClient
from .wayland_desktop import WaylandDesktop

# What lets a program have interfaces that are not for everyone.
PERMISSION = """[Desktop Entry]
Type=Application
Name={name}
Exec={program}
NoDisplay=true
X-KDE-Wayland-Interfaces={interfaces}
X-KDE-DBUS-Restricted-Interfaces=org.kde.KWin.ScreenShot2
"""
INTERFACES = "org_kde_kwin_fake_input,org_kde_plasma_window_management"

MANAGER_WINDOW, MANAGER_GET_WINDOW = 1, 1
WINDOW_TITLE, WINDOW_STATE, WINDOW_UNMAPPED = 0, 2, 5
ACTIVE = 1


class PlasmaWindows:
    """KWin's windows, as it tells its task bars."""

    def __init__(self, path):
        self._client = WaylandClient(path)
        self._states, self._titles = {}, {}
        # The last version that tells numbers.
        self._manager = self._client.bind("org_kde_plasma_window_management", 12,
                                          self._manager_event)

    def close(self):
        self._client.close()

    def active(self):
        """The number of the window that has the focus, or None."""
        self._refresh()
        return next((number for number, state in self._states.items() if state & ACTIVE), None)

    def titles(self):
        self._refresh()
        return list(self._titles.values())

    def _refresh(self):
        # New windows are told, then asked for what they are.
        self._client.roundtrip()
        self._client.roundtrip()

    def _manager_event(self, event):
        if event.opcode == MANAGER_WINDOW:
            number = event.number()
            window = self._client.make(lambda event: self._window_event(number, event))
            self._client.request(self._manager, MANAGER_GET_WINDOW, window, number)

    def _window_event(self, number, event):
        if event.opcode == WINDOW_TITLE:
            self._titles[number] = event.text()
        elif event.opcode == WINDOW_STATE:
            self._states[number] = event.number()
        elif event.opcode == WINDOW_UNMAPPED:
            self._titles.pop(number, None)
            self._states.pop(number, None)


class KwinDesktop(WaylandDesktop):
    components = [*WaylandDesktop.components, "kwin_wayland"]
    session = {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
               "KDE_SESSION_VERSION": "5"}
    socket = "wayland-0"

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._windows = None

    def close(self):
        if self._windows:
            self._windows.close()
            self._windows = None
        super().close()

    def permit(self, name, program, interfaces=INTERFACES):
        """Lets the program have KWin's interfaces."""
        folder = self.data_home / "applications"
        folder.mkdir(exist_ok=True)
        (folder / f"{name}.desktop").write_text(PERMISSION.format(
            name=name, program=pathlib.Path(program).resolve(), interfaces=interfaces))

    def _prepare(self):
        # The user's devices and eyes are ours. The name is that of a file that Debian has, which
        # says nothing of permissions.
        python = pathlib.Path(sys.executable).resolve()
        self.permit(python.name, python)

    def _command(self):
        # The installed file has a capability that a container may not give.
        program = self.folder / "kwin_wayland"
        shutil.copy(shutil.which("kwin_wayland"), program)
        script = self.folder / "session"
        script.write_text(
            f"#!/bin/sh\necho $DISPLAY > {self.folder}/display\nexec sleep infinity\n")
        script.chmod(0o700)
        width, height = self.size
        return [str(program), "--virtual", "--width", str(width), "--height", str(height),
                "--no-lockscreen", "--no-kactivities", "--socket", self.socket, "--xwayland",
                str(script)]

    def _x11_display(self):
        # Only its children are told.
        answer = self.folder / "display"
        return wait_for(lambda: answer.exists() and answer.read_text().strip(), "the X server")

    def _make_devices(self):
        return KwinDevices(self.display_socket)

    def _seen(self):
        if not self._windows:
            self._windows = PlasmaWindows(self.display_socket)
        return self._windows

    def pixels(self, x, y, width, height):
        reading, writing = os.pipe()
        with open(reading, "rb") as source:
            form, = self.bus().call(
                "org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2.CaptureArea",
                "(iiuua{sv}h)", (x, y, width, height, {}, 0), [writing])
            os.close(writing)
            return pixmap(form["width"], form["height"], form["stride"], source.read())

    def focused_window(self):
        return self._seen().active()

    def window_titles(self):
        return self._seen().titles()
