"""Private desktops for tests and demonstrations, and what a user would do on them."""

from .desktop import PrivateDesktop
from .errors import DesktopError, MissingComponent, wait_for
from .gnome_desktop import GnomeDesktop
from .kwin_desktop import KwinDesktop
from .phoc_desktop import PhocDesktop
from .program import Velloro
from .sway_desktop import SwayDesktop

# By the names that they have for the tools.
DESKTOPS = {"x11": PrivateDesktop, "sway": SwayDesktop, "phoc": PhocDesktop,
            "kde": KwinDesktop, "gnome": GnomeDesktop}

__all__ = ["DESKTOPS", "DesktopError", "GnomeDesktop", "KwinDesktop", "MissingComponent",
           "PhocDesktop", "PrivateDesktop", "SwayDesktop", "Velloro", "wait_for"]
