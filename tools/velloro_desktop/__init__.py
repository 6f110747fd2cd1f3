"""A private desktop for tests and demonstrations, and what a user would do on it."""

from .desktop import DesktopError, MissingComponent, PrivateDesktop

__all__ = ["DesktopError", "MissingComponent", "PrivateDesktop"]
