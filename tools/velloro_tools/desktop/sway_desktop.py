"""The private desktop of sway."""

import json

from .errors import wait_for
from .input_devices import WlrootsDevices
from .wayland_desktop import WaylandDesktop

HEADLESS = {"WLR_BACKENDS": "headless", "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman"}

CONFIGURATION = """xwayland enable
output HEADLESS-1 mode {width}x{height} position 0 0
default_border none
default_floating_border none
focus_on_window_activation focus
"""


class SwayDesktop(WaylandDesktop):
    components = [*WaylandDesktop.components, "sway", "swaymsg", "grim"]
    session = {**HEADLESS, "XDG_CURRENT_DESKTOP": "sway"}

    def _command(self):
        width, height = self.size
        file = self.folder / "sway.conf"
        file.write_text(CONFIGURATION.format(width=width, height=height))
        self.environment["SWAYSOCK"] = str(self.runtime / "sway.sock")
        return self._unprivileged(["sway", "-c", str(file)])

    def _x11_display(self):
        self._wait_until("compositor", (self.runtime / "sway.sock").exists, "sway's socket")
        # Only its children are told.
        answer = self.folder / "display"
        self.message(f"exec echo $DISPLAY > {answer}")
        return wait_for(lambda: answer.exists() and answer.read_text().strip(), "the X server")

    def _make_devices(self):
        return WlrootsDevices(self.display_socket, self._layout_size)

    def add_output(self, place):
        """Another output at the place (x, y, width, height); its name."""
        before = self.outputs()
        self.message("create_output")
        name = wait_for(lambda: next(iter(self.outputs().keys() - before.keys()), None),
                        "the output")
        x, y, width, height = place
        self.message(f"output {name} mode {width}x{height} position {x} {y}")
        wait_for(lambda: self.outputs()[name] == tuple(place), "the output's size")
        return name

    # --- what it tells ----------------------------------------------------------------------------

    def configure(self, lines):
        """Adds lines to sway's configuration and has it read anew."""
        with open(self.folder / "sway.conf", "a") as file:
            file.write(lines + "\n")
        self.message("reload")

    def message(self, command):
        """Has sway do something."""
        return self.run(["swaymsg", command])

    def query(self, what):
        """An answer of sway, such as "get_outputs"."""
        return json.loads(self.run(["swaymsg", "-r", "-t", what]))

    def outputs(self):
        """The place (x, y, width, height) of each output by its name."""
        return {one["name"]: place_of(one) for one in self.query("get_outputs")}

    def _layout_size(self):
        places = self.outputs().values()
        return (max(x + width for x, _, width, _ in places),
                max(y + height for _, y, _, height in places))

    def windows(self):
        """Its windows as sway describes them."""
        def walk(node):
            if node.get("pid"):
                yield node
            for child in node["nodes"] + node["floating_nodes"]:
                yield from walk(child)
        return list(walk(self.query("get_tree")))

    def window_titles(self):
        return [one["name"] for one in self.windows()]

    def places(self, title):
        """The places of the windows with exactly this title."""
        return [place_of(one) for one in self.windows() if one["name"] == title]

    def focused_window(self):
        return next(((one["id"], one["pid"]) for one in self.windows() if one["focused"]), None)


def place_of(node):
    return tuple(node["rect"][key] for key in ("x", "y", "width", "height"))
