"""Dictation on GNOME Shell as it is installed: the user's own shortcut runs the commands."""

from desktop_case import PHRASE_WORDS, DesktopCase, main
from velloro_tools.desktop import GnomeDesktop, wait_for


class GnomeDictationTest(DesktopCase):
    components = ["zenity", "foot", "xclip"]

    def make_desktop(self):
        return GnomeDesktop()

    def setUp(self):
        super().setUp()
        self.velloro.set_up(model=self.model, model_file=self.present[self.model])
        self.velloro.start(until="[WhisperManager] Loaded model: ")

    def dictate(self):
        mark = self.velloro.mark()
        self.assertEqual(self.velloro.command("--toggle"), 0)
        self.velloro.wait_for("[Dictation] Started recording ", since=mark)
        self.user.speak(self.phrase())
        self.assertEqual(self.velloro.command("--toggle"), 0)
        final = self.finish(mark)
        self.assert_words(final, PHRASE_WORDS)
        return final

    def test_a_field(self):
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        window = self.user.active_window()
        self.user.wait_for_text(self.dictate())
        self.assertEqual(self.user.active_window(), window)

    def test_no_word_for_a_terminal_is_lost(self):
        self.user.open_terminal("foot")
        self.user.copy("copied before")
        final = self.dictate()
        wait_for(lambda: "$ " + final in self.user.terminal_text()
                 or self.user.clipboard() == final, "the words at the prompt or on the clipboard")
        if "$ " + final in self.user.terminal_text():
            self.assertEqual(self.user.clipboard(), "copied before")

    def test_repetitions_of_a_held_shortcut_count_once(self):
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        mark = self.velloro.mark()
        for _ in range(10):
            self.velloro.command("--toggle")
        self.velloro.wait_for("[Dictation] Started recording ", since=mark)
        self.user.speak(self.phrase())
        self.assertTrue(self.microphone_is_open())
        self.velloro.command("--toggle")
        self.assert_words(self.finish(mark), PHRASE_WORDS)


if __name__ == "__main__":
    main()
