"""The terminals."""

from .application import Application
from .fields import GreetedField, TelnetField, TerminalField

VTE, QT5, QT5_KDE, OWN, OPENGL = "GTK 3, VTE", "Qt 5", "Qt 5, KDE", "own, X11", "own, OpenGL"

# A server that the session bus would start, and that a bus outside the root does not find.
GNOME_TERMINAL = (
    "/usr/libexec/gnome-terminal-server & "
    "until dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus "
    "org.freedesktop.DBus.NameHasOwner string:org.gnome.Terminal | grep -q true; "
    "do sleep 0.2; done; gnome-terminal --wait -- {shell}")
# These open their window when they are called a second time.
GUAKE = "guake & until guake --show --execute-command='exec {shell}'; do sleep 0.5; done; wait"
YAKUAKE = ("yakuake & until dbus-send --session --print-reply --dest=org.kde.yakuake "
           "/yakuake/window org.kde.yakuake.toggleWindowState; do sleep 0.5; done; wait")


def terminal(name, toolkit, package, *command, field=TerminalField, **more):
    return Application(name, toolkit, [package], list(command), field, **more)


TERMINALS = [
    terminal("xterm", "own, Xt", "xterm", "xterm", "-e", "{shell}"),
    terminal("uxterm", "own, Xt", "xterm", "uxterm", "-e", "{shell}"),
    terminal("lxterm", "own, Xt", "xterm", "lxterm", "-e", "{shell}"),
    terminal("rxvt-unicode", OWN, "rxvt-unicode", "urxvt", "-e", "{shell}"),
    terminal("Konsole", QT5_KDE, "konsole", "konsole", "-e", "{shell}"),
    terminal("GNOME Terminal", VTE, "gnome-terminal", "sh", "-c", GNOME_TERMINAL),
    terminal("GNOME Console", "GTK 4, VTE", "gnome-console", "kgx", "-e", "{shell}"),
    terminal("Xfce Terminal", VTE, "xfce4-terminal", "xfce4-terminal", "--disable-server", "-x",
             "{shell}"),
    terminal("MATE Terminal", VTE, "mate-terminal", "mate-terminal", "--disable-factory", "-x",
             "{shell}"),
    terminal("LXTerminal", VTE, "lxterminal", "lxterminal", "--no-remote", "-e", "{shell}"),
    terminal("QTerminal", QT5, "qterminal", "qterminal", "-e", "{shell}"),
    terminal("Terminator", VTE, "terminator", "terminator", "--no-dbus", "-x", "{shell}"),
    terminal("Tilix", VTE, "tilix", "tilix", "--new-process", "-e", "{shell}"),
    terminal("kitty", OPENGL, "kitty", "kitty", "-o", "update_check_interval=0", "{shell}"),
    terminal("Alacritty", OPENGL, "alacritty", "alacritty", "-e", "{shell}"),
    terminal("st", OWN, "stterm", "stterm", "-e", "{shell}"),
    terminal("Sakura", VTE, "sakura", "sakura", "-x", "{shell}"),
    terminal("Terminology", "EFL", "terminology", "terminology", "-e", "{shell}",
             field=GreetedField),
    terminal("cool-retro-term", QT5, "cool-retro-term", "cool-retro-term", "-e", "{shell}"),
    terminal("Deepin Terminal", "Qt 5, DTK", "deepin-terminal", "deepin-terminal", "-e",
             "{shell}"),
    terminal("Guake", VTE, "guake", "sh", "-c", GUAKE),
    terminal("Tilda", VTE, "tilda", "tilda", "-c", "{shell}"),
    terminal("Yakuake", QT5_KDE, "yakuake", "sh", "-c", YAKUAKE,
             environment={"SHELL": "{shell}"},
             files={".config/yakuakerc": "[Dialogs]\nFirstRun=false\n"}),
    terminal("pterm", "GTK 3", "pterm", "pterm", "-e", "{shell}"),
    terminal("PuTTY", "GTK 3", "putty", "putty", "-telnet", "-P", "{port}", "127.0.0.1",
             field=TelnetField),
    terminal("Zutty", OPENGL, "zutty", "zutty", "-fontpath", "/usr/share/fonts",
             "-font", "DejaVuSansMono", "-e", "{shell}"),
    terminal("Termit", VTE, "termit", "termit", "-e", "{shell}"),
    terminal("Eterm", "own, Imlib2", "eterm", "Eterm", "-F", "fixed", "--mfont",
             "fixed", "-e", "{shell}"),
    terminal("mlterm", OWN, "mlterm", "mlterm", "-e", "{shell}"),
    terminal("xiterm+thai", OWN, "xiterm+thai", "xiterm+thai", "-e", "{shell}"),
    terminal("pangoterm", "GTK 2", "pangoterm", "pangoterm", "{shell}"),
]
