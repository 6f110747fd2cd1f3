"""The program under test, or on show: its settings, its models, its output."""

import base64
import json
import pathlib
import re
import signal
import subprocess
import threading
import time

from ..models import file_name
from ..places import DESKTOP_FILE
from .errors import DesktopError


class Velloro:
    """The program on a private desktop. Settings and models are laid before `start()`."""

    def __init__(self, desktop, program, *arguments, on_line=lambda line: None):
        """`on_line` is told every line that the program prints, on a thread of its own."""
        self.desktop = desktop
        self._on_line = on_line
        self._command = [pathlib.Path(program).resolve(), *arguments]
        # What it is told otherwise than the desktop's other programs; None: nothing.
        self.environment = {}
        self.process = None
        self.lines = []
        self._changed = threading.Condition()
        self._ended = True
        self._reader = None

    # --- what it finds --------------------------------------------------------------------------

    @property
    def settings_file(self):
        return self.desktop.config_home / "Velloro/settings.json"

    @property
    def models_folder(self):
        return self.desktop.data_home / "Velloro/Models"

    def settings(self):
        """The stored settings, without their prefix."""
        stored = json.loads(self.settings_file.read_text())
        return {key.removeprefix("velloro."): value for key, value in stored.items()}

    def history(self):
        """The stored history's texts, newest first."""
        stored = self.settings().get("transcriptionHistory")
        return [item["text"] for item in json.loads(base64.b64decode(stored["$data"]))] \
            if stored else []

    def set_up(self, model=None, model_file=None, **settings):
        """Lays settings (without prefix) beside the stored ones, and a model for the selected
        preset, if one is given. Not while the program runs."""
        self.settings_file.parent.mkdir(parents=True, exist_ok=True, mode=0o700)
        stored = self.settings() if self.settings_file.exists() else {}
        stored = {"hasCompletedOnboarding": True} | stored | settings
        if model:
            stored["presetMappings"] = {stored.get("selectedModel", "Medium"): model}
            self.add_model(model, model_file)
        self.settings_file.write_text(
            json.dumps({"velloro." + key: value for key, value in stored.items()}))

    def add_model(self, model, path):
        """Puts the file among the program's models, under the name that the catalogue gives."""
        self.models_folder.mkdir(parents=True, exist_ok=True)
        link = self.models_folder / file_name(model)
        link.unlink(missing_ok=True)
        link.symlink_to(pathlib.Path(path).resolve())

    def install(self):
        """Lays its desktop file, as a package does: some desktops go by that."""
        folder = self.desktop.data_home / "applications"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "velloro.desktop").write_text(re.sub(
            "(?m)^Exec=.*$", f"Exec={self._command[0]}", DESKTOP_FILE.read_text()))

    # --- life -----------------------------------------------------------------------------------

    def start(self, until="[HotkeyManager] Registered hotkey: "):
        """Starts the program and waits for a line that begins so."""
        start = len(self.lines)
        with self._changed:
            self._ended = False
        self.process = subprocess.Popen(
            self._command, env=self._told(), cwd=self.desktop.home,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            errors="replace", start_new_session=True)
        self._reader = threading.Thread(target=self._read, args=[self.process], daemon=True)
        self._reader.start()
        self.wait_for(until, since=start)
        return self

    def _told(self):
        environment = self.desktop.environment | self.environment
        return {name: value for name, value in environment.items() if value is not None}

    def command(self, *arguments):
        """Starts it once more with these arguments, and returns the exit status."""
        return subprocess.run([self._command[0], *arguments], env=self._told(), timeout=10,
                              check=False, stdout=subprocess.DEVNULL).returncode

    def _read(self, process):
        for line in process.stdout:
            with self._changed:
                self.lines.append(line.rstrip("\n"))
                self._changed.notify_all()
            self._on_line(self.lines[-1])
        process.stdout.close()
        with self._changed:
            self._ended = True
            self._changed.notify_all()

    def stop(self, number=signal.SIGTERM, timeout=10):
        """Sends the signal and returns the exit status, negative for a signal's number."""
        self.process.send_signal(number)
        return self.wait_for_end(timeout)

    def end(self):
        """Ends it in order, if it runs, and returns its exit status. What does not end is killed,
        and that fails."""
        self.process.send_signal(signal.SIGCONT)
        try:
            return self.stop()
        finally:
            self.process.kill()

    def wait_for_end(self, timeout=10):
        try:
            status = self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise DesktopError("Velloro does not end;" + self._tail()) from None
        self._reader.join()
        return status

    # --- its hotkey -------------------------------------------------------------------------------

    def has_hotkey(self):
        """Whether the desktop gave it one the last time that it asked."""
        told = [line for line in self.lines if line.startswith("[HotkeyManager] ")]
        return any("Registered hotkey: " in line for line in told[-1:])

    def press(self, user):
        """Has the user press the hotkey, or runs the command in its place."""
        if self.has_hotkey():
            user.press()
        else:
            self.command("--press")

    def release(self, user):
        if self.has_hotkey():
            user.release()
        else:
            self.command("--release")

    # --- its output -----------------------------------------------------------------------------

    def mark(self):
        """A place in the output, for `since`."""
        return len(self.lines)

    def wait_for(self, start, since=0, timeout=60.0):
        """The first line after the mark that begins so. Fails when the program ends first."""
        deadline = time.monotonic() + timeout
        position = since
        with self._changed:
            while True:
                while position < len(self.lines):
                    if self.lines[position].startswith(start):
                        return self.lines[position]
                    position += 1
                remaining = deadline - time.monotonic()
                if self._ended:
                    raise DesktopError(f"Velloro ended before the line {start!r};" + self._tail())
                if remaining <= 0:
                    raise DesktopError(f"no line {start!r} in {timeout:g} s;" + self._tail())
                self._changed.wait(remaining)

    def wait_for_text(self, since=0, timeout=120.0):
        """The next final transcription in the output."""
        start = "[Dictation] Final transcription: '"
        return self.wait_for(start, since, timeout)[len(start):-1]

    def _tail(self):
        return " its output ends:\n" + "\n".join(self.lines[-25:])
