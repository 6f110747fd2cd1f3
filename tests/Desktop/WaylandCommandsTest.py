"""A compositor that tells no program of keys: the user's own configuration presses the hotkey by
commands."""

from desktop_case import PHRASE_WORDS, RECORDING, DesktopCase, main
from velloro_tools.desktop import PhocDesktop, wait_for


class WaylandCommandsTest(DesktopCase):
    components = ["foot", "zenity", "wl-copy"]

    def make_desktop(self):
        return PhocDesktop()

    def setUp(self):
        super().setUp()
        self.velloro.set_up(model=self.model, model_file=self.present[self.model])

    def start(self, **settings):
        self.velloro.set_up(**settings)
        mark = self.velloro.mark()
        self.velloro.start(until="[WhisperManager] Loaded model: ")
        return mark

    def dictate_by(self, begin, end):
        mark = self.velloro.mark()
        self.assertEqual(self.velloro.command(begin), 0)
        self.velloro.wait_for(RECORDING, since=mark)
        self.assertTrue(self.microphone_is_open())
        self.user.speak(self.phrase())
        self.assertEqual(self.velloro.command(end), 0)
        final = self.finish(mark)
        self.assertFalse(self.microphone_is_open())
        self.assert_words(final, PHRASE_WORDS)
        return final

    def test_into_a_field_and_a_terminal(self):
        self.start()
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        window = self.user.active_window()
        self.user.wait_for_text(self.dictate_by("--press", "--release"))
        self.assertEqual(self.user.active_window(), window)

        self.user.open_terminal("foot")
        self.user.copy("copied before")
        final = self.dictate_by("--toggle", "--toggle")
        wait_for(lambda: "$ " + final in self.user.terminal_text(), "the words at the prompt")
        wait_for(lambda: self.user.clipboard() == "copied before", "the user's own clipboard",
                 timeout=2)

    def test_with_the_hotkey_as_a_switch(self):
        self.start(recordingMode="Toggle")
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        mark = self.velloro.mark()
        self.velloro.command("--press")
        self.velloro.wait_for(RECORDING, since=mark)
        # Where the key is a switch, its release means nothing.
        self.velloro.command("--release")
        self.user.speak(self.phrase())
        self.velloro.command("--press")
        self.velloro.command("--release")
        self.user.wait_for_text(self.finish(mark))

    def test_without_the_program_they_say_so(self):
        for verb in ("--press", "--release", "--toggle"):
            self.assertNotEqual(self.velloro.command(verb), 0)


if __name__ == "__main__":
    main()
