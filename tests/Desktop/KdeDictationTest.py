"""Dictation on KDE's compositor, with the interfaces that the packaged desktop file asks for."""

from desktop_case import PHRASE_WORDS, DesktopCase, main
from streaming_case import StreamingCase
from velloro_tools.desktop import KwinDesktop, wait_for

NOT_REGISTERED = "[HotkeyManager] Failed to register hotkey: "
SHORTCUTS = "org.kde.kglobalaccel"
ALT_SPACE = 0x08000020
IS_DEFAULT, NO_AUTOLOADING = 2, 4


class OnKde:
    components = ["zenity", "xterm", "mousepad", "wl-copy"]

    def make_desktop(self):
        return KwinDesktop()

    def open_entry(self):
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()


class KdeDictationTest(OnKde, DesktopCase):
    def test_a_field_and_a_terminal(self):
        self.velloro.install()
        self.start_velloro()
        self.open_entry()
        window = self.user.active_window()
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assertEqual(self.user.active_window(), window)

        self.user.open_terminal("xterm")
        self.user.copy("copied before")
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: "$ " + final in self.user.terminal_text(), "the words at the prompt")
        wait_for(lambda: self.user.clipboard() == "copied before", "the user's own clipboard",
                 timeout=2)

    def test_a_hotkey_of_another_program_stays_its_own(self):
        other = ["other", "action", "Other", "Action"]
        self.shortcut("doRegister", "(as)", other)
        self.shortcut("setShortcut", "(asaiu)", other, [ALT_SPACE], IS_DEFAULT | NO_AUTOLOADING)
        self.velloro.install()
        self.velloro.set_up()
        self.velloro.start(until=NOT_REGISTERED)
        owner, = self.shortcut("action", "(i)", ALT_SPACE)
        self.assertEqual(owner[:2], other[:2])

    def shortcut(self, method, signature, *arguments):
        return self.desktop.bus().call(SHORTCUTS, "/kglobalaccel",
                                       f"org.kde.KGlobalAccel.{method}", signature, arguments)

    def test_without_its_desktop_file_no_word_is_lost(self):
        self.user.watch_notifications()
        self.start_velloro()
        self.user.open_terminal("xterm")
        self.user.copy("copied before")
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: self.user.clipboard() == final, "the words on the clipboard")
        told = wait_for(self.user.notifications, "the notification", timeout=5)
        self.assertIn("clipboard", told[-1]["body"])
        self.assertEqual(self.user.terminal_text(), "$ ")


class KdeStreamingTest(OnKde, StreamingCase):
    def test_editor(self):
        # A key of ours would end the hold.
        self.velloro.install()
        self.start_streaming()
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        final = self.dictate_and_check(self.user.focused_text)
        self.user.keys("tap", "x")
        self.user.wait_for_text(final + "x")

    def test_a_terminal_gets_the_words_at_the_end(self):
        self.velloro.install()
        self.start_streaming()
        self.user.open_terminal("xterm")
        mark = self.start_recording()
        self.user.speak(self.phrase())
        final = self.end_recording(mark)
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: self.user.terminal_line() == final, "the words at the prompt")


if __name__ == "__main__":
    main()
