"""Dictates many times in a row on a private desktop and fails when the program's memory,
descriptors or threads grow."""

import argparse
import os
import pathlib
import re
import sys
import time

from .desktop import DesktopError, PrivateDesktop, Velloro
from .models import ModelError, obtain
from .places import PROGRAM, RECORDING

# What is allocated once has been after so many; the history holds fifty entries.
WARM_UP = 20
# The allocator keeps this and that; a leak of a recording or a text per dictation exceeds it.
MEMORY_LIMIT_KB = 12 * 1024


def parse_arguments():
    parser = argparse.ArgumentParser(prog="tools/soak", description=__doc__)
    parser.add_argument("--count", type=int, default=500, metavar="N", help="dictations (500)")
    parser.add_argument("--streaming", action="store_true", help="type while speaking")
    parser.add_argument("--app", default="mousepad", choices=["mousepad", "xterm"])
    parser.add_argument("--model", metavar="ID", default="tiny.en-q5_1",
                        help="a model of the catalogue (tiny.en-q5_1)")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM,
                        help="the program to try")
    arguments = parser.parse_args()
    if arguments.count <= WARM_UP:
        parser.error(f"more than {WARM_UP} dictations, please")
    return arguments


def measure(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return {"memory": int(re.search(r"VmRSS:\s*(\d+)", status)[1]),
            "descriptors": len(os.listdir(f"/proc/{pid}/fd")),
            "threads": int(re.search(r"Threads:\s*(\d+)", status)[1])}


def tell(number, figures, since):
    print(f"{number:5} dictations, {time.monotonic() - since:6.0f} s: "
          f"{figures['memory'] / 1024:7.1f} MiB resident, {figures['descriptors']} descriptors, "
          f"{figures['threads']} threads", flush=True)


def dictate(user, velloro, recording):
    mark = velloro.mark()
    user.press()
    velloro.wait_for("[Dictation] Started recording ", since=mark)
    user.speak(recording)
    user.release()
    velloro.wait_for("[RecordingPill] Window hidden", since=mark, timeout=300)
    return any(line.startswith("[Dictation] Final transcription: ")
               for line in velloro.lines[mark:])


def soak(arguments, model, path, desktop):
    user = desktop.user()
    recording = desktop.folder / "speech.wav"
    # Understood at once: a second attempt with more decoders costs memory that is then kept.
    desktop.run(["sox", str(RECORDING), str(recording), "trim", "7.9", "2.9"])
    velloro = Velloro(desktop, arguments.program)
    velloro.set_up(model=model, model_file=path, enableRealtimeStreaming=arguments.streaming)
    velloro.start()
    velloro.wait_for("[WhisperManager] Loaded model: ")
    if arguments.app == "xterm":
        user.open_terminal()
    else:
        user.open([arguments.app])
        user.wait_for_focus()

    since = time.monotonic()
    tell(0, measure(velloro.process.pid), since)
    heard = 0
    before = None
    for number in range(1, arguments.count + 1):
        heard += dictate(user, velloro, recording)
        if number % 10 == 0:
            # The application is to stay as quick as it was.
            if arguments.app == "xterm":
                user.keys("tap", "Control_L", "u")
            else:
                user.keys("tap", "Control_L", "a", "tap", "BackSpace")
        if number == WARM_UP or number % 50 == 0 or number == arguments.count:
            figures = measure(velloro.process.pid)
            tell(number, figures, since)
            before = before or figures
    after = measure(velloro.process.pid)
    velloro.stop()

    print(f"{heard} of {arguments.count} dictations had words.")
    growth = {name: after[name] - before[name] for name in before}
    print(f"Growth since dictation {WARM_UP}: {growth['memory']} KiB resident, "
          f"{growth['descriptors']} descriptors, {growth['threads']} threads.")
    if heard < arguments.count:
        raise DesktopError("words were lost")
    if growth["memory"] > MEMORY_LIMIT_KB or growth["descriptors"] > 0 or growth["threads"] > 0:
        raise DesktopError("the program grows")


def main():
    arguments = parse_arguments()
    try:
        model, path = obtain("en", arguments.model)
        with PrivateDesktop() as desktop:
            soak(arguments, model, path, desktop)
    except (DesktopError, ModelError) as error:
        sys.exit(f"soak: {error}")


if __name__ == "__main__":
    main()
