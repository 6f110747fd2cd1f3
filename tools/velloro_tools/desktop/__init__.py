"""A private desktop for tests and demonstrations, and what a user would do on it."""

from .desktop import DesktopError, MissingComponent, PrivateDesktop, wait_for
from .program import Velloro
from .user import User

__all__ = ["DesktopError", "MissingComponent", "PrivateDesktop", "User", "Velloro", "wait_for"]
