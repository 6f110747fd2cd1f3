"""A private desktop with a Wayland compositor in place of the X server and its window manager."""

import os
import subprocess

from .desktop import PrivateDesktop
from .errors import MissingComponent
from .wayland_user import WaylandUser

# For compositors that refuse to be root's: the same user by another number.
AS_USER = ["unshare", "--user", "--map-user=1000", "--map-group=1000", "--"]


class WaylandDesktop(PrivateDesktop):
    """What the compositors have in common. A descendant names the compositor's command and makes
    the user's devices."""

    components = ["Xwayland", "dbus-update-activation-environment"]
    user_class = WaylandUser
    # What the session tells its programs.
    session = {}
    socket = "wayland-1"

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.devices = None
        self._bus = None

    def __enter__(self):
        if os.geteuid() == 0 and subprocess.run([*AS_USER, "true"], check=False).returncode:
            raise MissingComponent("no user namespaces, and compositors are not for root")
        return super().__enter__()

    def close(self):
        if self.devices:
            self.devices.close()
            self.devices = None
        if self._bus:
            self._bus.close()
            self._bus = None
        super().close()

    def _make_home(self):
        super()._make_home()
        for name in ("QT_QPA_PLATFORM", "XAUTHORITY"):
            del self.environment[name]
        self.environment.update(self.session, XDG_SESSION_TYPE="wayland",
                                LIBGL_ALWAYS_SOFTWARE="1")

    def _start_services(self):
        self.start_sound(wait=False)
        self._make_display_folder()
        self._start_bus()
        self._wait_for_bus()
        self._prepare()
        self.start_service("compositor", self._command())
        self._wait_until("compositor", self.display_socket.exists, "the compositor")
        self.environment["WAYLAND_DISPLAY"] = self.socket
        self.environment["DISPLAY"] = self._x11_display()
        # Toolkits take a window for active only where the seat has a keyboard.
        self.devices = self._make_devices()
        self.run(["dbus-update-activation-environment", "--all"])
        self.start_accessibility()
        self._wait_for_sound()

    @property
    def display_socket(self):
        return self.runtime / self.socket

    # --- for the descendants ----------------------------------------------------------------------

    def _prepare(self):
        """Starts what the compositor needs."""

    def _command(self):
        """The compositor's command line."""
        raise NotImplementedError

    def _x11_display(self):
        """The name of the X server beside the compositor."""
        raise NotImplementedError

    def _make_devices(self):
        """The user's devices (see input_devices.py)."""
        raise NotImplementedError

    def focused_window(self):
        """Something that is different for each window and each process, or None if no window has
        the focus."""
        raise NotImplementedError

    def pixels(self, x, y, width, height):
        """What the screen shows there, as a portable pixmap."""
        return subprocess.run(["grim", "-g", f"{x},{y} {width}x{height}", "-t", "ppm", "-"],
                              env=self.environment, check=True, timeout=10,
                              stdout=subprocess.PIPE).stdout

    def bus(self):
        """Its session bus."""
        if not self._bus:
            # Its library is Debian's, for Debian's Python.
            from .session_bus import SessionBus
            self._bus = SessionBus(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        return self._bus

    @staticmethod
    def _unprivileged(command):
        return AS_USER + command if os.geteuid() == 0 else command
