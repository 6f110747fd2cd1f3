"""Words are typed while they are spoken, and are replaced by the final text."""

import contextlib
import pathlib
import signal
import threading

from desktop_case import JFK, main
from streaming_case import StreamingCase
from velloro_tools.desktop import wait_for


def is_at_work(process):
    """Whether it has something to do, rather than to wait for."""
    status = pathlib.Path(f"/proc/{process.pid}/stat").read_text()
    return status.rpartition(")")[2].split()[0] in "RD"


class StreamingTest(StreamingCase):
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
