"""Measures the running program on a private desktop."""

import pathlib
import statistics
import subprocess
import sys
import threading
import time

from velloro_tools.desktop import PrivateDesktop, Velloro
from velloro_tools.places import RECORDING

HERE = pathlib.Path(__file__).resolve().parent


# --- what the system knows of a process ----------------------------------------------------------

def memory(process, field):
    """VmRSS or VmHWM, in bytes."""
    for line in pathlib.Path(f"/proc/{process.pid}/status").read_text().splitlines():
        if line.startswith(field + ":"):
            return int(line.split()[1]) * 1024
    raise KeyError(field)


def over_threads(process, read):
    return sum(read(task) for task in pathlib.Path(f"/proc/{process.pid}/task").iterdir())


def wake_ups(process):
    """How often its threads have waited for something and gone on."""
    def switches(task):
        [line] = [line for line in (task / "status").read_text().splitlines()
                  if line.startswith("voluntary_ctxt_switches")]
        return int(line.split()[1])
    return over_threads(process, switches)


def processor_seconds(process):
    return over_threads(
        process, lambda task: int((task / "schedstat").read_text().split()[0])) / 1e9


# --- figures -------------------------------------------------------------------------------------

def start_times(program, idle_program, repetitions):
    """Seconds from the start of the process to the registered hotkey, and to the event loop of the
    program that does nothing; medians of interleaved starts."""
    ours, theirs = [], []
    with PrivateDesktop() as desktop:
        velloro = Velloro(desktop, program)
        velloro.set_up()
        # The first start of either reads its libraries from the disk.
        for number in range(repetitions + 1):
            start = time.perf_counter()
            velloro.start()
            took = time.perf_counter() - start
            velloro.stop()
            start = time.perf_counter()
            with subprocess.Popen([idle_program], env=desktop.environment, cwd=desktop.home,
                                  stdout=subprocess.PIPE, text=True) as process:
                process.stdout.readline()
                idle = time.perf_counter() - start
                process.kill()
            if number > 0:
                ours.append(took)
                theirs.append(idle)
    return statistics.median(ours), statistics.median(theirs)


def tray_only(program, seconds):
    """(resident bytes, wake-ups) of the program without a model, left alone for that time."""
    with PrivateDesktop() as desktop:
        velloro = Velloro(desktop, program)
        velloro.set_up()
        velloro.start()
        # What the start has begun comes to rest; a desktop without a tray is told of it.
        time.sleep(15)
        before = wake_ups(velloro.process)
        time.sleep(seconds)
        woken = wake_ups(velloro.process) - before
        resident = memory(velloro.process, "VmRSS")
        velloro.stop()
    return resident, woken


class Watch:
    """The process that presses the hotkey and sees text appear (see text_watch.py)."""

    def __init__(self, desktop):
        self._process = subprocess.Popen(
            [sys.executable, HERE / "text_watch.py"], env=desktop.environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True)
        self._times = []
        self._changed = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()
        self.wait_for("ready")

    def _read(self):
        for line in self._process.stdout:
            word, moment = line.split()
            with self._changed:
                self._times.append((word, float(moment)))
                self._changed.notify_all()

    def wait_for(self, word, after=0.0, timeout=30.0):
        """The time of the first such event after that moment."""
        with self._changed:
            def find():
                return next((moment for each, moment in self._times
                             if each == word and moment > after), None)
            if not self._changed.wait_for(find, timeout):
                raise RuntimeError(f"nothing seen of {word!r}")
            return find()

    def send(self, word):
        sent = time.monotonic()
        self._process.stdin.write(word + "\n")
        self._process.stdin.flush()
        return self.wait_for(word, after=sent)

    def close(self):
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()


class Speakers:
    """Hears what the desktop's programs play, and when."""

    def __init__(self, desktop):
        self._process = subprocess.Popen(
            ["parec", "--device=speakers.monitor", "--latency-msec=2", "--raw", "--format=s16le",
             "--channels=1"], env=desktop.environment, stdout=subprocess.PIPE,
            start_new_session=True)
        self._sounds = []
        self._changed = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        while heard := self._process.stdout.read1(4096):
            if any(heard):
                with self._changed:
                    self._sounds.append(time.monotonic())
                    self._changed.notify_all()

    def first_sound(self, after):
        """When something was heard first after that moment."""
        with self._changed:
            def find():
                return next((moment for moment in self._sounds if moment > after), None)
            if not self._changed.wait_for(find, timeout=5):
                raise RuntimeError("no sound is heard")
            return find()

    def close(self):
        self._process.terminate()
        self._process.wait()


def dictations(program, model, path, repetitions, recording_seconds):
    """Dictates into an editor. Returns a dictionary: "delay", the median of the seconds from the
    release to the text less whisper_full's; "before" and "after", its parts before and after
    whisper_full; "idle" and "peak", resident bytes; "recording" and "pill", the share of one core
    while recording silence and while recording speech, to which the pill moves; "cue", the median
    of the seconds from the pill's coming, after which the start cue is played, to its sound."""
    before, after, delays, cues, shown = [], [], [], [], []

    def on_line(line):
        if line.startswith("[RecordingPill] Window shown"):
            shown.append(time.monotonic())

    with PrivateDesktop() as desktop:
        user = desktop.user()
        phrase = desktop.folder / "phrase.wav"
        # Understood at once: a second attempt with more decoders would cost 37 MB at the peak.
        desktop.run(["sox", str(RECORDING), str(phrase), "trim", "7.9", "2.9"])
        user.prepare_speech(phrase)
        user.prepare_speech(RECORDING)
        velloro = Velloro(desktop, program, on_line=on_line)
        velloro.set_up(model=model, model_file=path)
        velloro.start()
        velloro.wait_for("[WhisperManager] Loaded model: ")
        user.open(["mousepad"])
        user.wait_for_focus()
        watch = Watch(desktop)

        def record(speak):
            mark = velloro.mark()
            watch.send("down")
            velloro.wait_for("[Dictation] Started recording in batch mode", since=mark)
            speak()
            released = watch.send("up")
            velloro.wait_for("[RecordingPill] Window hidden", since=mark, timeout=300)
            return mark, released

        idle = memory(velloro.process, "VmRSS")
        speakers = Speakers(desktop)
        for _ in range(repetitions):
            mark, released = record(lambda: user.speak(phrase))
            text = watch.wait_for("text", after=released)
            timing = velloro.wait_for("[Timing] whisper_full ", since=mark).split()
            began, ended = float(timing[2]), float(timing[3])
            before.append(began - released)
            after.append(text - ended)
            delays.append(before[-1] + after[-1])
            cues.append(speakers.first_sound(after=shown[-1]) - shown[-1])
        speakers.close()

        shares = []

        def share(recording_seconds):
            time.sleep(1)
            start, processor = time.perf_counter(), processor_seconds(velloro.process)
            time.sleep(recording_seconds)
            shares.append((processor_seconds(velloro.process) - processor)
                          / (time.perf_counter() - start))
        record(lambda: share(recording_seconds))

        def speech():
            speech = user.start_speaking(RECORDING)
            share(8)
            speech.wait()
        record(speech)
        result = {"delay": statistics.median(delays), "before": statistics.median(before),
                  "after": statistics.median(after), "idle": idle,
                  "after_use": memory(velloro.process, "VmRSS"),
                  "peak": memory(velloro.process, "VmHWM"), "recording": shares[0],
                  "pill": shares[1], "cue": statistics.median(cues)}
        watch.close()
        velloro.stop()
    return result
