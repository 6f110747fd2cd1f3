"""The hotkey from the desktop portal: the installed one, with a back end of the test's."""

import os
import pathlib

from desktop_case import PHRASE_WORDS, RECORDING, DesktopCase, main
from velloro_tools.desktop import PhocDesktop, wait_for

PORTAL = os.environ.get("VELLORO_PORTAL", "/usr/libexec/xdg-desktop-portal")
NAME = "org.freedesktop.portal.Desktop"
BACKEND = "org.freedesktop.impl.portal.desktop.test"
DESCRIPTION = f"""[portal]
DBusName={BACKEND}
Interfaces=org.freedesktop.impl.portal.GlobalShortcuts;
UseIn=test;
"""


class WaylandPortalTest(DesktopCase):
    components = ["zenity", PORTAL]

    def make_desktop(self):
        return PhocDesktop()

    def setUp(self):
        super().setUp()
        folder = self.desktop.folder / "portals"
        folder.mkdir()
        (folder / "test.portal").write_text(DESCRIPTION)
        self.desktop.environment.update(XDG_DESKTOP_PORTAL_DIR=str(folder),
                                        XDG_CURRENT_DESKTOP="test")
        self.desktop.start(
            ["/usr/bin/python3", pathlib.Path(__file__).with_name("portal_backend.py")],
            log="backend")
        self.desktop.wait_for_bus_name(BACKEND)
        self.start_portal()

    def start_portal(self):
        self.desktop.start_service("portal", [PORTAL])
        self.desktop.wait_for_bus_name(NAME)

    def tell(self, method):
        self.desktop.bus().call(BACKEND, "/org/freedesktop/portal/desktop",
                                f"org.velloro.Test.{method}")

    def bound(self):
        """How often a shortcut was bound."""
        return self.desktop.log("backend").count("bound ")

    def start_recording(self):
        mark = self.velloro.mark()
        self.tell("Press")
        self.velloro.wait_for(RECORDING, since=mark)
        return mark

    def end_recording(self, mark):
        self.tell("Release")
        return self.finish(mark)

    def open_entry(self):
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()

    def dictate_into_entry(self):
        self.open_entry()
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)

    def test_press_and_release(self):
        self.start_velloro()
        wait_for(self.bound, "the binding")
        self.assertIn("ALT+space", self.desktop.log("backend"))
        self.dictate_into_entry()

    def test_a_session_that_is_closed_while_the_key_is_held_ends_the_recording(self):
        self.start_velloro()
        wait_for(self.bound, "the binding")
        self.open_entry()
        mark = self.start_recording()
        self.user.speak(self.phrase())
        self.tell("Close")
        final = self.finish(mark)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assertFalse(self.microphone_is_open())

    def test_a_user_who_refuses(self):
        self.tell("Refuse")
        self.velloro.set_up()
        self.velloro.start(until="[HotkeyManager] Failed to register hotkey: ")


if __name__ == "__main__":
    main()
