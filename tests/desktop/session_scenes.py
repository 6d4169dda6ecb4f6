#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The agent and the session around it: buses, files, what it leaves behind. One scene per run.

usage: session_scenes.py --list | session_scenes.py SCENE AGENT QT6_EDITOR
"""
import os
import re
import signal
import stat
import subprocess
import time
from pathlib import Path

from panel import Panel, start_ready
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


SECRET_TYPED = 'vhhakun nv akuo fkbu vhuo ctrbv'
SECRET_CLIPBOARD = 'what the user had copied before'
# A call of the system as strace writes it: the process, the call, its arguments.
CALL = re.compile(r'^(?:\d+ +)?(\w+)\((.*)')
# Calls that change the tree of files, with the place of the path among the quoted arguments.
CHANGES = {'mkdir': 0, 'mkdirat': 0, 'rename': 1, 'renameat': 1, 'renameat2': 1, 'link': 1, 'linkat': 1, 'symlink': 1,
           'symlinkat': 1, 'mknod': 0, 'mknodat': 0, 'creat': 0, 'truncate': 0}


# The fonts of the system without those that have Hebrew.
FONTS = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <include>/etc/fonts/fonts.conf</include>
  <selectfont><rejectfont><pattern><patelt name="lang"><string>he</string></patelt></pattern></rejectfont></selectfont>
</fontconfig>
"""
NO_FONT = 'no font with Hebrew letters is installed'


@scene
def tells_that_there_is_no_hebrew_font(stage):
    """Nobody could read it in the menu. It is no reason to speak of anything else to the user."""
    notifications = start_ready(stage.session, 'notification_server.py')
    fonts = stage.session.folder / 'fonts.conf'
    fonts.write_text(FONTS, encoding='utf-8')
    os.environ['FONTCONFIG_FILE'] = str(fonts)
    Panel(stage.session).start()
    stage.start_agent()
    assert stage.session.end(stage.agent) == 0
    said = stage.agent.stderr.read().decode()
    assert said.startswith(f'lexwend: {NO_FONT}') and said.count('\n') == 1, said
    assert stage.session.log().count(NO_FONT) == 1, stage.session.log()
    del os.environ['FONTCONFIG_FILE']
    stage.start_agent()
    assert stage.session.end(stage.agent) == 0
    assert not stage.agent.stderr.read(), 'a font is there'
    assert stage.session.log().count(NO_FONT) == 1, stage.session.log()
    stage.session.end(notifications)
    assert not notifications.stdout.read(), 'a notification was shown'


def trace_of(path):
    """The calls of a trace, as pairs of name and arguments."""
    for line in path.read_text(encoding='utf-8', errors='replace').splitlines():
        found = CALL.match(line)
        if found:
            yield found.groups()


def written_path(name, arguments):
    """The path that a call writes to or makes; nothing for one that does neither."""
    writes = name in CHANGES or name.startswith('open') and re.search(r'O_WRONLY|O_RDWR|O_CREAT', arguments)
    if not writes or ' = -1 ' in arguments:
        return None
    quoted = re.findall(r'"((?:[^"\\]|\\.)*)"', arguments)
    assert quoted, f'the tracer could not read the path: {name}({arguments}'
    return quoted[CHANGES.get(name, 0)]


def expect_traces_of_nothing_else(stage, trace):
    """Neither a network socket nor a file beside the few that the agent is for."""
    home = str(stage.session.home)
    allowed = [re.escape(home) + place for place in (
        r'/Library/Logs/Lexwend\.log', r'/\.config/lexwend', r'/\.config/lexwend/settings(\.\w{6})?', r'/\.config/autostart',
        r'/\.config/autostart/org\.lexwend\.Lexwend\.desktop(\.\w{6})?', r'/\.config')]
    allowed += [re.escape(os.environ['XDG_RUNTIME_DIR']) + r'/org\.lexwend\.Lexwend\.lock', '/dev/null']
    allowed += [r'.*/CMakeFiles/.*\.gcda']  # the counts of a build that counts its lines
    seen = set()
    for name, arguments in trace_of(trace):
        seen.add(name)
        if name == 'socket':
            assert re.match(r'AF_(UNIX|LOCAL)\b', arguments), f'a socket that is not of this machine: {arguments}'
        path = written_path(name, arguments)
        if path is not None:
            assert any(re.fullmatch(place, path) for place in allowed), f'{name} of {path}'
    assert {'socket', 'openat'} <= seen, f'the trace holds {sorted(seen)}'


def files_under(folder):
    return [path for path in Path(folder).rglob('*') if stat.S_ISREG(path.lstat().st_mode)]


def expect_no_text_in_files(stage, secrets):
    """No file that the agent may have written holds what was typed, its conversion, or what was on the clipboard."""
    found = files_under(stage.session.home) + files_under(os.environ['XDG_RUNTIME_DIR'])
    assert stage.session.home / 'Library' / 'Logs' / 'Lexwend.log' in found
    for path in found:
        held = path.read_bytes()
        for secret in secrets:
            for encoding in ('utf-8', 'utf-16-le'):
                assert secret.encode(encoding) not in held, f'{path} holds {secret!r}'
        if path.name in ('Lexwend.log', 'settings'):
            assert stat.S_IMODE(path.stat().st_mode) == 0o600, f'{path} can be read by others'


@scene
def leaves_no_trace_of_the_text(stage):
    """Traced from start to end: a fix by each path, each refused and undone, and everything that is stored."""
    trace = stage.session.folder / 'trace'
    wrapper = stage.session.folder / 'traced-agent'
    # The agent keeps its memory from other programs; a tracer needs a privilege to read the paths there.
    privilege = '' if os.geteuid() == 0 else 'unshare --user --map-current-user --keep-caps '
    wrapper.write_text(f'#!/bin/sh\nexec {privilege}strace -f -qq -s 4096 -o '
                       f"'{trace}' -e trace=%file,socket,connect '{stage.agent_path}'\n", encoding='utf-8')
    wrapper.chmod(0o700)
    agent = stage.agent_path
    stage.agent_path = wrapper
    stage.start_agent(compatMode=False)
    tracer = stage.agent
    stage.agent = ChildOf(tracer)
    editor = stage.open('qt6_editor', SECRET_TYPED)  # which keeps no copies of its own
    stage.put_on_clipboard(SECRET_CLIPBOARD)
    converted = subprocess.run([str(agent.parent.parent / 'tools' / 'lexwend-convert')], input=SECRET_TYPED,
                               capture_output=True, text=True, check=True).stdout.replace('׳', "'")
    stage.select_all()
    stage.fix(converted)
    settings = stage.session.home / '.config' / 'lexwend' / 'settings'
    settings.write_text(settings.read_text(encoding='utf-8').replace('compatMode=false', 'compatMode=true'), encoding='utf-8')
    stage.select_all()
    stage.fix(SECRET_TYPED)
    assert 'clipboard: pasted' in stage.session.log(), stage.session.log()
    until(lambda: stage.clipboard() == SECRET_CLIPBOARD, 'the clipboard to come back')
    os.kill(stage.agent.pid, signal.SIGTERM)
    tracer.wait(10)
    stage.session.end(editor)
    expect_traces_of_nothing_else(stage, trace)
    expect_no_text_in_files(stage, (SECRET_TYPED, converted, SECRET_CLIPBOARD))


class ChildOf:
    """The process that a tracer has started."""

    def __init__(self, tracer):
        children = Path(f'/proc/{tracer.pid}/task/{tracer.pid}/children')
        self.pid = until(lambda: int((children.read_text(encoding='ascii').split() or ['0'])[0]), 'the traced process')


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
