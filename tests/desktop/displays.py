# SPDX-License-Identifier: MIT
"""The kinds of private desktops, for programs that do the same on each."""
from gnome_session import GnomeSession
from kwin_session import KWinSession
from session import Session
from sway_session import SwaySession

DISPLAYS = ('x11', 'sway', 'kwin', 'gnome')


def make_session(display, agent, **options):
    """Of the agent's build are the programs that the tests need there. KWin and GNOME run in their roots (tests/desktops) only."""
    if display == 'sway':
        return SwaySession(agent.parent.parent / 'tests' / 'linux' / 'typist' / 'wayland_typist', **options)
    return {'x11': Session, 'kwin': KWinSession, 'gnome': GnomeSession}[display](**options)
