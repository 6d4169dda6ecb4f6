#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications on the Wayland compositor KWin, in the root of that name (tests/desktops/root).

usage: kwin_scenes.py --list | kwin_scenes.py SCENE AGENT QT6_EDITOR | kwin_scenes.py --all AGENT QT6_EDITOR
"""
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from kwin_session import KWinSession
from session import run_scene
from stage import SCENES, main
from wayland_scenes import scenes_of

SCENE_SECONDS = 180
AT_ONCE = 2

scene = scenes_of('kwin')


def run_all(arguments):
    """Each scene in a process of its own; the exit status is the number of those that failed."""
    def run(name):
        try:
            done = subprocess.run([sys.executable, '-B', __file__, name, *arguments], capture_output=True, text=True, check=False, timeout=SCENE_SECONDS)
            said, failed = done.stderr, done.returncode != 0
        except subprocess.TimeoutExpired as error:
            said, failed = f'{(error.stderr or b"").decode()}\nno end after {SCENE_SECONDS} s', True
        print(f'{"failed" if failed else "passed"}: {name}' + (f'\n{said}' if failed else ''), flush=True)
        return failed
    with ThreadPoolExecutor(AT_ONCE) as pool:
        sys.exit(sum(pool.map(run, SCENES)))


if __name__ == '__main__':
    if sys.argv[1:2] == ['--all']:
        run_all(sys.argv[2:])
    run_scene(lambda: main(__doc__, lambda _, **options: KWinSession(**options)))
