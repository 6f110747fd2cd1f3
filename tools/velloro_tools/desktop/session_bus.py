"""The session bus of a private desktop, for what its compositor offers there."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from .errors import DesktopError  # noqa: E402


class SessionBus:
    def __init__(self, address):
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def close(self):
        self._connection.close_sync()

    def call(self, name, path, method, signature="()", arguments=(), files=()):
        """The method's results. `method` begins with its interface; a handle among the arguments
        is the place of a file descriptor in `files`."""
        interface, _, member = method.rpartition(".")
        listed = Gio.UnixFDList.new()
        for file in files:
            listed.append(file)
        try:
            results, _listed = self._connection.call_with_unix_fd_list_sync(
                name, path, interface, member, GLib.Variant(signature, arguments), None,
                Gio.DBusCallFlags.NONE, 20000, listed, None)
        except GLib.Error as error:
            raise DesktopError(f"{method}: {error.message}") from None
        return results.unpack()
