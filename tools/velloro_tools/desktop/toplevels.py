"""The windows of a wlroots compositor, as it tells its task bars."""

from .wayland_client import WaylandClient

MANAGER_TOPLEVEL = 0
STATE, CLOSED = 4, 6
ACTIVATED = 2


class Toplevels:
    def __init__(self, path):
        self._client = WaylandClient(path)
        self._windows = {}
        self._client.bind("zwlr_foreign_toplevel_manager_v1", 3, self._manager_event)

    def close(self):
        self._client.close()

    def active(self):
        """The number of the window that has the focus, or None."""
        self._client.roundtrip()
        return next((number for number, states in self._windows.items() if ACTIVATED in states),
                    None)

    def _manager_event(self, event):
        if event.opcode == MANAGER_TOPLEVEL:
            number = event.number()
            self._windows[number] = []
            self._client.handle(number, lambda event: self._window_event(number, event))

    def _window_event(self, number, event):
        if event.opcode == STATE:
            self._windows[number] = event.numbers()
        elif event.opcode == CLOSED:
            self._windows.pop(number, None)
