"""What can go wrong with a desktop, and how to wait for what is due."""

import time


class DesktopError(Exception):
    """Something of the desktop did not start, or ended."""


class MissingComponent(DesktopError):
    """A program that the desktop needs is not installed."""


def wait_for(condition, what, timeout=20.0, interval=0.02):
    """The first true value of `condition()`; for what can't be awaited but only asked for."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise DesktopError(f"timed out after {timeout:g} s waiting for {what}")
        time.sleep(interval)
