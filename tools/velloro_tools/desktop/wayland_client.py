"""A small Wayland client: what a user's devices and eyes need of the protocol, and no more.

Objects are numbers. Requests and events are the numbers that they have in their interface, counted
from 0 in the order of its description.
"""

import array
import collections
import os
import socket
import struct

from .errors import DesktopError

DISPLAY = 1
DISPLAY_SYNC, DISPLAY_GET_REGISTRY = 0, 1
DISPLAY_ERROR = 0
REGISTRY_BIND = 0
REGISTRY_GLOBAL = 0
HEADER = struct.Struct("=IHH")


class File:
    """An argument that is an open file. The connection does not close it."""

    def __init__(self, number):
        self.number = number


class Event:
    """The arguments of an event, to be taken in their order."""

    def __init__(self, opcode, payload, files):
        self.opcode = opcode
        self._payload = payload
        self._files = files

    def number(self):
        value, = struct.unpack_from("=I", self._payload)
        self._payload = self._payload[4:]
        return value

    def bytes(self):
        size = self.number()
        value, self._payload = self._payload[:size], self._payload[(size + 3) // 4 * 4:]
        return value

    def text(self):
        return self.bytes()[:-1].decode()

    def numbers(self):
        return list(array.array("I", self.bytes()))

    def file(self):
        """A file that the receiver has to close."""
        return self._files.popleft()


class WaylandClient:
    """A connection to the compositor that listens at the path."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(20)
        self._socket.connect(str(path))
        self._unread = b""
        self._files = collections.deque()
        self._last = DISPLAY
        self._handlers = {DISPLAY: self._display_event}
        self._globals = {}
        self._registry = self.make(self._registry_event)
        self.request(DISPLAY, DISPLAY_GET_REGISTRY, self._registry)
        self.roundtrip()

    def close(self):
        self._socket.close()

    def offers(self, interface):
        return interface in self._globals

    def bind(self, interface, version, handler=lambda event: None):
        """The global object of that interface; its events go to the handler."""
        if not self.offers(interface):
            raise DesktopError(f"the compositor offers no {interface}")
        name, _offered = self._globals[interface]
        made = self.make(handler)
        self.request(self._registry, REGISTRY_BIND, name, interface, version, made)
        return made

    def make(self, handler=lambda event: None):
        """The number of an object that the next request makes."""
        self._last += 1
        self._handlers[self._last] = handler
        return self._last

    def handle(self, number, handler):
        """Has the events of an object that the compositor made go to the handler."""
        self._handlers[number] = handler

    def request(self, target, opcode, *arguments):
        payload = b"".join(map(self._encode, arguments))
        files = [one.number for one in arguments if isinstance(one, File)]
        message = HEADER.pack(target, opcode, HEADER.size + len(payload)) + payload
        socket.send_fds(self._socket, [message], files)

    @staticmethod
    def _encode(argument):
        if isinstance(argument, File):
            return b""
        if isinstance(argument, str):
            text = argument.encode() + b"\0"
            return struct.pack("=I", len(text)) + text + b"\0" * (-len(text) % 4)
        if isinstance(argument, float):
            # With eight binary digits after the point.
            argument = round(argument * 256)
        return struct.pack("=I", argument & 0xffffffff)

    def roundtrip(self):
        """Waits until the compositor has dealt with all requests."""
        done = []
        self.request(DISPLAY, DISPLAY_SYNC, self.make(done.append))
        while not done:
            self.dispatch()

    def dispatch(self):
        """Waits for the next event and handles it."""
        header = self._read(HEADER.size)
        target, opcode, size = HEADER.unpack(header)
        event = Event(opcode, self._read(size - HEADER.size), self._files)
        self._handlers.get(target, lambda event: None)(event)

    def _read(self, size):
        while len(self._unread) < size:
            try:
                data, files, _flags, _address = socket.recv_fds(self._socket, 4096, 16)
            except OSError as error:
                raise DesktopError(f"the compositor does not answer: {error}") from None
            if not data:
                raise DesktopError("the compositor has closed the connection")
            self._unread += data
            self._files.extend(files)
        taken, self._unread = self._unread[:size], self._unread[size:]
        return taken

    def _display_event(self, event):
        if event.opcode == DISPLAY_ERROR:
            target, code = event.number(), event.number()
            raise DesktopError(f"the compositor refuses object {target}: {event.text()} ({code})")

    def _registry_event(self, event):
        if event.opcode == REGISTRY_GLOBAL:
            name, interface, version = event.number(), event.text(), event.number()
            self._globals.setdefault(interface, (name, version))


def anonymous_file(content):
    """A file in memory that holds the content."""
    number = os.memfd_create("velloro-desktop")
    with open(number, "wb", closefd=False) as file:
        file.write(content)
    return number
