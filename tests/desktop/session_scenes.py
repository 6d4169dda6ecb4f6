#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The agent and the session around it: buses, files, what it leaves behind. One scene per run.

usage: session_scenes.py --list | session_scenes.py SCENE AGENT QT6_EDITOR
"""
import signal
import time

from session import call, run_scene, until
from stage import main, scene


def offers_its_item(process):
    """Whether that process has a status item on the session bus."""
    from gi.repository import GLib
    bus = ('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus')
    for name in call(*bus, 'ListNames')[0]:
        try:
            if name.startswith(':') and call(*bus, 'GetConnectionUnixProcessID', '(s)', name)[0] == process:
                return call(name, '/StatusNotifierItem', 'org.freedesktop.DBus.Properties', 'Get', '(ss)',
                            'org.kde.StatusNotifierItem', 'Id')[0] == 'org.lexwend.Lexwend'
        except GLib.Error:
            continue  # gone, or another connection of the process
    return False


@scene
def starts_while_the_session_bus_does_not_answer(stage):
    """The hot key works at once, accessibility and the status item as soon as the bus answers."""
    bus = next(process for process in stage.session.processes if process.args[0] == 'dbus-daemon')
    bus.send_signal(signal.SIGSTOP)
    try:
        begin = time.monotonic()
        stage.start_agent()
        took = time.monotonic() - begin
    finally:
        bus.send_signal(signal.SIGCONT)
    assert took < 5, f'the start took {took:.1f} s'
    until(lambda: offers_its_item(stage.agent.pid), 'the status item to come to the bus')
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')
    stage.expect_paths(['done'])


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
