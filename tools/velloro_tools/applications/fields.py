"""The kinds of fields that are dictated into: how each gets its text, and how it is read."""

import email
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time

from ..desktop import DesktopError, wait_for
from .page import Page
from .telnet import TelnetServer

# What the user has written already. The words are dictated behind it.
BEFORE = "The letter that I have been writing all morning, word by word: "
HERE = pathlib.Path(__file__).resolve().parent


class Field:
    """A field in an application on the desktop. `placeholders` are for the application's command,
    `{home}` and others as the kind of field has them."""

    def __init__(self, user, application):
        self.user, self.desktop, self.application = user, user.desktop, application
        self.placeholders = {"home": str(self.desktop.home)}

    def wait_until_ready(self):
        """Waits until the field has the keyboard and the caret stands behind its text."""
        raise NotImplementedError

    def text(self):
        """What the field holds now, or None if that can't be told now."""
        raise NotImplementedError

    def remark(self):
        """What else the user sees, or ""."""
        return ""

    def close(self):
        pass

    def _wait_for_title(self, title=None):
        """Waits for the application's window, and until it is drawn and keeps the keyboard: there
        is nothing to await but that its picture stays the same, and no question comes up."""
        title = self.application.title if title is None else title
        wait_for(lambda: self._active_window_with(title), f"a window {title!r}",
                 timeout=self.application.start_limit, interval=0.2)
        last, since = None, time.monotonic()

        def is_still():
            nonlocal last, since
            window = self._active_window_with(title)
            picture = window and self.desktop.run(
                ["import", "-window", window, "-depth", "8", "gray:-"], encoding="latin-1")
            if not picture or last is None or different(last, picture):
                last, since = picture, time.monotonic()
            return time.monotonic() > since + self.application.settled
        wait_for(is_still, f"a window {title!r} to be drawn and to keep the keyboard", timeout=60,
                 interval=0.3)

    def _active_window_with(self, title):
        window = self.user.active_window()
        try:
            if window and title in self.desktop.run(["xdotool", "getwindowname", window[0]]):
                return window[0]
        except subprocess.CalledProcessError:
            pass  # closed meanwhile
        return None


def different(picture, other):
    """A caret blinks, and that is all."""
    if len(picture) != len(other):
        return True
    return sum(a != b for a, b in zip(picture, other)) > 200


class FileField(Field):
    """An editor with a file, which tells by saving it."""

    suffix = ".txt"

    def __init__(self, user, application):
        super().__init__(user, application)
        self.file = self.desktop.home / ("letter" + self.suffix)
        self.file.write_text(BEFORE)
        self.placeholders["file"] = str(self.file)

    def wait_until_ready(self):
        self._wait_for_title()
        for keys in self.application.before:
            self.user.keys("tap", *keys)

    def text(self):
        saved = self._saved()
        for keys in self.application.save:
            self.user.keys("tap", *keys)
        try:
            wait_for(lambda: self._saved() != saved, "another text", timeout=0.5)
        except DesktopError:
            pass  # it is the same as before
        return self._saved()

    def _saved(self):
        # Some write a byte order mark.
        return self.file.read_text("utf-8-sig", errors="replace").rstrip("\r\n")


class DraftField(FileField):
    """A letter that is composed in a mail program, which tells by being saved as a draft."""

    def wait_until_ready(self):
        # Its first window has nothing to write into.
        self._wait_for_title("Mozilla Thunderbird")
        # Which takes keys only some time after it is drawn.
        wait_for(lambda: self._active_window_with("Write: ")
                 or self.user.keys("tap", "Control_L", "n"), "the letter's window", interval=3,
                 timeout=60)
        self._wait_for_title("Write: ")
        self._type("reader@example.org")
        # To the next address, to the subject, to the letter.
        self._next("Write: ")
        self._next("Write: ")
        self._type("letter")
        self._next("Write: letter")
        self._type(BEFORE)

    def _next(self, title):
        self.user.keys("tap", "Tab")
        self._wait_for_title(title)

    def _type(self, text):
        self.desktop.run(["xdotool", "type", "--delay", "30", text])

    def _saved(self):
        drafts = next(iter(self.desktop.home.rglob("Drafts")), None)
        letters = ("\n" + drafts.read_text()).split("\nFrom ")[1:] if drafts else []
        if not letters:
            return None
        message = email.message_from_string(letters[-1].partition("\n")[2])
        return message.get_payload(decode=True).decode().rstrip("\r\n")


class PageField(Field):
    """A field of a page in a browser; the page itself tells what it holds."""

    def __init__(self, user, application):
        super().__init__(user, application)
        self._page = Page(application.page, BEFORE)
        self.placeholders["page"] = self._page.address

    def wait_until_ready(self):
        wait_for(lambda: self._page.state["focused"], "the page's field to have the keyboard",
                 timeout=self.application.start_limit)
        self._wait_for_title()

    def text(self):
        text = self._page.state["text"]
        return text and text.replace("\xa0", " ").rstrip("\n")

    def close(self):
        self._page.close()


class TerminalField(Field):
    """A line in a terminal."""

    def __init__(self, user, application):
        super().__init__(user, application)
        shutil.copy(HERE / "line_reader.py", self.desktop.folder)
        self._state = self.desktop.folder / "line.json"
        # One word, which every terminal can start.
        self.reader = self.desktop.folder / "reader"
        self.reader.write_text("#!/bin/sh\nexec /usr/bin/python3 "
                               f"{self.desktop.folder}/line_reader.py {self._state} '{BEFORE}'\n")
        self.reader.chmod(0o755)
        self.placeholders["shell"] = str(self.reader)

    def wait_until_ready(self):
        wait_for(self._state.exists, "the terminal's program", interval=0.1,
                 timeout=self.application.start_limit)
        self._wait_for_title()

    def text(self):
        return self._read()["line"]

    def remark(self):
        other = self._read()["other"]
        return "the terminal was sent " + ", ".join(map(repr, other)) if other else ""

    def _read(self):
        if not self._state.exists():
            raise DesktopError("the terminal's program does not run")
        return json.loads(self._state.read_text())


class GreetedField(TerminalField):
    """A line in a terminal that greets its user with questions at its first start."""

    def wait_until_ready(self):
        super().wait_until_ready()
        self.user.keys("tap", "Return")
        self._wait_for_title()
        # The questions had the keyboard.
        window = self.user.active_window()[0]
        self.desktop.run(["xdotool", "mousemove", "--window", window, "200", "100", "click", "1"])
        self._wait_for_title()


class TelnetField(TerminalField):
    """A line of another machine's, shown by a terminal that only connects to one."""

    def __init__(self, user, application):
        super().__init__(user, application)
        self._server = TelnetServer([sys.executable, str(HERE / "line_reader.py"),
                                     str(self._state), BEFORE],
                                    dict(os.environ, TERM="xterm"))
        self.placeholders["port"] = str(self._server.port)

    def close(self):
        self._server.close()
