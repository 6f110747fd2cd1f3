"""The two cues: heard at the speakers, when they are wanted, and not in the recording."""

import array

from desktop_case import DesktopCase, main
from velloro_tools.desktop import wait_for

RATE = 8000
LEVEL = "[AudioCapture] Audio Level: "


class SoundTest(DesktopCase):
    def cues(self):
        """How many sounds the speakers have given, with a tenth of a second of silence between."""
        samples = array.array("h", self.heard.read_bytes()[:self.heard.stat().st_size // 2 * 2])
        loud = [number for number, sample in enumerate(samples) if abs(sample) > 300]
        return sum(after - before > RATE // 10 for before, after in zip([-RATE, *loud], loud))

    def test_the_cues_are_heard_and_not_recorded(self):
        self.heard = self.desktop.folder / "heard.raw"
        self.desktop.start(["parec", "--device=speakers.monitor", "--latency-msec=10", "--raw",
                            "--format=s16le", "--channels=1", f"--rate={RATE}", self.heard],
                           log="speakers")
        wait_for(lambda: self.heard.exists() and self.heard.stat().st_size, "the speakers")

        def dictate_silence(start_cues, stop_cues):
            mark = self.start_recording()
            # The level of what is recorded is told every now and then.
            self.velloro.wait_for(LEVEL, since=mark)
            wait_for(lambda: self.cues() == start_cues, "the start cue")
            self.assertEqual(self.end_recording(mark), "")
            wait_for(lambda: self.cues() == start_cues + stop_cues, "the stop cue")
            levels = {line for line in self.velloro.lines[mark:] if line.startswith(LEVEL)}
            self.assertEqual(levels, {LEVEL + "-200.00 dB"})

        self.start_velloro(requireTextFieldFocus=False, playSounds=False)
        dictate_silence(0, 0)
        self.velloro.stop()
        self.start_velloro(playSounds=True)
        dictate_silence(1, 1)


if __name__ == "__main__":
    main()
