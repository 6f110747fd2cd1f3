"""The private desktop of phoc: wlroots with no more than its protocols."""

from .errors import wait_for
from .input_devices import WlrootsDevices
from .sway_desktop import HEADLESS
from .toplevels import Toplevels
from .wayland_desktop import WaylandDesktop

CONFIGURATION = """[core]
xwayland=immediate
[output:HEADLESS-1]
mode={width}x{height}
"""


class PhocDesktop(WaylandDesktop):
    components = [*WaylandDesktop.components, "phoc", "grim"]
    session = {**HEADLESS, "XDG_CURRENT_DESKTOP": "phoc"}
    socket = "wayland-0"

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._toplevels = None

    def close(self):
        if self._toplevels:
            self._toplevels.close()
            self._toplevels = None
        super().close()

    def _command(self):
        width, height = self.size
        file = self.folder / "phoc.ini"
        file.write_text(CONFIGURATION.format(width=width, height=height))
        # It ends with its session.
        session = self.folder / "session"
        session.write_text(f"echo $DISPLAY > {self.folder}/display\nexec sleep infinity\n")
        return ["phoc", "-C", str(file), "-E", f"sh {session}"]

    def _x11_display(self):
        # Only its children are told.
        answer = self.folder / "display"
        return wait_for(lambda: answer.exists() and answer.read_text().strip(), "the X server")

    def _make_devices(self):
        return WlrootsDevices(self.display_socket, lambda: self.size)

    def focused_window(self):
        if not self._toplevels:
            self._toplevels = Toplevels(self.display_socket)
        return self._toplevels.active()
