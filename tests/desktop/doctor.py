#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""lexwend-doctor in real sessions: what it finds where something is wrong, and its own trial.

usage: doctor.py DOCTOR AGENT [--without-xtest]
"""
import json
import os
import subprocess
import sys
from pathlib import Path

from session import Session, run_scene, until

DOCTOR, AGENT = (str(Path(path).resolve()) for path in sys.argv[1:3])


def ask(*options, **environment):
    """The doctor's answer: (exit status, report)."""
    done = subprocess.run([DOCTOR, '--json', *options], capture_output=True, text=True, check=False, timeout=60,
                          env={**os.environ, **environment}, stdin=subprocess.DEVNULL)
    assert done.stderr == '', done.stderr
    return done.returncode, json.loads(done.stdout)


def state(name, expected, words='', **environment):
    status, report = ask(**environment)
    check = next(check for check in report['checks'] if check['name'] == name)
    assert check['state'] == expected and words in check['found'], check
    assert expected != 'finding' or (status == 1 and check['advice'] and not report['good']), report


def with_an_agent(session):
    agent = session.start_agent(AGENT)
    # The doctor knows whose key it is by the agent that runs.
    for name in ('agent', 'display', 'hotKey', 'layouts', 'table', 'accessibility', 'settings', 'log', 'fonts', 'session', 'autostart'):
        state(name, 'good')
    # Asked by a program that is no agent and is not known as one afterwards.
    assert agent.poll() is None
    entry = session.home / '.config' / 'autostart' / 'org.lexwend.Lexwend.desktop'
    assert AGENT in entry.read_text(encoding='utf-8')
    entry.write_text(entry.read_text(encoding='utf-8').replace(AGENT, '/nowhere/lexwend'), encoding='utf-8')
    state('autostart', 'finding', '/nowhere/lexwend')
    session.end(agent)


def without_an_agent(session):
    state('agent', 'finding')
    state('hotKey', 'good', 'free')
    session.keyboard.take('F2', 0)
    state('hotKey', 'finding', 'another program')


def environment_of_trouble(session):
    no_fonts = session.folder / 'fonts.conf'
    no_fonts.write_text('<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig/>', encoding='utf-8')
    state('fonts', 'finding', FONTCONFIG_FILE=str(no_fonts))
    state('session', 'finding', 'Wayland', WAYLAND_DISPLAY='wayland-0')
    state('display', 'finding', ':4711', DISPLAY=':4711')
    state('accessibility', 'note', 'session bus', DBUS_SESSION_BUS_ADDRESS='unix:path=/nonexistent')
    state('log', 'finding', HOME='/nonexistent')
    session.set_layouts('us')
    state('layouts', 'finding', 'no Hebrew')
    session.set_layouts('us,il')


def focus_and_tray(session):
    here = Path(__file__).resolve().parent
    state('tray', 'finding')
    session.start_in_front(['/usr/bin/python3', str(here / 'gtk_field.py'), '4', 'password-entry', 'secret'])


    def focus_is_a_finding():
        done = subprocess.run([DOCTOR, '--json', '--after', '0'], capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)
        check = next(check for check in json.loads(done.stdout)['checks'] if check['name'] == 'focus')
        assert 'secret' not in done.stdout, 'the doctor tells a password'
        return check['state'] == 'finding' and 'password' in check['found']

    until(focus_is_a_finding, 'the doctor to see the password field')


def trial():
    done = subprocess.run([DOCTOR, '--json', '--try'], capture_output=True, text=True, check=False, timeout=60, stdin=subprocess.DEVNULL)
    steps = {step['name']: step for step in json.loads(done.stdout)['trial']}
    assert sorted(steps) == ['accessibility', 'clipboard'], steps
    for step in steps.values():
        assert step['done'], steps
    print({name: step['milliseconds'] for name, step in steps.items()})


def without_xtest():
    with Session(layouts='us,il', server_options=['-extension', 'XTEST']):
        state('display', 'finding', 'XTEST')


def main():
    if '--without-xtest' in sys.argv:
        return without_xtest()
    with Session(layouts='us,il') as session:
        trial()
        with_an_agent(session)
        without_an_agent(session)
        environment_of_trouble(session)
        focus_and_tray(session)
        # LANG chooses the language of a person's report.
        said = subprocess.run([DOCTOR], capture_output=True, text=True, check=False, env={**os.environ, 'LC_ALL': 'he_IL.UTF-8'}).stdout
        assert said.splitlines()[0].startswith('בדיקה של Lexwend'), said


if __name__ == '__main__':
    run_scene(main)
