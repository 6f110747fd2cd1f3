"""The main job: speech becomes text in the focused field of a real application."""

from desktop_case import (BUSY, JFK, JFK_WORDS, PHRASE_WORDS, RECORDING, DesktopCase, main)
from velloro_tools.desktop import wait_for


class DictationTest(DesktopCase):
    def test_hold_to_talk_into_an_editor(self):
        self.start_velloro()
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        self.assertFalse(self.microphone_is_open())

        mark = self.start_recording()
        self.assertTrue(self.microphone_is_open())
        self.user.speak(JFK)
        final = self.end_recording(mark)

        self.assertFalse(self.microphone_is_open())
        self.assert_words(final, JFK_WORDS)
        # The hotkey itself leaves nothing in the field, although it was held for long.
        self.user.wait_for_text(final)
        self.assertEqual(sum(line == RECORDING for line in self.velloro.lines), 1)
        self.assertFalse([line for line in self.velloro.lines if line.startswith(BUSY)])

    def test_toggle_in_the_middle_of_text_and_over_a_selection(self):
        self.start_velloro(recordingMode="Toggle")
        self.user.open(["zenity", "--entry", "--entry-text", "Grüße 👍🏽 [here] end"])
        self.user.wait_for_focus()

        def dictate_toggled():
            mark = self.velloro.mark()
            self.user.keys("tap", "Alt_L", "space")
            self.velloro.wait_for(RECORDING, since=mark)
            self.user.speak(self.phrase())
            self.user.keys("tap", "Alt_L", "space")
            return self.finish(mark)

        # Before " end": the caret goes there, then the text.
        self.user.keys("tap", "End", *["tap", "Left"] * 4)
        first = dictate_toggled()
        self.assert_words(first, PHRASE_WORDS)
        self.user.wait_for_text(f"Grüße 👍🏽 [here]{first} end")

        # Over "Grüße": the selection gives way.
        self.user.keys("tap", "Home", "down", "Shift_L", *["tap", "Right"] * 5, "up", "Shift_L")
        second = dictate_toggled()
        self.user.wait_for_text(f"{second} 👍🏽 [here]{first} end")

    def test_terminal_through_the_clipboard(self):
        self.start_velloro()
        self.user.open_terminal()
        copied = "what the user had copied, ä and 👍🏽"
        self.user.copy(copied)

        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: "$ " + final in self.user.terminal_text(), "the words at the prompt")
        wait_for(lambda: self.user.clipboard() == copied, "the user's own clipboard", timeout=2)
        # Typed, not sent: the shell has not answered.
        self.assertEqual(self.user.terminal_text(), "$ " + final)

    def test_the_hotkey_is_the_same_under_locks_and_on_another_layout(self):
        self.start_velloro()
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        self.desktop.run(["setxkbmap", "de,gr", "-option", "grp:caps_toggle"])
        self.user.keys("tap", "Num_Lock", "tap", "Caps_Lock")

        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)


if __name__ == "__main__":
    main()
