"""Prints, as one JSON object, what has the keyboard focus according to the accessibility bus.

As a program on the desktop: `focused_text.py`. Prints null while nothing has the focus. For an
element with text, "text" is all of it, "caret" the offset of the caret, "selection" a pair of
offsets or null.
"""

import json

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402


def focused(element, depth=0):
    """The innermost that has the focus: what surrounds it may say the same of itself."""
    states = element.get_state_set()
    # What is not shown can't have the focus.
    if depth > 2 and not states.contains(Atspi.StateType.SHOWING):
        return None
    for index in range(element.get_child_count()):
        child = element.get_child_at_index(index)
        found = child and focused(child, depth + 1)
        if found:
            return found
    return element if states.contains(Atspi.StateType.FOCUSED) else None


def active_windows():
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if not application:
            continue
        try:
            for number in range(application.get_child_count()):
                window = application.get_child_at_index(number)
                if window and window.get_state_set().contains(Atspi.StateType.ACTIVE):
                    yield application, window
        except GLib.Error:
            pass  # it does not answer, or ended meanwhile


def describe():
    for application, window in active_windows():
        element = focused(window)
        if not element:
            continue
        result = {"application": application.get_name(), "role": element.get_role_name(),
                  "name": element.get_name(), "text": None, "caret": None, "selection": None}
        if "Text" in Atspi.Accessible.get_interfaces(element):
            result["text"] = Atspi.Text.get_text(
                element, 0, Atspi.Text.get_character_count(element))
            result["caret"] = Atspi.Text.get_caret_offset(element)
            if Atspi.Text.get_n_selections(element) > 0:
                selection = Atspi.Text.get_selection(element, 0)
                result["selection"] = [selection.start_offset, selection.end_offset]
        return result
    return None


def main():
    try:
        # The library ends the process when there is no accessibility bus.
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        address, = bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                                 None, None, Gio.DBusCallFlags.NO_AUTO_START, 2000)
        Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT)
        Atspi.set_timeout(1000, 2000)
        print(json.dumps(describe()))
    except GLib.Error:
        print("null")


if __name__ == "__main__":
    main()
