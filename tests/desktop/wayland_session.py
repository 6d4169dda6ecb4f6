# SPDX-License-Identifier: MIT
"""What the private desktops of the Wayland compositors with data-control have in common; see session.py."""
from session import Session


class WaylandSession(Session):
    def let_window_have_combinations(self):
        """Waits until a window that asks for the combinations of the desktop gets them."""

    def copy(self, target):
        return ['wl-copy', '--foreground', '--type', target]

    def paste(self, target):
        return ['wl-paste', '--no-newline', '--type', target]

    def paste_primary(self):
        return ['wl-paste', '--no-newline', '--primary']

    def paste_targets(self):
        return ['wl-paste', '--list-types']
