"""A Debian root that holds the applications, so that the machine itself gets none of them."""

import os
import pathlib
import shutil
import subprocess
import uuid

SUITE = "bookworm"
# What every application needs to be seen on a private desktop: drawing without a graphics card,
# the accessibility bus's client side, fonts, and Python for the reader in the terminals.
COMMON = ["adwaita-icon-theme", "at-spi2-core", "ca-certificates", "dbus-bin", "fonts-dejavu-core",
          "gsettings-desktop-schemas", "libegl-mesa0", "libegl1", "libgl1-mesa-dri", "libgles2",
          "python3"]
NEEDED = {"mmdebstrap": "mmdebstrap", "bwrap": "bubblewrap", "unshare": "util-linux"}

# Runs in a mount namespace of its own: nothing stays mounted after it. Services that a package
# would start stay off.
INSTALLATION = """
root=$1; shift
mount --make-rprivate /
for folder in proc sys dev; do mount --rbind /$folder "$root/$folder"; done
printf '#!/bin/sh\\nexit 101\\n' > "$root/usr/sbin/policy-rc.d"
chmod +x "$root/usr/sbin/policy-rc.d"
cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
export DEBIAN_FRONTEND=noninteractive LC_ALL=C
chroot "$root" dpkg --configure -a
chroot "$root" apt-get --quiet update
chroot "$root" apt-get --quiet --yes --no-install-recommends -o Dpkg::Use-Pty=0 install "$@"
chroot "$root" apt-get clean
"""


class RootError(Exception):
    """The root can't be made, or a package not be installed there."""


def check_needs():
    """Fails, naming the packages, when a program that makes or enters the root is missing."""
    missing = [package for program, package in NEEDED.items() if not shutil.which(program)]
    if missing:
        raise RootError("needs programs that are not installed: apt-get install "
                        + " ".join(missing))


def machine_sources(folder=pathlib.Path("/etc/apt"), codename=None):
    """The suite's sources in apt's one-line form, from the mirrors that the machine's own apt
    uses for its release."""
    codename = codename or release_codename()
    lines = []
    for uris, suites, components in read_sources(folder):
        for suite in suites:
            name, dash, kind = suite.partition("-")
            if name == codename and kind in ("", "updates", "security"):
                lines += [f"deb {uri} {SUITE}{dash}{kind} {' '.join(components)}" for uri in uris]
    if not any(line.split()[2] == SUITE for line in lines):
        raise RootError(f"the machine's apt sources name no mirror of Debian {codename}")
    return lines


def release_codename():
    for line in pathlib.Path("/etc/os-release").read_text().splitlines():
        if line.startswith("VERSION_CODENAME="):
            return line.partition("=")[2].strip('"')
    return SUITE


def read_sources(folder):
    """(addresses, suites, components) of each source of packages, from both of apt's formats."""
    for path in [folder / "sources.list", *sorted(folder.glob("sources.list.d/*.list"))]:
        lines = path.read_text().splitlines() if path.exists() else []
        for line in lines:
            words = line.partition("]")[2].split() if "[" in line else line.split()[1:]
            if line.split()[:1] == ["deb"] and len(words) > 2:
                yield [words[0]], [words[1]], words[2:]
    for path in sorted(folder.glob("sources.list.d/*.sources")):
        for paragraph in path.read_text().split("\n\n"):
            fields = dict(line.split(":", 1) for line in paragraph.splitlines()
                          if ":" in line and line[:1] not in "# ")
            fields = {name.strip().lower(): value.split() for name, value in fields.items()}
            if "deb" in fields.get("types", []) and fields.get("enabled") != ["no"]:
                yield fields["uris"], fields["suites"], fields.get("components", [])


class Root:
    """The root in the folder, made on the first installation."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve() / "root"
        self._made = self.folder.with_name("made")

    # --- what is in it --------------------------------------------------------------------------

    def version(self, package):
        """The installed version of the package, or None."""
        found = subprocess.run(
            ["dpkg-query", f"--admindir={self.folder}/var/lib/dpkg", "--show",
             "--showformat=${db:Status-Status} ${Version}", package],
            check=False, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            text=True).stdout.split()
        return found[1] if found[:1] == ["installed"] else None

    def missing(self, packages):
        return [package for package in packages if not self.version(package)]

    # --- making it ------------------------------------------------------------------------------

    def install(self, packages, say):
        """Installs what is missing of the packages. Where all at once fails, each alone: one that
        can't be installed does not stop the others. Returns those that are missing still."""
        if not self._made.exists():
            self._make(say)
        missing = self.missing([*COMMON, *packages])
        if missing:
            say(f"Installing {len(missing)} packages into {self.folder}")
            if not self._install(missing):
                for package in missing:
                    self.version(package) or self._install([package])
        return self.missing([*COMMON, *packages])

    def _make(self, say):
        say(f"Making a root of Debian {SUITE} in {self.folder}")
        # One that was left half made.
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.parent.mkdir(parents=True, exist_ok=True)
        sources = "\n".join(machine_sources()) + "\n"
        made = subprocess.run(
            ["mmdebstrap", "--variant=minbase", '--aptopt=Acquire::Languages "none"', SUITE,
             self.folder, "-"], check=False, input=sources, text=True)
        if made.returncode != 0:
            raise RootError("mmdebstrap could not make the root")
        (self.folder / "etc/machine-id").write_text(uuid.uuid4().hex + "\n")
        self._made.touch()

    def _install(self, packages):
        namespace = ["unshare", "--mount", "--pid", "--fork", "--kill-child"]
        if os.geteuid() != 0:
            namespace += ["--user", "--map-root-user", "--map-auto"]
        return subprocess.run([*namespace, "sh", "-e", "-c", INSTALLATION, "sh", self.folder,
                               *packages], check=False, stdin=subprocess.DEVNULL).returncode == 0

    # --- entering it ----------------------------------------------------------------------------

    def command(self, words, desktop, environment):
        """What runs the command in the root, on the desktop, with these variables beside the
        desktop's. The root is read-only; all that was started ends with the command."""
        entered = ["bwrap", "--ro-bind", self.folder, "/", "--dev", "/dev", "--proc", "/proc",
                   "--ro-bind", "/sys", "/sys", "--unshare-pid", "--die-with-parent"]
        for folder in dict.fromkeys(["/tmp", "/run", "/var/tmp", str(desktop.folder.parent)]):
            entered += ["--tmpfs", folder]
        entered += ["--ro-bind", "/tmp/.X11-unix", "/tmp/.X11-unix",
                    "--bind", desktop.folder, desktop.folder, "--chdir", desktop.home]
        variables = {"PATH": "/usr/local/bin:/usr/bin:/bin:/usr/games"} | environment
        for name, value in variables.items():
            entered += ["--setenv", name, value]
        return [str(word) for word in [*entered, *words]]
