"""The private desktop: X server, window manager, session bus, accessibility bus, sound server."""

import os
import pathlib
import re
import secrets
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile

from . import watchdog
from .errors import DesktopError, MissingComponent, wait_for
from .user import User

ACCESSIBILITY_LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
COMMANDS = ["dbus-daemon", "dbus-send", "pulseaudio", "pactl", "paplay"]

# The window manager reacts to no key: all of them are the programs'. A click raises the window and
# reaches its program, too (bound to the frame, it would not).
OPENBOX_CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><focusLast>yes</focusLast></focus>
  <placement><policy>Smart</policy><center>yes</center></placement>
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
  <keyboard><chainQuitKey>none</chainQuitKey></keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press">
        <action name="Focus"/><action name="Raise"/>
      </mousebind>
    </context>
  </mouse>
</openbox_config>
"""

# What is played into the sink "voice" is heard by the source "microphone", from its first to its
# last sample (a rewind would take back what was recorded already). The programs' own sounds go to
# another sink, so that they are not heard.
SOUND_CONFIGURATION = """
load-module module-native-protocol-unix socket={socket} auth-anonymous=1
load-module module-null-sink sink_name=speakers rate=48000 channels=2
load-module module-null-sink sink_name=voice rate=48000 channels=2 norewinds=1 sink_properties=device.description=Voice
load-module module-remap-source source_name=microphone master=voice.monitor source_properties=device.description=Microphone
set-default-sink speakers
set-default-source microphone
"""  # noqa: E501

# The bus starts what the desktop names, and nothing that happens to be installed.
BUS_CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
INSTALLED_SERVICES = pathlib.Path("/usr/share/dbus-1/services")

# Settings of the desktop that a private one must not take over.
FOREIGN_VARIABLES = [
    "DBUS_SESSION_BUS_ADDRESS", "DBUS_STARTER_ADDRESS", "AT_SPI_BUS_ADDRESS", "NO_AT_BRIDGE",
    "DISPLAY", "WAYLAND_DISPLAY", "WAYLAND_SOCKET", "SWAYSOCK", "I3SOCK", "GDK_BACKEND",
    "XAUTHORITY", "SESSION_MANAGER", "GTK_MODULES", "GTK_THEME", "LC_ALL", "LANGUAGE",
    "PULSE_SINK", "PULSE_SOURCE", "PULSE_COOKIE", "XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE",
    "DESKTOP_SESSION", "DESKTOP_STARTUP_ID"]


class PrivateDesktop:
    """An X11 desktop; its descendants are desktops of other compositors.

    Starts the desktop on entry, ends all that was started on it at exit.

    `environment` is what programs on the desktop are to be started with, `folder` the desktop's
    own temporary folder (home, settings, logs), removed at the end. Should the owner die without
    an exit, a detached watchdog does the same.
    """

    # What it needs beside the COMMANDS of every desktop.
    components = ["Xvfb", "openbox", "xprop"]
    # The services that its bus starts for whoever asks for them.
    services = ["org.a11y.Bus"]
    user_class = User

    def __init__(self, size=(1280, 800)):
        """`size` is that of the screen, in pixels."""
        self.size = size
        self.folder = None
        self.environment = {}
        self._services = {}
        self._watchdog_pipe = None

    # --- life -----------------------------------------------------------------------------

    def __enter__(self):
        missing = [name for name in COMMANDS + self.components if not shutil.which(name)]
        if not os.path.exists(ACCESSIBILITY_LAUNCHER):
            missing.append("at-spi-bus-launcher")
        if missing:
            raise MissingComponent("not installed: " + ", ".join(missing))
        # Socket names have about a hundred characters at most.
        place = tempfile.gettempdir()
        self.folder = pathlib.Path(
            tempfile.mkdtemp(prefix="velloro-desktop-", dir=place if len(place) < 40 else "/tmp"))
        try:
            self._watch()
            self._make_home()
            self._start_services()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends every process on the desktop and removes its folder. May be called again."""
        if not self.folder:
            return
        # The programs first, while they still have a display to close their windows on.
        watchdog.sweep(str(self.folder), spare={s.pid for s in self._services.values()})
        watchdog.sweep(str(self.folder))
        for service in self._services.values():
            service.wait()
        self._services.clear()
        shutil.rmtree(self.folder, ignore_errors=True)
        if self._watchdog_pipe is not None:
            os.close(self._watchdog_pipe)
            self._watchdog_pipe = None
        self.folder = None

    def _watch(self):
        reading, self._watchdog_pipe = os.pipe()
        subprocess.run([sys.executable, watchdog.__file__, str(self.folder)], stdin=reading,
                       check=True, start_new_session=True)
        os.close(reading)

    def user(self):
        """Who works on it."""
        return self.user_class(self)

    # --- what it consists of ------------------------------------------------------------------

    @property
    def home(self):
        return self.folder / "home"

    @property
    def runtime(self):
        return self.folder / "run"

    @property
    def config_home(self):
        return self.home / ".config"

    @property
    def data_home(self):
        return self.home / ".local/share"

    def _make_home(self):
        for folder in (self.runtime, self.folder / "logs", self.config_home, self.data_home,
                       self.home / ".cache", self.home / ".local/state"):
            folder.mkdir(parents=True, mode=0o700)
        environment = {name: value for name, value in os.environ.items()
                       if name not in FOREIGN_VARIABLES and not name.startswith("QT_")}
        environment.update({
            watchdog.MARK: str(self.folder),
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "XDG_CONFIG_HOME": str(self.config_home),
            "XDG_DATA_HOME": str(self.data_home),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_CONFIG_DIRS": "/etc/xdg",
            "XAUTHORITY": str(self.folder / "Xauthority"),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.runtime}/bus",
            "PULSE_SERVER": f"unix:{self.runtime}/pulse-native",
            "LANG": "C.UTF-8",
            "GSETTINGS_BACKEND": "keyfile",
            "GIO_USE_VFS": "local",
            "QT_QPA_PLATFORM": "xcb",
        })
        self.environment = environment

        # One cookie for whatever number the display gets (family "wild").
        cookie = [b"", b"", b"MIT-MAGIC-COOKIE-1", secrets.token_bytes(16)]
        (self.folder / "Xauthority").write_bytes(
            struct.pack(">H", 0xFFFF)
            + b"".join(struct.pack(">H", len(field)) + field for field in cookie))
        (self.folder / "openbox.xml").write_text(OPENBOX_CONFIGURATION)
        (self.folder / "services").mkdir()
        for name in self.services:
            self.offer_service(name)
        (self.folder / "bus.conf").write_text(BUS_CONFIGURATION.format(
            socket=self.runtime / "bus", services=self.folder / "services"))
        (self.folder / "sound.pa").write_text(
            SOUND_CONFIGURATION.format(socket=self.runtime / "pulse-native"))
        settings = self.config_home / "glib-2.0/settings"
        settings.mkdir(parents=True)
        (settings / "keyfile").write_text(
            "[org/gnome/desktop/interface]\ntoolkit-accessibility=true\n"
            "[org/xfce/mousepad/preferences/view]\nword-wrap=true\n")

    def _start_services(self):
        display = self._start_display()
        self.start_sound(wait=False)
        self.environment["DISPLAY"] = display()
        # What the bus starts needs the display, too.
        self._start_bus()
        self.start_service("window-manager", [
            "openbox", "--sm-disable", "--config-file", str(self.folder / "openbox.xml")])
        self._wait_for_bus()
        self.start_accessibility()
        self._wait_until("window-manager", lambda: "window id" in self._output(
            ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]), "the window manager")
        self._wait_for_sound()

    def _start_bus(self):
        self.start_service("bus", ["dbus-daemon", "--config-file", str(self.folder / "bus.conf"),
                                   "--nofork", "--nopidfile"])

    def _wait_for_bus(self):
        self._wait_until("bus", lambda: (self.runtime / "bus").exists(), "the session bus")

    def _start_display(self):
        self._make_display_folder()
        reading, writing = os.pipe()
        width, height = self.size
        self.start_service("display", [
            "Xvfb", "-displayfd", str(writing), "-screen", "0", f"{width}x{height}x24", "-noreset",
            "-nolisten", "tcp", "-auth", self.environment["XAUTHORITY"]], pass_fds=[writing])
        os.close(writing)

        def number():
            with open(reading) as answer:
                digits = answer.read().strip()
            if not digits:
                raise DesktopError("the X server did not start:\n" + self.log("display"))
            return ":" + digits
        return number

    @staticmethod
    def _make_display_folder():
        sockets = pathlib.Path("/tmp/.X11-unix")
        if not sockets.exists():
            try:
                sockets.mkdir()
                sockets.chmod(0o1777)
            except OSError:
                pass  # another desktop was quicker, or the server will say what it lacks

    # --- its services -------------------------------------------------------------------------

    def offer_service(self, name):
        """Has the bus start an installed service when somebody asks for it."""
        file = f"{name}.service"
        if (INSTALLED_SERVICES / file).exists():
            (self.folder / "services" / file).symlink_to(INSTALLED_SERVICES / file)

    def start_sound(self, wait=True):
        """Starts the sound server; after `stop_service("sound")`, again."""
        self.start_service("sound", [
            "pulseaudio", "-n", "-F", str(self.folder / "sound.pa"), "--daemonize=no",
            "--exit-idle-time=-1", "--use-pid-file=no", "--log-target=stderr",
            "--disable-shm=yes", "--realtime=no", "--high-priority=no"])
        if wait:
            self._wait_for_sound()

    def _wait_for_sound(self):
        self._wait_until("sound", lambda: "microphone" in self._output(
            ["pactl", "get-default-source"]), "the sound server")

    def start_accessibility(self):
        """Starts the accessibility bus; after `stop_accessibility()`, again."""
        self.start_service("accessibility", [ACCESSIBILITY_LAUNCHER, "--launch-immediately"])
        # A program that asks for the bus has another launcher started: either will do.
        self.wait_for_bus_name("org.a11y.Bus")
        self._bus_call("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties.Set",
                       "string:org.a11y.Status", "string:IsEnabled", "variant:boolean:true")
        wait_for(self._accessibility_answers, "the accessibility bus")

    def _accessibility_answers(self):
        address = re.search("unix:path=([^,\"]+)", self._bus_call(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"))
        with socket.socket(socket.AF_UNIX) as connection:
            return address and connection.connect_ex(address[1]) == 0

    def stop_accessibility(self):
        """Ends the accessibility bus, its launcher and its registry, as in a crash."""
        self.stop_service("accessibility", signal.SIGKILL)
        parts = [ACCESSIBILITY_LAUNCHER, "at-spi2/accessibility.conf", "at-spi2-registryd"]

        def kill_all():
            found = False
            for pid in watchdog.marked_processes(str(self.folder)):
                try:
                    command = pathlib.Path(f"/proc/{pid}/cmdline").read_text()
                    if any(part in command for part in parts):
                        found = True
                        os.kill(pid, signal.SIGKILL)
                except OSError:
                    pass  # gone meanwhile
            return not found
        wait_for(kill_all, "the accessibility bus's end")

    def signal_accessibility_bus(self, number):
        """Sends a signal to the daemon of the accessibility bus."""
        for pid in watchdog.marked_processes(str(self.folder)):
            try:
                command = pathlib.Path(f"/proc/{pid}/cmdline").read_text()
            except OSError:
                continue  # gone meanwhile
            if "at-spi2/accessibility.conf" in command:
                os.kill(pid, number)

    def signal_service(self, name, number):
        """Sends a signal to the service, which remains one of the desktop's."""
        self._services[name].send_signal(number)

    def stop_service(self, name, number=signal.SIGTERM):
        """Sends the signal to the service and waits for its end."""
        service = self._services.pop(name)
        service.send_signal(number)
        service.wait()

    def log(self, name):
        """What the service, or the program started with `log=name`, has printed so far."""
        path = self.folder / "logs" / name
        return path.read_text(errors="replace") if path.exists() else ""

    def start_service(self, name, command, pass_fds=()):
        """Starts something that ends with the desktop, after its programs."""
        self._services[name] = self.start(command, log=name, pass_fds=pass_fds)

    def start(self, command, log, **options):
        """Starts a program on the desktop; what it prints goes to the log of that name."""
        with open(self.folder / "logs" / log, "ab") as output:
            return subprocess.Popen(
                command, env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                stderr=subprocess.STDOUT, cwd=self.home, start_new_session=True, **options)

    def run(self, command, timeout=30, **options):
        """Runs a program on the desktop to its end and returns what it printed."""
        return subprocess.run(command, env=self.environment, timeout=timeout, check=True,
                              stdout=subprocess.PIPE, text=True, **options).stdout

    def _wait_until(self, service, condition, what):
        def check():
            if self._services[service].poll() is not None:
                raise DesktopError(f"{what} did not start:\n" + self.log(service))
            return condition()
        wait_for(check, what)

    def wait_for_bus_name(self, name):
        """Waits until a program offers that name on the session bus."""
        wait_for(lambda: self._bus_name_has_owner(name), name)

    def _bus_name_has_owner(self, name):
        return "true" in self._bus_call(
            "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus.NameHasOwner", "string:" + name)

    def _output(self, command):
        return subprocess.run(command, check=False, env=self.environment,
                              stdin=subprocess.DEVNULL, timeout=10,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              text=True).stdout

    def _bus_call(self, name, path, method, *arguments):
        return self._output(["dbus-send", "--session", "--print-reply", "--dest=" + name, path,
                             method, *arguments])
