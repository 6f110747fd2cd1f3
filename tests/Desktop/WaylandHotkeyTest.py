"""The hotkey on sway, which holds it for the program."""

import signal

from desktop_case import PHRASE_WORDS, RECORDING, DesktopCase, main
from velloro_tools.desktop import DesktopError, wait_for
from wayland_case import ListeningWindow, OnSway

NOT_REGISTERED = "[HotkeyManager] Failed to register hotkey: "


class WaylandHotkeyTest(OnSway, DesktopCase):
    components = ["zenity", "foot"]

    def open_entry(self):
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()

    def dictate_into_entry(self):
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.user.keys("tap", "Control_L", "a", "tap", "BackSpace")
        self.user.wait_for_text("")

    def test_no_part_of_it_reaches_the_application(self):
        self.start_velloro(requireTextFieldFocus=False)
        window = ListeningWindow(self.user)
        self.dictate()
        self.user.keys("tap", "x")
        wait_for(lambda: "x" in (one["text"] for one in window.events("key")), "the key after it")
        texts = "".join(one["text"] for one in window.events("key"))
        self.assertNotIn(" ", texts)
        self.assertEqual(len(window.events("focus")), 1)

    def test_another_key_while_it_is_held_loses_nothing(self):
        self.start_velloro()
        self.open_entry()
        mark = self.start_recording()
        self.user.speak(self.phrase())
        # The compositor forgets to tell of the release then.
        self.user.keys("tap", "F9")
        self.user.release()
        self.end_if_it_goes_on(mark)
        final = self.finish(mark)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assertFalse(self.microphone_is_open())
        self.assertEqual(self.velloro.lines.count(RECORDING), 1)

        self.user.keys("tap", "Control_L", "a", "tap", "BackSpace")
        self.dictate_into_entry()

    def end_if_it_goes_on(self, mark):
        """What a user does who sees the pill after the release."""
        try:
            self.velloro.wait_for("[AudioCapture] Stopped recording", since=mark, timeout=2)
        except DesktopError:
            self.user.press()
            self.user.release()

    def test_it_is_bound_again_after_a_reload(self):
        self.start_velloro()
        self.open_entry()
        self.desktop.message("reload")
        mark = self.velloro.mark()

        def begins():
            self.user.press()
            try:
                return self.velloro.wait_for(RECORDING, since=mark, timeout=1)
            except DesktopError:
                self.user.release()
                return None
        wait_for(begins, "a recording after the reload")
        self.user.speak(self.phrase())
        final = self.end_recording(mark)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)

    def test_it_is_given_back_at_the_end_and_taken_again(self):
        for end in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(end):
                self.start_velloro()
                window = ListeningWindow(self.user)
                self.dictate()
                self.assertFalse(window.events("space"))
                self.velloro.stop(end)
                if end == signal.SIGTERM:
                    self.user.keys("tap", "Alt_L", "space")
                    window.wait_for("space")
                window.process.terminate()
                window.process.wait()
        self.start_velloro()
        self.open_entry()
        self.dictate_into_entry()


class TakenHotkeyTest(OnSway, DesktopCase):
    def setUp(self):
        super().setUp()
        self.used = self.desktop.home / "used"

    def test_a_combination_of_the_configuration_stays_the_users(self):
        self.desktop.configure(f"bindsym Mod1+space exec touch {self.used}")
        self.velloro.set_up(requireTextFieldFocus=False)
        self.velloro.start(until=NOT_REGISTERED)
        self.check_that_it_is_the_users()
        self.velloro.stop()
        self.check_that_it_is_the_users()

    def check_that_it_is_the_users(self):
        self.user.keys("tap", "Alt_L", "space")
        wait_for(self.used.exists, "what the user's own combination does")
        self.used.unlink()


if __name__ == "__main__":
    main()
