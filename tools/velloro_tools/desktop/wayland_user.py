"""What a user does on a private desktop with a Wayland compositor."""

import subprocess

from .user import User


class WaylandUser(User):
    """Works on a WaylandDesktop: keys and clicks come from its devices, and what is seen is asked
    of its compositor."""

    def keys(self, *actions):
        held, action = [], None
        for word in [*actions, "end"]:
            if word in ("down", "up", "tap", "end"):
                self._lift(held)
                action = word
            elif action == "up":
                self.desktop.devices.key(word, False)
            else:
                self.desktop.devices.key(word, True)
                if action == "tap":
                    held.append(word)

    def _lift(self, held):
        while held:
            self.desktop.devices.key(held.pop(), False)

    def move(self, x, y):
        self.desktop.devices.move(x, y)

    def click(self, x, y, button=1):
        self.move(x, y)
        self.desktop.devices.button(button, True)
        self.desktop.devices.button(button, False)

    def active_window(self):
        return self.desktop.focused_window()

    def screenshot(self, path):
        subprocess.run(["convert", "ppm:-", str(path)], check=True, timeout=20,
                       input=self.pixels(0, 0, *self.desktop.size))

    def windows(self, title):
        return self.desktop.places(title)

    def window_titles(self):
        return self.desktop.window_titles()

    def pixels(self, x, y, width, height):
        """What the screen shows there, as a portable pixmap."""
        return self.desktop.pixels(x, y, width, height)

    # --- clipboard ------------------------------------------------------------------------------

    def copy(self, text, kind="text/plain"):
        """Puts text on the clipboard, as another program does."""
        subprocess.run(["wl-copy", "--type", kind], input=text, text=True,
                       env=self.desktop.environment, check=True, timeout=10,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def clipboard(self):
        content = self.clipboard_as("text/plain")
        return content and content.decode()

    def clipboard_kinds(self):
        """All that the clipboard's content can be had as."""
        return (self._paste("--list-types") or b"").decode().split()

    def clipboard_as(self, kind):
        """The clipboard's content as bytes, or None."""
        return self._paste("--no-newline", "--type", kind)

    def _paste(self, *options):
        try:
            return subprocess.run(["wl-paste", *options], env=self.desktop.environment,
                                  check=True, timeout=10, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL).stdout
        except subprocess.CalledProcessError:
            return None  # nobody has it, or not as that
