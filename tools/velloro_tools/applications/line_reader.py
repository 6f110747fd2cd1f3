#!/usr/bin/python3
"""What runs in the terminals: a line that can be written and erased, as a shell's.

usage: line_reader.py STATE TEXT

The line begins with TEXT, as if the user had written that. It is shown as it changes, and kept in
the file STATE, as JSON: "line", and "other" for what came and is neither text nor its erasure.
Pasted text comes between its brackets, as it does to a shell.
"""

import codecs
import json
import os
import re
import sys
import termios
import tty

ERASURES = "\b\x7f"
BRACKETS = re.compile(r"\x1b\[20[01]~")
# An escape sequence's end may come later.
SEQUENCE = re.compile(r"\x1b(?:\[[0-9;?]*[@-~]|O.|[^\[O])|[\x00-\x1f]")
UNFINISHED = re.compile(r"\x1b(?:\[[0-9;?]*|O)?$")


class Line:
    def __init__(self, text):
        self.text, self.other, self._rest = text, [], ""

    def take(self, characters):
        characters = BRACKETS.sub("", self._rest + characters)
        self._rest = ""
        while characters:
            sequence = SEQUENCE.match(characters)
            if UNFINISHED.match(characters):
                self._rest = characters
                return
            if characters[0] in ERASURES:
                self.text = self.text[:-1]
                characters = characters[1:]
            elif sequence:
                self.other.append(sequence[0])
                characters = characters[sequence.end():]
            else:
                self.text += characters[0]
                characters = characters[1:]


def keep(path, line):
    """The file is always whole."""
    with open(path + ".new", "w", encoding="utf-8") as file:
        json.dump({"line": line.text, "other": line.other}, file)
    os.replace(path + ".new", path)


def show(line):
    shown = "\r\x1b[J" + line.text[-70:]
    os.write(1, shown.encode())


def main(path, text):
    before = termios.tcgetattr(0)
    tty.setraw(0)
    os.write(1, b"\x1b[?2004h")
    line = Line(text)
    decoder = codecs.getincrementaldecoder("utf-8")("replace")
    try:
        while True:
            show(line)
            keep(path, line)
            received = os.read(0, 4096)
            if not received:
                return
            line.take(decoder.decode(received))
    finally:
        termios.tcsetattr(0, termios.TCSADRAIN, before)


if __name__ == "__main__":
    main(*sys.argv[1:])
