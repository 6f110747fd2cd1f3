"""Speech becomes text in the applications of a Wayland session, native ones and those of X11."""

from desktop_case import JFK, JFK_WORDS, PHRASE_WORDS, DesktopCase, main
from streaming_case import StreamingCase
from velloro_tools.desktop import wait_for
from wayland_case import OnSway

COPIED = "what the user had copied, ä and 👍🏽"


class WaylandDictationTest(OnSway, DesktopCase):
    components = ["foot", "xterm", "zenity", "wl-copy"]

    def check_field(self, command):
        self.user.open(command)
        self.user.wait_for_focus()
        window = self.user.active_window()
        self.assertFalse(self.microphone_is_open())

        mark = self.start_recording()
        self.assertTrue(self.microphone_is_open())
        self.user.speak(JFK)
        self.assertEqual(self.user.active_window(), window)
        final = self.end_recording(mark)

        self.assertFalse(self.microphone_is_open())
        self.assert_words(final, JFK_WORDS)
        # The hotkey itself leaves nothing in the field, although it was held for long.
        self.user.wait_for_text(final)
        self.assertEqual(self.user.active_window(), window)

    def test_fields_that_can_be_written_to(self):
        self.start_velloro()
        self.check_field(["zenity", "--entry"])
        self.check_field(["env", "GDK_BACKEND=x11", "zenity", "--entry"])

    def test_toggle_over_a_selection(self):
        self.start_velloro(recordingMode="Toggle")
        self.user.open(["zenity", "--entry", "--entry-text", "Grüße 👍🏽"])
        self.user.wait_for_focus()
        self.user.keys("tap", "Home", "down", "Shift_L", *["tap", "Right"] * 5, "up", "Shift_L")
        mark = self.velloro.mark()
        self.user.keys("tap", "Alt_L", "space")
        self.velloro.wait_for("[Dictation] Started recording ", since=mark)
        self.user.speak(self.phrase())
        self.user.keys("tap", "Alt_L", "space")
        final = self.finish(mark)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(f"{final} 👍🏽")

    def test_terminals_through_the_clipboard(self):
        self.start_velloro()
        for terminal in ("foot", "xterm"):
            with self.subTest(terminal):
                self.user.open_terminal(terminal)
                self.user.copy(COPIED)
                final = self.dictate()
                self.assert_words(final, PHRASE_WORDS)
                wait_for(lambda final=final: "$ " + final in self.user.terminal_text(),
                         "the words at the prompt")
                wait_for(lambda: self.user.clipboard() == COPIED, "the user's own clipboard",
                         timeout=2)
                # Typed, not sent: the shell has not answered.
                self.assertEqual(self.user.terminal_text(), "$ " + final)


class WaylandStreamingTest(OnSway, StreamingCase):
    components = ["foot", "mousepad", "wl-copy"]

    def test_editor(self):
        self.start_streaming()
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        final = self.dictate_and_check(self.user.focused_text)
        # Nothing comes after the words but what the user types.
        self.user.keys("tap", "x")
        self.user.wait_for_text(final + "x")

    def test_terminal(self):
        self.start_streaming()
        self.user.open_terminal("foot")
        self.user.copy(COPIED)
        mark = self.start_recording()
        self.user.speak(JFK)
        # What was typed meanwhile may be in it or not: nobody tells what else the user typed.
        final = self.end_recording(mark)
        self.assert_words(final, JFK_WORDS)
        wait_for(lambda: self.user.terminal_line() == final, "the final text alone")
        wait_for(lambda: self.user.clipboard() == COPIED, "the user's own clipboard", timeout=2)
        self.user.keys("tap", "x")
        wait_for(lambda: self.user.terminal_line() == final + "x", "the user's own letter")


if __name__ == "__main__":
    main()
