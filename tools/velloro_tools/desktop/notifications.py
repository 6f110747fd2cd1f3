"""The desktop's notification service: shows nothing, prints each notification as a line of JSON."""

import json

from gi.repository import Gio, GLib

INTERFACE = """
<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="GetServerInformation">
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/>
  </method>
  <signal name="NotificationClosed"><arg type="u"/><arg type="u"/></signal>
</interface></node>
"""

last_id = 0


def called(_connection, _sender, _path, _interface, method, parameters, invocation):
    global last_id
    answer = None
    if method == "GetCapabilities":
        answer = GLib.Variant("(as)", (["body"],))
    elif method == "GetServerInformation":
        answer = GLib.Variant("(ssss)", ("private-desktop", "Velloro", "1", "1.2"))
    elif method == "Notify":
        application, replaced, _icon, summary, body, _actions, hints, _timeout = parameters.unpack()
        last_id += 1
        print(json.dumps({"application": application, "summary": summary, "body": body,
                          "silent": "sound-name" not in hints and "sound-file" not in hints}),
              flush=True)
        answer = GLib.Variant("(u)", (replaced or last_id,))
    invocation.return_value(answer)


def main():
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    loop = GLib.MainLoop()
    Gio.bus_own_name(
        Gio.BusType.SESSION, "org.freedesktop.Notifications", Gio.BusNameOwnerFlags.NONE,
        lambda connection, _name: connection.register_object(
            "/org/freedesktop/Notifications", interface, called, None, None),
        None, lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
