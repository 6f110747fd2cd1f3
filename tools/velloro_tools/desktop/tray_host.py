"""A desktop's tray for StatusNotifierItems: shows nothing, prints what an item shows, whenever that
changes, as a line of JSON: its bus name, title, status, tooltip and a number for its icon."""

import json
import zlib

from gi.repository import Gio, GLib

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
INTERFACE = f"""
<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>
"""

items = []
last_line = None


def show(connection, item):
    def read(_connection, result):
        global last_line
        try:
            properties, = connection.call_finish(result).unpack()
        except GLib.Error:
            return  # gone meanwhile
        pixels = b"".join(bytes(data) for _width, _height, data in properties["IconPixmap"])
        line = json.dumps({"item": item, "title": properties["Title"],
                           "status": properties["Status"], "tooltip": properties["ToolTip"][2],
                           "icon": zlib.crc32(pixels)})
        # The icon and its tooltip come one after the other.
        if line != last_line:
            last_line = line
            print(line, flush=True)
    connection.call(item, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
                    GLib.Variant("(s)", (ITEM,)), None, Gio.DBusCallFlags.NONE, -1, None, read)


def called(connection, _sender, _path, _interface, method, parameters, invocation):
    if method == "RegisterStatusNotifierItem":
        item, = parameters.unpack()
        items.append(item)
        connection.signal_subscribe(item, ITEM, None, None, None, Gio.DBusSignalFlags.NONE,
                                    lambda *_: show(connection, item))
        show(connection, item)
    invocation.return_value(None)


def asked(_connection, _sender, _path, _interface, name):
    return {"RegisteredStatusNotifierItems": GLib.Variant("as", items),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0)}[name]


def main():
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    loop = GLib.MainLoop()
    Gio.bus_own_name(
        Gio.BusType.SESSION, WATCHER, Gio.BusNameOwnerFlags.NONE,
        lambda connection, _name: connection.register_object(
            "/StatusNotifierWatcher", interface, called, asked, None),
        None, lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
