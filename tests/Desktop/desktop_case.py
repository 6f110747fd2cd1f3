"""What the end-to-end tests share: a fresh private desktop per test, with Velloro not yet started.

VELLORO_PROGRAM names the program, VELLORO_MODEL_DIR a folder of models. Without a model, or where
a component of the desktop is missing, the tests are skipped, and the file's exit status is 77.
"""

import os
import re
import shutil
import signal
import sys
import unittest

from velloro_tools import models
from velloro_tools.desktop import MissingComponent, PrivateDesktop, Velloro
from velloro_tools.places import RECORDING as JFK

SKIPPED = 77
JFK_WORDS = ("and so my fellow americans ask not what your country can do for you "
             "ask what you can do for your country")
PHRASE_WORDS = "ask not what your country can do for you"

RECORDING = "[Dictation] Started recording in batch mode"
BUSY = "[Dictation] Cannot start recording: already recording"


def words(text):
    """The text's words, without case and punctuation, which differ between builds."""
    return " ".join(re.findall(r"[\w']+", text.lower()))


def find_models():
    folder = os.environ.get(models.ENVIRONMENT_FOLDER)
    return models.models_in(models.CACHE) | models.models_in(folder)


class DesktopCase(unittest.TestCase):
    # Programs that the tests of a class need beside the desktop's own.
    components = []

    def setUp(self):
        missing = [name for name in self.components if not shutil.which(name)]
        if missing:
            self.skipTest("not installed: " + ", ".join(missing))
        self.present = find_models()
        # The smallest hears these recordings well enough, and soonest.
        self.model = next(iter(self.present), None)
        if not self.model or not JFK.exists():
            self.skipTest(f"no speech model: set {models.ENVIRONMENT_FOLDER}")
        self.desktop = self.make_desktop()
        try:
            self.enterContext(self.desktop)
        except MissingComponent as error:
            self.skipTest(str(error))
        self.user = self.desktop.user()
        self.velloro = Velloro(self.desktop, os.environ["VELLORO_PROGRAM"])
        self.addCleanup(self._end)

    def make_desktop(self):
        return PrivateDesktop()

    def _end(self):
        # Some tests kill it.
        status = self.velloro.end() if self.velloro.process else 0
        outcome = self._outcome.result
        if any(test is self for test, _ in outcome.failures + outcome.errors):
            print("Velloro's output:", *self.velloro.lines, sep="\n  ")
        elif any(re.search(r"Sanitizer: |runtime error: ", line) for line in self.velloro.lines):
            self.fail("a sanitizer reports:\n" + "\n".join(self.velloro.lines))
        else:
            self.assertIn(status, (0, -signal.SIGKILL))

    def start_velloro(self, **settings):
        """Starts it and waits until the model is loaded."""
        self.velloro.set_up(model=self.model, model_file=self.present[self.model], **settings)
        mark = self.velloro.mark()
        self.velloro.start()
        self.velloro.wait_for("[WhisperManager] Loaded model: ", since=mark)

    def phrase(self):
        """A recording of PHRASE_WORDS, under five seconds."""
        path = self.desktop.folder / "phrase.wav"
        if not path.exists():
            self.desktop.run(["sox", str(JFK), str(path), "trim", "3.2", "4.6"])
        return path

    def start_recording(self):
        """Presses the hotkey and keeps it; the mark before the press."""
        mark = self.velloro.mark()
        self.user.press()
        self.velloro.wait_for(RECORDING, since=mark)
        return mark

    def end_recording(self, mark):
        """Releases the hotkey and waits for the dictation's end; the final text, "" if none."""
        self.user.release()
        return self.finish(mark)

    def finish(self, mark):
        self.velloro.wait_for("[RecordingPill] Window hidden", since=mark, timeout=120)
        start = "[Dictation] Final transcription: '"
        return next((line[len(start):-1] for line in self.velloro.lines[mark:]
                     if line.startswith(start)), "")

    def dictate(self, recording=None):
        """Holds the hotkey while the recording (or the phrase) is spoken; the final text."""
        mark = self.start_recording()
        self.user.speak(recording or self.phrase())
        return self.end_recording(mark)

    def microphone_is_open(self):
        # What makes the virtual microphone listens itself, for no client.
        outputs = self.desktop.run(["pactl", "list", "short", "source-outputs"]).splitlines()
        return any(output.split("\t")[2] != "-" for output in outputs)

    def assert_words(self, text, expected):
        """The recogniser may hear something more at either end, depending on when the recording
        began and ended."""
        self.assertIn(expected, words(text))


def main():
    # Programs that are left running end with the desktop.
    program = unittest.main(exit=False, warnings="ignore")
    for _, reason in program.result.skipped:
        print(f"SKIPPED: {reason}")
    if not program.result.wasSuccessful():
        sys.exit(1)
    sys.exit(SKIPPED if program.result.skipped else 0)
