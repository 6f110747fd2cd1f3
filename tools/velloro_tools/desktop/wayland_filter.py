"""Stands between programs and a compositor and hides some of what it offers, so that a test sees
a compositor that has less."""

import contextlib
import os
import selectors
import socket
import struct
import threading

from .wayland_client import DISPLAY, DISPLAY_GET_REGISTRY, HEADER, REGISTRY_GLOBAL, Event

MOST_FILES = 28


class Direction:
    """Whole messages from one socket to the other, those left out that `passes` refuses."""

    def __init__(self, source, target, passes):
        self._source, self._target, self._passes = source, target, passes
        self._unsent = b""

    def forward(self):
        """Hands on what has come; whether more may."""
        data, files, _flags, _address = socket.recv_fds(self._source, 65536, MOST_FILES)
        passing = self._take_messages(data)
        try:
            # The files may come before the message that they belong to, not after it.
            if passing:
                socket.send_fds(self._target, [passing], files)
        finally:
            for file in files:
                os.close(file)
        return bool(data)

    def _take_messages(self, data):
        self._unsent += data
        passing = b""
        while len(self._unsent) >= HEADER.size:
            target, opcode, size = HEADER.unpack_from(self._unsent)
            if len(self._unsent) < size:
                break
            message, self._unsent = self._unsent[:size], self._unsent[size:]
            if self._passes(target, opcode, message[HEADER.size:]):
                passing += message
        return passing


class Conversation(threading.Thread):
    """One program's connection, until either side ends it."""

    def __init__(self, program, compositor, hidden):
        super().__init__(daemon=True)
        self._sockets = program, compositor
        self._hidden = hidden
        self._registries = set()

    def run(self):
        program, compositor = self._sockets
        with program, compositor, selectors.DefaultSelector() as selector, \
                contextlib.suppress(OSError):
            selector.register(program, selectors.EVENT_READ,
                              Direction(program, compositor, self._request_passes))
            selector.register(compositor, selectors.EVENT_READ,
                              Direction(compositor, program, self._event_passes))
            while all(key.data.forward() for key, _ in selector.select()):
                pass

    def _request_passes(self, target, opcode, payload):
        if (target, opcode) == (DISPLAY, DISPLAY_GET_REGISTRY):
            self._registries.add(struct.unpack("=I", payload)[0])
        return True

    def _event_passes(self, target, opcode, payload):
        if target not in self._registries or opcode != REGISTRY_GLOBAL:
            return True
        event = Event(opcode, payload, None)
        event.number()
        return event.text() not in self._hidden


class WaylandFilter:
    """Listens at `path` for programs and speaks for them to the compositor at `compositor`; the
    interfaces `hidden` are not offered."""

    def __init__(self, path, compositor, hidden):
        self._compositor, self._hidden = str(compositor), frozenset(hidden)
        self._listener = socket.socket(socket.AF_UNIX)
        self._listener.bind(str(path))
        self._listener.listen()
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        # Wakes the thread that waits for programs.
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()

    def _accept(self):
        with contextlib.suppress(OSError):
            while True:
                program, _address = self._listener.accept()
                compositor = socket.socket(socket.AF_UNIX)
                compositor.connect(self._compositor)
                Conversation(program, compositor, self._hidden).start()
