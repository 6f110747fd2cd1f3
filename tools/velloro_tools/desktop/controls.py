"""Prints, as a JSON array, the controls of the active window according to the accessibility bus.

As a program on the desktop: `controls.py`. In reading order: whatever can have the keyboard, each
with its role, name, the name of what is around it, whether it has the keyboard and its place on
the screen.
"""

import json

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from focused_text import active_windows  # noqa: E402


def controls(element, within=None):
    states = element.get_state_set()
    if within is not None and states.contains(Atspi.StateType.FOCUSABLE) \
            and states.contains(Atspi.StateType.VISIBLE) \
            and states.contains(Atspi.StateType.ENABLED) \
            and element.get_role() != Atspi.Role.LABEL:
        place = element.get_extents(Atspi.CoordType.SCREEN)
        yield {"role": element.get_role_name(), "name": element.get_name(), "within": within,
               "focused": states.contains(Atspi.StateType.FOCUSED),
               "place": [place.x, place.y, place.width, place.height]}
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        if child:
            yield from controls(child, element.get_name() or within or "")


def main():
    found = []
    try:
        Atspi.set_timeout(1000, 2000)
        for _application, window in active_windows():
            found = list(controls(window))
    except GLib.Error:
        pass  # the window went away meanwhile
    print(json.dumps(found))


if __name__ == "__main__":
    main()
