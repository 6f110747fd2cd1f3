"""One dictation into one application, on a private desktop of its own."""

import subprocess
import time
import traceback

from ..desktop import DesktopError, PrivateDesktop, Velloro, wait_for
from ..places import RECORDING
from .fields import BEFORE
from .outcome import Outcome, Verdict

BATCH, STREAMING = MODES = ["batch", "streaming"]
COPIED = "what the user had copied"

STARTED = "[Dictation] Started recording "
REFUSED = "[Dictation] Text field not focused"
FINAL = "[Dictation] Final transcription: '"
HIDDEN = "[RecordingPill] Window hidden"
LOADED = "[WhisperManager] Loaded model: "
# Words of which the recogniser is sure while they are spoken.
CONFIRMED = "[WhisperContext] Streaming: confirmed='"
TYPED = ("[Dictation] Streaming start: ", "[Dictation] Confirmed: ")


class Dictation:
    """Dictates into the application, and says what became of it."""

    def __init__(self, application, mode, root, program, model, pictures):
        """`model` is a pair, the catalogue's name and the file; `pictures` is the folder for the
        picture of the desktop at the end."""
        self._application, self._mode, self._root = application, mode, root
        self._program, self._model, self._pictures = program, model, pictures

    def outcome(self):
        start = time.monotonic()
        outcome = Outcome(self._application.name, self._mode,
                          version=self._root.version(self._application.package) or "")
        missing = self._root.missing(self._application.packages)
        if missing:
            outcome.conclude(Verdict.NOT_STARTED, "not installed: " + ", ".join(missing))
        else:
            with PrivateDesktop() as desktop:
                self._desktop, self._user = desktop, desktop.user()
                self._velloro = Velloro(desktop, self._program)
                self._field = None
                try:
                    self._run(outcome)
                except (DesktopError, OSError, subprocess.SubprocessError) as error:
                    outcome.conclude(Verdict.NOT_STARTED, str(error).partition("\n")[0])
                    outcome.log.append(traceback.format_exc())
                finally:
                    self._look_back(outcome)
        outcome.seconds = round(time.monotonic() - start, 1)
        return outcome

    # --- its steps ------------------------------------------------------------------------------

    def _run(self, outcome):
        name, path = self._model
        self._velloro.set_up(model=name, model_file=path,
                             enableRealtimeStreaming=self._mode == STREAMING)
        self._field = self._application.field(self._user, self._application)
        # Both orders are usual: with the session, and by hand when it is wanted.
        if self._mode == BATCH:
            self._start_velloro()
        self._open()
        if self._mode == STREAMING:
            self._start_velloro()
        self._check_start()
        copied = self._copy()

        mark = self._velloro.mark()
        started = self._dictate(mark)
        if started is REFUSED:
            outcome.conclude(Verdict.REFUSED, "no text field was seen")
            return
        final = self._final(mark)
        self._compare(outcome, final)
        if self._mode == STREAMING and not any(
                line.startswith(TYPED) for line in self._velloro.lines[mark:]):
            outcome.add_remark("no word came before the end")
        self._tell_the_way(outcome, copied)

    def _start_velloro(self):
        mark = self._velloro.mark()
        self._velloro.start()
        self._velloro.wait_for(LOADED, since=mark)

    def _open(self):
        command, environment, files = self._application.filled(self._field.placeholders)
        for path, contents in files.items():
            file = self._desktop.home / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(contents)
        self._desktop.start(self._root.command(command, self._desktop, environment),
                            log="application")
        self._field.wait_until_ready()

    def _check_start(self):
        text = None

        def holds_its_text():
            nonlocal text
            text = self._field.text()
            return text == BEFORE
        try:
            wait_for(holds_its_text, "the field's text", timeout=10)
        except DesktopError:
            raise DesktopError(
                f"the field does not hold its text at first, but {text!r}") from None

    def _copy(self):
        """Copies text, as the user did before; ends when somebody else copies something."""
        process = self._desktop.start(
            ["sh", "-c", f"printf %s '{COPIED}' | xclip -selection clipboard -in -quiet"],
            log="clipboard")
        wait_for(lambda: self._user.clipboard() == COPIED, "the clipboard")
        return process

    def _dictate(self, mark):
        recording = RECORDING
        if self._mode == BATCH:
            recording = self._desktop.folder / "phrase.wav"
            self._desktop.run(["sox", str(RECORDING), str(recording), "trim", "3.2", "4.6"])
        self._user.prepare_speech(recording)
        self._user.press()
        try:
            started = wait_for(lambda: next(
                (start for start in (STARTED, REFUSED)
                 if any(line.startswith(start) for line in self._velloro.lines[mark:])), None),
                "the recording's start", timeout=10)
            if started is STARTED:
                self._user.speak(recording)
                if self._mode == STREAMING:
                    self._await_words(mark)
        finally:
            self._user.release()
        return started

    def _await_words(self, mark):
        """Until words were recognised that are to be typed while the key is held still."""
        wait_for(lambda: any(line.startswith(CONFIRMED) and line[len(CONFIRMED)] not in ".'"
                             for line in self._velloro.lines[mark:]),
                 "confirmed words", timeout=30)
        try:
            self._velloro.wait_for(TYPED, since=mark, timeout=5)
        except DesktopError:
            pass  # that none came is told in the outcome

    def _final(self, mark):
        self._velloro.wait_for(HIDDEN, since=mark, timeout=60)
        return next((line[len(FINAL):-1] for line in self._velloro.lines[mark:]
                     if line.startswith(FINAL)), "")

    def _compare(self, outcome, final):
        outcome.final = final
        if not final:
            raise DesktopError("no words were heard")

        def holds_all():
            outcome.text = self._field.text() or ""
            return outcome.text == BEFORE + final
        try:
            wait_for(holds_all, "the words", timeout=8, interval=0.2)
        except DesktopError:
            pass  # the outcome says what is there instead
        outcome.judge(BEFORE)
        outcome.add_remark(self._field.remark())

    def _tell_the_way(self, outcome, copied):
        """Whoever pastes takes the clipboard, and gives it back."""
        if copied.poll() is not None:
            outcome.way = "paste"
        elif outcome.verdict == Verdict.ARRIVED:
            outcome.way = "accessibility"
        try:
            wait_for(lambda: self._user.clipboard() == COPIED, "the clipboard", timeout=5)
        except DesktopError:
            outcome.add_remark(f"the clipboard holds {self._user.clipboard()!r} afterwards")

    def _look_back(self, outcome):
        """Keeps what helps to understand the outcome."""
        try:
            self._user.screenshot(self._pictures / f"{self._application.slug}.{self._mode}.png")
        except (OSError, subprocess.SubprocessError):
            pass  # the display ended
        outcome.log += self._velloro.lines + self._desktop.log("application").splitlines()[-40:]
        if self._field:
            self._field.close()
        if self._velloro.process:
            self._velloro.process.kill()
