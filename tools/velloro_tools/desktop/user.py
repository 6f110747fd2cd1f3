"""What a user does on a private desktop: opens programs, presses keys, speaks, reads, copies."""

import json
import pathlib
import re
import shlex
import subprocess
import sys

from .errors import DesktopError, wait_for

HERE = pathlib.Path(__file__).resolve().parent
PRESS_KEY = HERE / "press_key.py"
HOTKEY = ["Alt_L", "space"]
# How each is told to run a command.
TERMINALS = {
    "xterm": ["xterm", "-u8", "-fa", "DejaVu Sans Mono", "-fs", "11", "-geometry", "110x24", "-e"],
    "foot": ["foot", "--font", "DejaVu Sans Mono:size=10"],
}


class User:
    """Works on the given desktop (see PrivateDesktop)."""

    def __init__(self, desktop):
        self.desktop = desktop
        self._notifying = None

    # --- keys -----------------------------------------------------------------------------------

    def keys(self, *actions):
        """As press_key.py has it: `keys("down", "Alt_L", "space")`, `keys("tap", "Tab")`."""
        self.desktop.run([sys.executable, PRESS_KEY, *actions])

    def press(self, keys=HOTKEY):
        self.keys("down", *keys)

    def release(self, keys=HOTKEY):
        self.keys("up", *reversed(keys))

    # --- pointer --------------------------------------------------------------------------------

    def move(self, x, y):
        self.desktop.run(["xdotool", "mousemove", str(x), str(y)])

    def click(self, x, y, button=1):
        self.desktop.run(["xdotool", "mousemove", str(x), str(y), "click", str(button)])

    # --- speech ---------------------------------------------------------------------------------

    def prepare_speech(self, recording):
        """The recording in the form that the sound server plays, with half a second of silence
        at its end, so that the last word is heard before the key is released."""
        prepared = self.desktop.folder / (pathlib.Path(recording).name + ".spoken.wav")
        if not prepared.exists():
            commands = [
                ["sox", "-V1", recording, "-b", "16", prepared, "pad", "0", "0.5"],
                ["ffmpeg", "-v", "error", "-i", recording, "-af", "apad=pad_dur=0.5",
                 "-sample_fmt", "s16", prepared]]
            for command in commands:
                try:
                    self.desktop.run(command, stderr=subprocess.DEVNULL)
                    break
                except (OSError, subprocess.CalledProcessError):
                    prepared.unlink(missing_ok=True)
            else:
                raise DesktopError(f"the sound tools can't read {recording}")
        return prepared

    def start_speaking(self, recording):
        """Begins to play the recording into the microphone; `wait()` on the result waits for
        its end."""
        return self.desktop.start(["paplay", "--device=voice", "--latency-msec=40",
                                   self.prepare_speech(recording)], log="speech")

    def speak(self, recording):
        """Plays the recording into the microphone, to its end."""
        if self.start_speaking(recording).wait() != 0:
            raise DesktopError("the recording could not be played: " + self.desktop.log("speech"))

    # --- programs -------------------------------------------------------------------------------

    def open(self, command, log="application"):
        """Starts a program and waits until its window has the focus."""
        before = self.active_window()
        try:
            process = self.desktop.start(command, log=log)
        except OSError as error:
            raise DesktopError(f"{command[0]} can't be started: {error.strerror}") from None

        def has_window():
            if process.poll() is not None:
                raise DesktopError(f"{shlex.join(map(str, command))} ended at once:\n"
                                   + self.desktop.log(log))
            return self.active_window() not in (None, before)
        wait_for(has_window, f"the window of {command[0]}")
        return process

    def open_terminal(self, terminal="xterm"):
        """Opens a terminal (one of TERMINALS) with a shell. What stands in it is
        `terminal_text()`."""
        self._typescript = self.desktop.folder / f"typescript-{terminal}"
        self._typescript.unlink(missing_ok=True)
        # A plain shell: its line is echoed by the terminal, byte for byte.
        shell = "env PS1='$ ' ENV= dash -i"
        process = self.open([*TERMINALS[terminal], "script", "-qfc", shell,
                             str(self._typescript)])
        wait_for(lambda: "$ " in self.terminal_text(), "the shell's prompt")
        return process

    def terminal_text(self):
        """All that the terminal has shown since it was opened, its first line (a heading) left
        out."""
        if not self._typescript.exists():
            return ""
        return self._typescript.read_text(errors="replace").partition("\n")[2]

    def terminal_line(self):
        """What stands after the terminal's first prompt now, its backspaces done."""
        line = ""
        for character in self.terminal_text().partition("$ ")[2].replace("\x1b[K", ""):
            if character == "\b":
                line = line[:-1]
            elif character >= " ":
                line += character
        return line

    def active_window(self):
        """The number of the window that has the focus and its process, or None. (The number
        alone may come back with the next program's window.)"""
        number = re.search("0x[0-9a-f]+",
                           self.desktop.run(["xprop", "-root", "_NET_ACTIVE_WINDOW"]))
        if not number or number[0] == "0x0":
            return None
        try:
            process = self.desktop.run(["xprop", "-id", number[0], "_NET_WM_PID"],
                                       stderr=subprocess.DEVNULL)
        except subprocess.CalledProcessError:
            return None  # closed meanwhile
        return number[0], process.rpartition("=")[2].strip()

    # --- what can be seen -----------------------------------------------------------------------

    def focus(self):
        """What has the focus on the accessibility bus (see focused_text.py), or None, also if it
        does not answer now."""
        try:
            return json.loads(
                self.desktop.run([sys.executable, HERE / "focused_text.py"], timeout=10))
        except subprocess.TimeoutExpired:
            return None

    def focused_text(self):
        """The text of what has the focus, or None."""
        focus = self.focus()
        return focus and focus["text"]

    def wait_for_focus(self, condition=lambda focus: focus["text"] is not None,
                       what="a text field with the focus", timeout=20.0):
        """What has the focus, once it is as the condition wants it."""
        last = None

        def check():
            nonlocal last
            last = self.focus()
            return last if last and condition(last) else None
        try:
            return wait_for(check, what, timeout)
        except DesktopError as error:
            raise DesktopError(f"{error}; last seen: {last}") from None

    def controls(self):
        """What can have the keyboard in the active window (see controls.py)."""
        return json.loads(self.desktop.run([sys.executable, HERE / "controls.py"]))

    def windows(self, title):
        """The places (x, y, width, height) of the windows in sight with exactly this title."""
        def tree():
            try:
                return self.desktop.run(["xwininfo", "-root", "-tree"], stderr=subprocess.DEVNULL)
            except subprocess.CalledProcessError:
                return None  # a window was closed meanwhile
        places = []
        for number, width, height, x, y in re.findall(
                rf'(0x\w+) "{re.escape(title)}": .*?(\d+)x(\d+)\+\S+  \+(-?\d+)\+(-?\d+)',
                wait_for(tree, "the windows")):
            try:
                window = self.desktop.run(["xwininfo", "-id", number], stderr=subprocess.DEVNULL)
            except subprocess.CalledProcessError:
                continue  # closed meanwhile
            if "IsViewable" in window:
                places.append((int(x), int(y), int(width), int(height)))
        return places

    def pixels(self, x, y, width, height):
        """What the screen shows there, as bytes."""
        return self.desktop.run(["import", "-window", "root", "-depth", "8", "-crop",
                                 f"{width}x{height}+{x}+{y}", "rgb:-"], encoding="latin-1")

    def wait_for_text(self, text, timeout=20.0):
        """Waits until the focused element holds exactly this text."""
        return self.wait_for_focus(lambda focus: focus["text"] == text, f"the text {text!r}",
                                   timeout)

    def window_contents(self):
        """What the active window shows (see window_contents.py), the window itself first."""
        return json.loads(self.desktop.run([sys.executable, HERE / "window_contents.py"]))

    def window_titles(self):
        """The titles of all windows that the window manager looks after."""
        listed = self.desktop.run(["xprop", "-root", "_NET_CLIENT_LIST"])
        titles = []
        for number in re.findall("0x[0-9a-f]+", listed):
            try:
                title = self.desktop.run(["xprop", "-id", number, "_NET_WM_NAME"],
                                         stderr=subprocess.DEVNULL)
            except subprocess.CalledProcessError:
                continue  # closed meanwhile
            titles.append(title.partition(" = ")[2].strip().strip('"'))
        return titles

    def screenshot(self, path):
        self.desktop.run(["import", "-window", "root", str(path)])

    def copy(self, text):
        """Puts text on the clipboard, as another program does."""
        subprocess.run(["xclip", "-selection", "clipboard", "-in"], input=text, text=True,
                       env=self.desktop.environment, check=True, timeout=10,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def clipboard(self):
        """The text on the clipboard, or None."""
        try:
            return self.desktop.run(["xclip", "-selection", "clipboard", "-out"],
                                    stderr=subprocess.DEVNULL)
        except subprocess.CalledProcessError:
            return None  # nobody has it, or not as text

    # --- notifications --------------------------------------------------------------------------

    def watch_notifications(self):
        """Becomes the desktop's notification service, before a program asks for one."""
        self._notifying = self.desktop.start([sys.executable, HERE / "notifications.py"],
                                             log="notifications")
        self.desktop.wait_for_bus_name("org.freedesktop.Notifications")

    def notifications(self):
        """All notifications so far, as dictionaries with application, summary, body, silent."""
        return [json.loads(line) for line in self.desktop.log("notifications").splitlines()
                if line.startswith("{")]

    # --- tray -----------------------------------------------------------------------------------

    def host_tray(self):
        """Becomes the desktop's tray for StatusNotifierItems."""
        process = self.desktop.start([sys.executable, HERE / "tray_host.py"], log="tray")
        self.desktop.wait_for_bus_name("org.kde.StatusNotifierWatcher")
        return process

    def tray_item(self):
        """All that the tray's item has shown so far, as dictionaries (see tray_host.py)."""
        return [json.loads(line) for line in self.desktop.log("tray").splitlines()
                if line.startswith("{")]
