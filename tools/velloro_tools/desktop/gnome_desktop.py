"""The private desktop of GNOME Shell."""

import json
import re
import subprocess
import sys

from .errors import wait_for
from .gnome_user import GnomeUser
from .input_devices import MutterDevices
from .wayland_desktop import WaylandDesktop

SHELL = "org.gnome.Shell"
# The shell asks who is logged in.
LOGIN_SERVICE = [sys.executable, "-m", "dbusmock", "--system", "--template", "logind"]

# What the shell has to say of the machine covers what a test looks at.
SETTINGS = """
[org/gnome/desktop/notifications]
show-banners=false
"""


class GnomeDesktop(WaylandDesktop):
    components = [*WaylandDesktop.components, "gnome-shell", "ibus-daemon"]
    user_class = GnomeUser
    session = {"XDG_CURRENT_DESKTOP": "GNOME", "GNOME_SHELL_SESSION_MODE": "user"}
    socket = "wayland-0"

    def _make_home(self):
        super()._make_home()
        with open(self.config_home / "glib-2.0/settings/keyfile", "a") as settings:
            settings.write(SETTINGS)

    def _prepare(self):
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.runtime}/system-bus"
        self.start_service("system-bus", [
            "dbus-daemon", "--session", "--nofork", "--nopidfile",
            "--address=" + self.environment["DBUS_SYSTEM_BUS_ADDRESS"]])
        self._wait_until("system-bus", (self.runtime / "system-bus").exists, "the system bus")
        self.start_service("login", LOGIN_SERVICE)
        wait_for(lambda: "true" in self._output([
            "dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.DBus",
            "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
            "string:org.freedesktop.login1"]), "the login service")

    def _command(self):
        width, height = self.size
        # In its unsafe mode it shows what it looks like, and does as it is told.
        return ["gnome-shell", "--headless", "--virtual-monitor", f"{width}x{height}",
                "--wayland", "--wayland-display", self.socket, "--unsafe-mode"]

    def _x11_display(self):
        self.wait_for_bus_name(SHELL)
        display = wait_for(lambda: re.search(r"public X11 display (:\d+)", self.log("compositor")),
                           "the X server")
        for file in self.runtime.glob(".mutter-Xwaylandauth.*"):
            self.environment["XAUTHORITY"] = str(file)
        return display[1]

    def _make_devices(self):
        self.wait_for_bus_name("org.gnome.Mutter.RemoteDesktop")
        devices = MutterDevices(
            self.bus(), lambda: self.evaluate("global.get_pointer()")[:2])
        wait_for(lambda: self.evaluate("Main.layoutManager._startingUp") is False,
                 "the shell's start")
        # Every key passes through the input method, once it is there.
        wait_for(lambda: self.evaluate("imports.misc.ibusManager.getIBusManager()._ready") is True,
                 "the input method")
        # The keyboard comes with its first key.
        for is_down in (True, False):
            devices.key("Escape", is_down)
        self.evaluate("Main.overview.hide()")
        wait_for(lambda: self.evaluate("Main.overview.visible") is False, "the empty desktop")
        return devices

    def evaluate(self, script):
        """The value of a script of the shell, or None if it has none."""
        _done, value = self.bus().call(SHELL, "/org/gnome/Shell", "org.gnome.Shell.Eval", "(s)",
                                       (script,))
        return json.loads(value) if value else None

    def pixels(self, x, y, width, height):
        picture = self.folder / "screenshot.png"
        self.bus().call("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot",
                        "org.gnome.Shell.Screenshot.ScreenshotArea", "(iiiibs)",
                        (x, y, width, height, False, str(picture)))
        return subprocess.run(["convert", picture, "-depth", "8", "ppm:-"], check=True,
                              timeout=20, stdout=subprocess.PIPE).stdout

    def focused_window(self):
        return self.evaluate("global.display.focus_window?.get_id()")

    def window_titles(self):
        return self.evaluate("global.get_window_actors().map(one => one.meta_window.title)")
