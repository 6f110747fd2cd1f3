"""A back end of the desktop portal that offers global shortcuts, and answers the user's dialogs as
it is told.

What the test wants of it is the interface org.velloro.Test: Press and Release send each bound
shortcut, Close ends the sessions, Refuse has the user refuse whatever is asked from then on. Prints
"bound" with the triggers for each shortcut that was bound.
"""

import time

from gi.repository import Gio, GLib

NAME = "org.freedesktop.impl.portal.desktop.test"
PATH = "/org/freedesktop/portal/desktop"
SHORTCUTS = "org.freedesktop.impl.portal.GlobalShortcuts"
SESSION = "org.freedesktop.impl.portal.Session"
ANSWERED, REFUSED = 0, 1

INTERFACES = f"""<node>
<interface name="{SHORTCUTS}">
  <method name="CreateSession">
    <arg type="o" direction="in"/><arg type="o" direction="in"/><arg type="s" direction="in"/>
    <arg type="a{{sv}}" direction="in"/>
    <arg type="u" direction="out"/><arg type="a{{sv}}" direction="out"/>
  </method>
  <method name="BindShortcuts">
    <arg type="o" direction="in"/><arg type="o" direction="in"/>
    <arg type="a(sa{{sv}})" direction="in"/><arg type="s" direction="in"/>
    <arg type="a{{sv}}" direction="in"/>
    <arg type="u" direction="out"/><arg type="a{{sv}}" direction="out"/>
  </method>
  <method name="ListShortcuts">
    <arg type="o" direction="in"/><arg type="o" direction="in"/>
    <arg type="u" direction="out"/><arg type="a{{sv}}" direction="out"/>
  </method>
  <signal name="Activated">
    <arg type="o"/><arg type="s"/><arg type="t"/><arg type="a{{sv}}"/>
  </signal>
  <signal name="Deactivated">
    <arg type="o"/><arg type="s"/><arg type="t"/><arg type="a{{sv}}"/>
  </signal>
  <signal name="ShortcutsChanged"><arg type="o"/><arg type="a(sa{{sv}})"/></signal>
  <property name="version" type="u" access="read"/>
</interface>
<interface name="{SESSION}">
  <method name="Close"/>
  <signal name="Closed"/>
  <property name="version" type="u" access="read"/>
</interface>
<interface name="org.velloro.Test">
  <method name="Press"/><method name="Release"/><method name="Close"/><method name="Refuse"/>
</interface>
</node>"""


class Backend:
    def __init__(self, connection):
        self._connection = connection
        self._interfaces = {one.name: one
                            for one in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces}
        self._sessions = {}
        self._is_refusing = False
        for name in (SHORTCUTS, "org.velloro.Test"):
            self._offer(PATH, name)

    def _offer(self, path, name):
        return self._connection.register_object(
            path, self._interfaces[name], self._called, lambda *_: GLib.Variant("u", 1), None)

    def _called(self, _connection, _sender, path, interface, method, parameters, invocation):
        if interface == SESSION:
            self._end(path)
            invocation.return_value(None)
        elif interface == SHORTCUTS:
            answer = getattr(self, method)(*parameters.unpack())
            status = REFUSED if self._is_refusing else ANSWERED
            invocation.return_value(GLib.Variant("(ua{sv})", (status, answer)))
        else:
            getattr(self, method)()
            invocation.return_value(None)

    # --- what the portal asks for -----------------------------------------------------------------

    def CreateSession(self, _request, session, _application, _options):
        self._sessions[session] = {"object": self._offer(session, SESSION), "shortcuts": []}
        return {}

    def BindShortcuts(self, request, session, shortcuts, _window, _options):
        if self._is_refusing:
            return {}
        self._sessions[session]["shortcuts"] = shortcuts
        for name, properties in shortcuts:
            print("bound", name, properties.get("preferred_trigger"), flush=True)
        return self.ListShortcuts(request, session)

    def ListShortcuts(self, _request, session):
        listed = [(name, {"description": GLib.Variant("s", properties.get("description", "")),
                          "trigger_description": GLib.Variant("s", "Alt+Space")})
                  for name, properties in self._sessions[session]["shortcuts"]]
        return {"shortcuts": GLib.Variant("a(sa{sv})", listed)}

    # --- what the test asks for -------------------------------------------------------------------

    def Press(self):
        self._tell("Activated")

    def Release(self):
        self._tell("Deactivated")

    def Refuse(self):
        self._is_refusing = True

    def Close(self):
        for session in list(self._sessions):
            self._connection.emit_signal(None, session, SESSION, "Closed", None)
            self._end(session)

    def _tell(self, signal):
        now = time.monotonic_ns() // 1_000_000
        for session, content in self._sessions.items():
            for name, _properties in content["shortcuts"]:
                self._connection.emit_signal(None, PATH, SHORTCUTS, signal,
                                             GLib.Variant("(osta{sv})", (session, name, now, {})))

    def _end(self, session):
        if content := self._sessions.pop(session, None):
            self._connection.unregister_object(content["object"])


def main():
    loop = GLib.MainLoop()
    backends = []
    Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE,
                     lambda connection, _name: backends.append(Backend(connection)), None,
                     lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
