"""Words are typed while they are spoken, and are replaced by the final text."""

import contextlib
import itertools
import pathlib
import signal
import threading
import time

from desktop_case import BUSY, JFK, JFK_WORDS, main
from streaming_case import STARTED, StreamingCase
from velloro_tools.desktop import DesktopError, wait_for


def is_at_work(process):
    """Whether it has something to do, rather than to wait for."""
    status = pathlib.Path(f"/proc/{process.pid}/stat").read_text()
    return status.rpartition(")")[2].split()[0] in "RD"


class StreamingTest(StreamingCase):
    def speak_and_watch(self, mark, read):
        """Speaks, then holds the key until words stand in the application and no more come; the
        texts seen, one after the other."""
        seen = []
        growth = time.monotonic()
        speech = self.user.start_speaking(JFK)

        def look():
            nonlocal growth
            text = read()
            if text and (not seen or seen[-1] != text):
                seen.append(text)
                growth = time.monotonic()
            return (speech.poll() is not None and text and len(text) == self.counted(mark)
                    and time.monotonic() > growth + 0.5)
        wait_for(look, "all that was counted in the application", timeout=60, interval=0.2)
        return seen

    def dictate_and_check(self, read):
        mark = self.start_recording()
        seen = self.speak_and_watch(mark, read)
        final = self.end_recording(mark)
        with contextlib.suppress(DesktopError):
            wait_for(lambda: read() == final, "the final text alone")
        self.assertEqual(read(), final)
        self.assert_words(final, JFK_WORDS)
        # It only ever grew.
        self.assertTrue(seen)
        for before, after in itertools.pairwise(seen):
            self.assertTrue(after.startswith(before), (before, after))
        deletion = [line for line in self.velloro.lines[mark:]
                    if " characters of streaming" in line]
        self.assertEqual(
            deletion, [f"[Dictation] Deleting {self.counted(mark)} characters of streaming text"])
        # The hotkey is held for long, and repeats itself.
        self.assertEqual(sum(line == STARTED for line in self.velloro.lines[mark:]), 1)
        self.assertFalse([line for line in self.velloro.lines if line.startswith(BUSY)])
        return final

    def test_editor(self):
        self.start_streaming()
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        final = self.dictate_and_check(self.user.focused_text)
        # The backspaces and the letters came with no modifier of the user's, and nothing comes
        # after them but what the user types.
        self.user.keys("tap", "x")
        self.user.wait_for_text(final + "x")

    def test_editor_without_accessibility(self):
        self.start_streaming()
        file = self.desktop.home / "text.txt"
        file.write_text("")
        self.desktop.stop_accessibility()
        self.user.open(["mousepad", str(file)])
        mark = self.start_recording()
        self.user.speak(JFK)
        wait_for(lambda: self.counted(mark), "words typed")
        final = self.end_recording(mark)
        # What stands there is known when it is saved.
        wait_for(lambda: (self.user.keys("tap", "Control_L", "s"),
                          file.read_text().strip() == final)[-1],
                 f"{final!r} in the file, not {file.read_text()!r}", timeout=10, interval=0.3)

    def test_terminal(self):
        self.start_streaming()
        self.user.open_terminal()
        self.dictate_and_check(self.user.terminal_line)

    def test_busy_applications_get_every_word_in_order(self):
        """They come round to what they are sent only now and then."""
        self.start_streaming()
        with self.slowed(self.user.open_terminal(), 0.6):
            self.dictate_and_check(self.user.terminal_line)
        editor = self.user.open(["mousepad"])
        self.user.wait_for_focus()
        with self.slowed(editor, 0.15):
            self.dictate_and_check(self.user.focused_text)

    @contextlib.contextmanager
    def slowed(self, process, pause):
        """The process stands still most of the time."""
        done = threading.Event()

        def slow():
            while not done.wait(0.1):
                # Where the machine is busy, too, its turn comes first.
                while is_at_work(process) and not done.wait(0.01):
                    pass
                process.send_signal(signal.SIGSTOP)
                done.wait(pause)
                process.send_signal(signal.SIGCONT)
        thread = threading.Thread(target=slow)
        thread.start()
        try:
            yield
        finally:
            done.set()
            thread.join()


if __name__ == "__main__":
    main()
