#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The scenes of large_apps.py on the Wayland compositor sway, with applications of Wayland; one scene per run.

usage: sway_large_apps.py --list | sway_large_apps.py SCENE AGENT QT6_EDITOR
"""
import large_apps  # noqa: F401  (fills SCENES)
from displays import make_session
from session import run_scene
from stage import SCENES, main


def of_wayland(function):
    def run(stage):
        function(stage)
        assert not stage.session.front_is_of_x11(), 'the window is one of X11'
    return run


scenes = {f'sway_{name}': of_wayland(function) for name, function in SCENES.items() if 'kate' not in name}  # kate: sway_scenes.py
SCENES.clear()
SCENES.update(scenes)

if __name__ == '__main__':
    run_scene(lambda: main(__doc__, lambda agent, **options: make_session('sway', agent, **options)))
