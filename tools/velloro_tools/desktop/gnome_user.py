"""What a user does on the private desktop of GNOME Shell."""

from .user import User
from .wayland_user import WaylandUser


class GnomeUser(WaylandUser):
    """Copies by the X server: the shell gives a program without a window no clipboard of its own,
    and keeps the two the same."""

    copy = User.copy
    clipboard = User.clipboard
