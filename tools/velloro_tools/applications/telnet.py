"""A telnet server for one client, for terminals that only ever show another machine."""

import os
import pty
import re
import socket
import threading

# "I echo, and send characters rather than lines; you do so, too": a terminal as every remote
# machine has it.
GREETING = bytes([255, 251, 1, 255, 251, 3, 255, 253, 3])
NEGOTIATION = re.compile(rb"\xff(?:\xfa.*?\xff\xf0|[\xfb-\xfe].|[\xf0-\xf9])", re.DOTALL)


class TelnetServer:
    """Runs the command in a pseudo terminal for the first that connects to its port."""

    def __init__(self, command, environment):
        self._command, self._environment = command, environment
        self._listening = socket.create_server(("127.0.0.1", 0))
        self.port = self._listening.getsockname()[1]
        threading.Thread(target=self._serve, daemon=True).start()

    def close(self):
        self._listening.close()

    def _serve(self):
        try:
            connection, _ = self._listening.accept()
        except OSError:
            return  # closed before anybody came
        pid, terminal = pty.fork()
        if pid == 0:
            os.execve(self._command[0], self._command, self._environment)
        connection.sendall(GREETING)
        threading.Thread(target=self._show, args=[terminal, connection], daemon=True).start()
        while received := connection.recv(4096):
            os.write(terminal, NEGOTIATION.sub(b"", received))

    def _show(self, terminal, connection):
        try:
            while shown := os.read(terminal, 4096):
                connection.sendall(shown)
        except OSError:
            pass  # either end was closed
