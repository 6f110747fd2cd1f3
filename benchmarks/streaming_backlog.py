"""Measures whether streaming keeps up where a pass takes longer than the audio that it covers: a
minute of speech on a private desktop, the time from the key's release to the final text, and the
program's memory meanwhile."""

import argparse
import pathlib
import re
import sys
import threading
import time

from velloro_tools.desktop import DesktopError, PrivateDesktop, Velloro
from velloro_tools.models import ModelError, obtain
from velloro_tools.places import PROGRAM, RECORDING

PASS = "[WhisperContext] Streaming: "
# Seconds of new audio that make a pass due.
INTERVAL = 1.5


def resident(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(re.search(r"VmRSS:\s*(\d+)", status)[1]) / 1024


def longest_backlog(begin, ends):
    """The most audio, in seconds, that came while a pass ran and had to wait for the next one. A
    pass begins when it is due and the one before has ended."""
    longest, start, before = 0.0, begin, begin
    for end in ends:
        start = max(start + INTERVAL, before)
        longest = max(longest, end - start)
        before = end
    return longest


def measure(arguments, model, path, desktop):
    user = desktop.user()
    recording = desktop.folder / "minute.wav"
    desktop.run(["sox", *[str(RECORDING)] * (arguments.seconds // 11 + 1), str(recording),
                 "trim", "0", str(arguments.seconds)])
    user.prepare_speech(recording)
    times = []
    velloro = Velloro(desktop, arguments.program,
                      on_line=lambda line: times.append((time.monotonic(), line)))
    velloro.set_up(model=model, model_file=path, enableRealtimeStreaming=True)
    velloro.start()
    velloro.wait_for("[WhisperManager] Loaded model: ")
    user.open(["mousepad"])
    user.wait_for_focus()

    def time_of(start, since=0.0):
        return next((at for at, line in times if at >= since and line.startswith(start)), None)

    pid = velloro.process.pid
    idle = resident(pid)
    memory = []
    done = threading.Event()

    def watch():
        while not done.wait(0.5):
            memory.append((time.monotonic(), resident(pid)))
    watcher = threading.Thread(target=watch)
    mark = velloro.mark()
    user.press()
    velloro.wait_for("[Dictation] Started recording ", since=mark)
    begin = time.monotonic()
    watcher.start()
    try:
        user.speak(recording)
        user.release()
        velloro.wait_for("[RecordingPill] Window hidden", since=mark, timeout=600)
    finally:
        done.set()
        watcher.join()
    velloro.wait_for_text(mark)
    velloro.stop()

    stop = time_of("[Dictation] Stopped recording")
    stopped = time_of("[WhisperContext] Streaming stopped")
    start = time_of("[WhisperContext] Transcribing ")
    complete = time_of("[WhisperContext] Batch transcription complete")
    final = time_of("[Dictation] Final transcription")
    passes = [at for at, line in times if line.startswith(PASS)]
    late = sum(at > stop for at in passes)
    intervals = [b - a for a, b in zip([begin, *passes], passes)]
    backlog = longest_backlog(begin, [min(at, stop) for at in passes])
    held = max(size for at, size in memory if at < stop)
    # The same audio in one piece, with no backlog.
    final_peak = max((size for at, size in memory if at > start), default=held)

    print(f"{model}, {arguments.seconds} s of speech")
    for name, value in [
            ("passes while the key was held", f"{len(passes) - late}"),
            ("longest time from pass to pass", f"{max(intervals, default=0):.2f} s"),
            ("longest backlog", f"{backlog:.2f} s of audio that waited for a pass"),
            ("passes that ended after the release", f"{late} (1 at most)"),
            ("release to the end of streaming", f"{stopped - stop:.2f} s (the running pass)"),
            ("final transcription", f"{complete - start:.2f} s"),
            ("deleting and typing", f"{final - complete:.2f} s"),
            ("release to the final text", f"{final - stop:.2f} s"),
            ("memory before the recording", f"{idle:.1f} MiB"),
            ("peak until the release", f"{held:.1f} MiB"),
            ("peak in the final transcription", f"{final_peak:.1f} MiB")]:
        print(f"  {name:40} {value}")
    if backlog < INTERVAL:
        raise DesktopError("no backlog arose: every pass ended before the next was due; try a "
                           "larger model")
    if late > 1 or start - stopped > 0.5:
        raise DesktopError("the final transcription had to wait for more than one pass")
    if held > final_peak + 8:
        raise DesktopError("memory grew with the backlog")


def main():
    parser = argparse.ArgumentParser(prog="benchmarks/streaming-backlog", description=__doc__)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--model", metavar="ID", default="base")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM)
    arguments = parser.parse_args()
    try:
        model, path = obtain("en", arguments.model)
        with PrivateDesktop() as desktop:
            measure(arguments, model, path, desktop)
    except (DesktopError, ModelError) as error:
        sys.exit(f"streaming-backlog: {error}")


if __name__ == "__main__":
    main()
