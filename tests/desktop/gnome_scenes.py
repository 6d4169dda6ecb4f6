#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications in GNOME Shell on Wayland, one scene per run: those of X11 that do not depend on the
display, and what is GNOME's own. Run in a root of its own: tests/desktops/gnome.

usage: gnome_scenes.py --list | gnome_scenes.py SCENE AGENT QT6_EDITOR
"""
import os

from gnome_session import GnomeSession
from session import run_scene, until
from stage import SCENES, main
from sway_scenes import FROM_X11, processes_of

# What is not in the root.
ELSEWHERE = ('featherpad', 'kate')
SCENES.clear()
SCENES.update({f'gnome_{name}': function for name, function in FROM_X11.items()
               if not any(application in name for application in ELSEWHERE)})


def scene(function):
    SCENES[f'gnome_{function.__name__}'] = function
    return function


def make_session(_, **options):
    return GnomeSession(**options)


if __name__ == '__main__':
    run_scene(lambda: main(__doc__, make_session))
