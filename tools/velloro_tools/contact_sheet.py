"""Lays one picture of what Velloro looks like on each desktop: its panel, its settings, its pill,
and the words that it wrote into an editor."""

import argparse
import pathlib
import subprocess
import sys
import tempfile

from .desktop import DESKTOPS, DesktopError, MissingComponent, Velloro, wait_for
from .models import ModelError, obtain
from .places import PROGRAM, RECORDING, ROOT

SCENES = ["panel", "settings", "pill", "text"]


def say(text):
    print(text, flush=True)


def parse_arguments():
    parser = argparse.ArgumentParser(prog="tools/contact-sheet", description=__doc__)
    parser.add_argument("desktops", nargs="*", metavar="DESKTOP", default=list(DESKTOPS),
                        help="which, of " + ", ".join(DESKTOPS) + "; all that are installed")
    parser.add_argument("--output", type=pathlib.Path, metavar="FILE",
                        default=ROOT / "out/desktops.png")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM,
                        help="the program to show")
    arguments = parser.parse_args()
    if unknown := set(arguments.desktops) - set(DESKTOPS):
        parser.error("no such desktop: " + ", ".join(unknown))
    return arguments


class Sitting:
    """One desktop, on which the pictures are taken into the folder."""

    def __init__(self, desktop, program, folder):
        self._user = desktop.user()
        self._velloro = Velloro(desktop, program)
        self._folder = folder

    def take_pictures(self, model, path):
        self._user.prepare_speech(RECORDING)
        self._user.host_tray()
        self._velloro.install()
        self._velloro.set_up(model=model, model_file=path)
        self._velloro.start(until="[WhisperManager] Loaded model: ")
        self._show_windows()
        self._dictate()
        self._velloro.stop()

    def _show_windows(self):
        # A second start opens the panel.
        self._velloro.command()
        self._user.wait_for_focus(lambda focus: focus["application"].lower() == "velloro",
                                  "the panel")
        self._take("panel")
        while (self._user.focus() or {}).get("name") != "Settings...":
            self._user.keys("tap", "Tab")
        self._user.keys("tap", "Return")
        self._user.wait_for_focus(lambda focus: focus["role"] == "page tab", "the settings")
        self._take("settings")
        self._user.keys("tap", "Control_L", "w")

    def _dictate(self):
        self._user.open(["mousepad"])
        self._user.wait_for_focus()
        mark = self._velloro.mark()
        self._velloro.press(self._user)
        self._velloro.wait_for("[Dictation] Started recording ", since=mark)
        self._user.speak(RECORDING)
        self._take("pill")
        self._velloro.release(self._user)
        self._velloro.wait_for("[RecordingPill] Window hidden", since=mark)
        wait_for(self._user.focused_text, "the words")
        self._take("text")

    def _take(self, scene):
        self._user.screenshot(self._folder / f"{scene}.png")


def lay(folder, desktops, output):
    """One row for each desktop, one column for each scene."""
    command = ["montage"]
    for name in desktops:
        for scene in SCENES:
            picture = folder / name / f"{scene}.png"
            command += ["-label", f"{name}: {scene}", str(picture) if picture.exists() else "null:"]
    output.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([*command, "-geometry", "640x400+8+8", "-tile", f"{len(SCENES)}x",
                    str(output)], check=True)


def main():
    arguments = parse_arguments()
    failed = False
    try:
        model, path = obtain("en", None, say)
    except ModelError as error:
        sys.exit(f"contact-sheet: {error}")
    with tempfile.TemporaryDirectory() as scratch:
        shown = []
        for name in arguments.desktops:
            folder = pathlib.Path(scratch) / name
            folder.mkdir()
            try:
                with DESKTOPS[name]() as desktop:
                    Sitting(desktop, arguments.program, folder).take_pictures(model, path)
                shown.append(name)
            except MissingComponent as error:
                say(f"{name}: {error}")
            except DesktopError as error:
                say(f"{name}: {error}")
                shown.append(name)
                failed = True
        lay(pathlib.Path(scratch), shown, arguments.output)
    say(f"Contact sheet: {arguments.output}")
    return failed


if __name__ == "__main__":
    sys.exit(main())
