#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications on the Wayland compositor sway, one scene per run.

usage: sway_scenes.py --list | sway_scenes.py SCENE AGENT QT6_EDITOR
"""
import json
import subprocess

from displays import make_session
from session import run_scene
from stage import main
from wayland_scenes import scenes_of

scene = scenes_of('sway')


@scene
def keeps_its_hot_key_when_the_configuration_is_read_again(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.session.sway.run('reload')
    stage.select_all()
    stage.fix('שלום')


@scene
def keeps_its_hot_key_when_the_doctor_asks(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    doctor = stage.agent_path.parent.parent / 'tools' / 'lexwend-doctor'
    report = subprocess.run([doctor, '--json'], capture_output=True, check=False, timeout=60, stdin=subprocess.DEVNULL).stdout
    hot_key = next(check for check in json.loads(report)['checks'] if check['name'] == 'hotKey')
    assert hot_key['state'] == 'good' and 'held by Lexwend' in hot_key['found'], hot_key
    stage.select_all()
    stage.fix('שלום')


if __name__ == '__main__':
    run_scene(lambda: main(__doc__, lambda agent, **options: make_session('sway', agent, **options)))
