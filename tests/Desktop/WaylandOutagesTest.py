"""A Wayland session that lacks something: no word is lost, no microphone is left open, and the user
is told."""

from desktop_case import PHRASE_WORDS, DesktopCase, main
from velloro_tools.desktop import wait_for
from velloro_tools.desktop.wayland_filter import WaylandFilter
from wayland_case import OnSway

STROKES = ["zwp_virtual_keyboard_manager_v1"]
CLIPBOARD = ["zwlr_data_control_manager_v1", "ext_data_control_manager_v1"]
LAYERS = ["zwlr_layer_shell_v1"]
WINDOWS = ["zwlr_foreign_toplevel_manager_v1"]


class WaylandOutagesTest(OnSway, DesktopCase):
    components = ["foot", "zenity", "xterm", "wl-copy"]

    def hide(self, *interfaces):
        """Hides them from Velloro, and from nobody else."""
        path = self.desktop.runtime / "filtered-0"
        filtered = WaylandFilter(path, self.desktop.display_socket, interfaces)
        self.addCleanup(filtered.close)
        self.velloro.environment["WAYLAND_DISPLAY"] = path.name

    def start_anyhow(self):
        """Starts it where the hotkey may be refused."""
        self.user.watch_notifications()
        self.velloro.set_up(model=self.model, model_file=self.present[self.model])
        self.velloro.start(until="[WhisperManager] Loaded model: ")

    def dictate_by_commands(self):
        mark = self.velloro.mark()
        self.assertEqual(self.velloro.command("--press"), 0)
        self.velloro.wait_for("[Dictation] Started recording ", since=mark)
        self.user.speak(self.phrase())
        self.assertEqual(self.velloro.command("--release"), 0)
        return self.finish(mark)

    def assert_told(self, final):
        told = wait_for(lambda: [one for one in self.user.notifications()
                                 if "clipboard" in one["body"]], "the notification", timeout=5)
        self.assertEqual(len(told), 1)
        self.assertEqual(self.velloro.history()[:1], [final])

    def test_words_that_cannot_be_pasted_stay_on_the_clipboard(self):
        self.hide(*STROKES)
        self.start_anyhow()
        self.user.open_terminal("foot")
        self.user.copy("copied before")
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: self.user.clipboard() == final, "the words on the clipboard")
        self.assert_told(final)
        self.assertEqual(self.user.terminal_text(), "$ ")
        # The user pastes them.
        self.user.keys("tap", "Control_L", "Shift_L", "v")
        wait_for(lambda: "$ " + final in self.user.terminal_text(), "the words in the terminal")

        # Fields that can be written to are as ever.
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        self.user.wait_for_text(self.dictate())

    def test_a_compositor_with_nothing_for_it(self):
        self.hide(*STROKES, *CLIPBOARD, *LAYERS, *WINDOWS)
        self.velloro.environment["SWAYSOCK"] = None
        self.start_anyhow()
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        final = self.dictate_by_commands()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)

        self.user.open_terminal("foot")
        final = self.dictate_by_commands()
        self.assert_words(final, PHRASE_WORDS)
        self.assertEqual(self.velloro.history()[:1], [final])
        wait_for(lambda: self.user.notifications(), "the notification", timeout=5)
        self.assertEqual(self.user.terminal_text(), "$ ")

    def test_on_x11_windows_only_a_hold_ends_with_their_focus(self):
        self.velloro.environment["SWAYSOCK"] = None
        self.start_velloro()
        self.user.open_terminal("xterm")
        mark = self.start_recording()
        self.user.speak(self.phrase())
        self.user.open(["zenity", "--entry"])
        # The key is down still.
        self.assert_words(self.finish(mark), PHRASE_WORDS)
        self.assertFalse(self.microphone_is_open())
        self.user.release()


if __name__ == "__main__":
    main()
