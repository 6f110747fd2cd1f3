"""Prints, as a JSON list, what the active window shows according to the accessibility bus.

As a program on the desktop: `window_contents.py`. Each element with a name is a dictionary of its
role, name, description and the states that hold: focused, checked. The first element is
the window itself; the list is empty while no window is active.
"""

import json

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from focused_text import active_windows  # noqa: E402

STATES = {"focused": Atspi.StateType.FOCUSED, "checked": Atspi.StateType.CHECKED}


def shown(element):
    states = element.get_state_set()
    yield {"role": element.get_role_name(), "name": element.get_name(),
           "description": element.get_description(),
           "states": [name for name, state in STATES.items() if states.contains(state)]}
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        if child and child.get_state_set().contains(Atspi.StateType.SHOWING):
            yield from shown(child)


def main():
    Atspi.set_timeout(1000, 2000)
    try:
        for _, window in active_windows():
            print(json.dumps([element for element in shown(window) if element["name"]]))
            return
    except GLib.Error:
        pass  # it was closed meanwhile
    print("[]")


if __name__ == "__main__":
    main()
