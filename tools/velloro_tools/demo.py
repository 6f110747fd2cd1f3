"""Shows a dictation on a private desktop: a recording is played into the microphone while the
hotkey is held, and Velloro types the words into a real application."""

import argparse
import pathlib
import shlex
import signal
import sys
import time

from .desktop import DESKTOPS, DesktopError, Velloro, wait_for
from .desktop.user import TERMINALS
from .models import ModelError, obtain
from .places import PROGRAM, RECORDING, ROOT

LANGUAGES = ["en", "pl", "de", "es", "fr", "it", "pt", "ru", "ja", "zh", "auto"]
ZENITY = ["zenity", "--entry", "--title", "zenity", "--text", "Dictate here", "--width", "760"]


def say(text):
    print(text, flush=True)


def parse_arguments():
    parser = argparse.ArgumentParser(prog="./run --demo", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--demo", action="store_true", help="what this is, also with a display")
    parser.add_argument("--audio", type=pathlib.Path, metavar="FILE",
                        default=RECORDING,
                        help="what is said: a sound file of any usual format")
    parser.add_argument("--language", choices=LANGUAGES, default="en", metavar="CODE",
                        help="the language that is spoken: " + ", ".join(LANGUAGES))
    parser.add_argument("--desktop", choices=DESKTOPS, default="x11", metavar="NAME",
                        help="where: " + ", ".join(DESKTOPS))
    parser.add_argument("--app", default="mousepad", metavar="APPLICATION",
                        help="mousepad, zenity, a terminal (xterm, and foot on Wayland), or a "
                             "command of your own")
    parser.add_argument("--toggle", action="store_true",
                        help="press the hotkey to start and again to stop, instead of holding it")
    parser.add_argument("--streaming", action="store_true",
                        help="type while speaking; what stands there is shown about once a second")
    parser.add_argument("--model", metavar="ID", help='a model of the catalogue, as "base-q5_1"')
    parser.add_argument("--screenshot", type=pathlib.Path, metavar="FILE",
                        default=ROOT / "out/demo.png", help="where the picture is kept")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if not arguments.audio.is_file():
        parser.error(f"there is no file {arguments.audio}")
    if not shlex.split(arguments.app):
        parser.error("no application given")
    return arguments


def open_application(user, name):
    """Opens it and returns a function that reads the text that stands in it, or None if nothing
    can tell."""
    if name in TERMINALS:
        user.open_terminal(name)
        return user.terminal_line
    user.open(ZENITY if name == "zenity" else shlex.split(name))
    if name in ("mousepad", "zenity"):
        user.wait_for_focus()
    if (user.focus() or {}).get("text") is None:
        return None
    return lambda: (user.focus() or {}).get("text") or ""


def watch(speech, read):
    """Tells about once a second what stands in the application, until all has been said."""
    start = time.monotonic()
    while speech.poll() is None:
        time.sleep(1)
        say(f"{time.monotonic() - start:5.1f} s  stands there: {read()}")
    if speech.returncode != 0:
        raise DesktopError("the recording could not be played")


def show(arguments, model, path, desktop):
    user = desktop.user()
    user.prepare_speech(arguments.audio)
    velloro = Velloro(desktop, arguments.program, on_line=lambda line: say("  " + line))
    velloro.set_up(model=model, model_file=path, selectedLanguage=arguments.language,
                   recordingMode="Toggle" if arguments.toggle else "Hold to Talk",
                   enableRealtimeStreaming=arguments.streaming)
    say(f"Velloro, on a private desktop ({arguments.desktop}):")
    velloro.install()
    velloro.start(until="[WhisperManager] Loaded model: ")

    read = open_application(user, arguments.app)
    before = read() if read else ""
    mark = velloro.mark()
    velloro.press(user)
    if arguments.toggle:
        velloro.release(user)
    velloro.wait_for("[Dictation] Started recording ", since=mark)
    if arguments.streaming and read:
        watch(user.start_speaking(arguments.audio), lambda: read().removeprefix(before))
    else:
        user.speak(arguments.audio)
    if arguments.toggle:
        velloro.press(user)
    velloro.release(user)
    # Whatever ends the dictation, the pill is hidden after it.
    velloro.wait_for("[RecordingPill] Window hidden", since=mark, timeout=600)
    said = [line for line in velloro.lines[mark:]
            if line.startswith("[Dictation] Final transcription: '")]
    if not said:
        raise DesktopError("Velloro heard no words")
    words = said[0].partition("'")[2][:-1]

    typed = words
    if read:
        # A pasted text appears when the application has come round to it.
        wait_for(lambda: words in read(), f"the words in {arguments.app}")
        typed = read().removeprefix(before)
    else:
        say(f"{arguments.app} tells nobody what stands in it: these are Velloro's words.")
    arguments.screenshot.parent.mkdir(parents=True, exist_ok=True)
    user.screenshot(arguments.screenshot)
    velloro.stop()
    say(f"Screenshot: {arguments.screenshot}")
    say(f"Typed: {typed}")


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, lambda number, _frame: sys.exit(128 + number))
    signal.signal(signal.SIGHUP, lambda number, _frame: sys.exit(128 + number))
    try:
        model, path = obtain(arguments.language, arguments.model, say)
        with DESKTOPS[arguments.desktop]() as desktop:
            show(arguments, model, path, desktop)
    except (DesktopError, ModelError) as error:
        sys.exit(f"demo: {error}")
    except KeyboardInterrupt:
        sys.exit(128 + signal.SIGINT)


if __name__ == "__main__":
    main()
