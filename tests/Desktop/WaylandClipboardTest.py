"""What the user had copied is on the clipboard again after the words were pasted, all of it."""

import signal
import time

from desktop_case import PHRASE_WORDS, DesktopCase, main
from velloro_tools.desktop import wait_for
from wayland_case import ListeningWindow, OnSway


class WaylandClipboardTest(OnSway, DesktopCase):
    components = ["foot", "wl-copy"]

    def setUp(self):
        super().setUp()
        self.start_velloro()

    def copy_from_window(self):
        """Copies what the window of another program has; that window."""
        window = ListeningWindow(self.user)
        self.user.keys("tap", "F9")
        window.wait_for("copied")
        # The compositor has yet to be told.
        wait_for(lambda: "image/png" in self.user.clipboard_kinds(), "the copied picture")
        return window

    def contents(self):
        """All that is on the clipboard, by its kinds; the selections' own names left out."""
        return {kind: self.user.clipboard_as(kind) for kind in self.user.clipboard_kinds() or []}

    def dictate_into_terminal(self):
        mark = self.start_recording()
        self.user.speak(self.phrase())
        final = self.end_recording(mark)
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        return final

    def test_each_form_of_the_content_is_there_again(self):
        self.copy_from_window()
        before = self.contents()
        for kind in ("text/plain", "text/html", "image/png"):
            self.assertTrue(before.get(kind), before.keys())
        self.assertGreater(len(before["image/png"]), 65536)

        self.user.open_terminal("foot")
        for _ in range(2):
            self.dictate_into_terminal()
            wait_for(lambda: self.user.clipboard_as("image/png") == before["image/png"],
                     "the picture on the clipboard", timeout=5)
            self.assertEqual(self.contents(), before)

    def test_an_owner_that_stops_while_the_user_speaks(self):
        window = self.copy_from_window()
        before = self.contents()
        self.user.open_terminal("foot")
        mark = self.start_recording()
        self.user.speak(self.phrase())
        window.process.send_signal(signal.SIGSTOP)
        final = self.end_recording(mark)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        # It had been read while he spoke.
        wait_for(lambda: self.contents() == before, "the user's own clipboard", timeout=5)

    def test_an_owner_that_does_not_answer_holds_nothing_up(self):
        window = self.copy_from_window()
        self.user.open_terminal("foot")
        window.process.send_signal(signal.SIGSTOP)
        mark = self.start_recording()
        self.user.speak(self.phrase())
        self.user.release()
        self.velloro.wait_for("[WhisperContext] Batch transcription complete: ", since=mark)
        began = time.monotonic()
        final = self.finish(mark)
        # Half a second for the owner, the rest for the machine.
        self.assertLess(time.monotonic() - began, 2)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        window.process.send_signal(signal.SIGCONT)

    def test_an_owner_that_ends_while_the_user_speaks(self):
        window = self.copy_from_window()
        self.user.open_terminal("foot")
        mark = self.start_recording()
        self.user.speak(self.phrase())
        window.process.kill()
        final = self.end_recording(mark)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        # What its owner took along is not the user's any more; what was copied afterwards is.
        self.user.copy("copied later")
        self.dictate_into_terminal()
        wait_for(lambda: self.user.clipboard() == "copied later", "the user's own clipboard",
                 timeout=5)


if __name__ == "__main__":
    main()
