#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications on the Wayland compositor KWin, in the root of that name (tests/desktops/root).

usage: kwin_scenes.py --list | kwin_scenes.py SCENE AGENT QT6_EDITOR | kwin_scenes.py --all AGENT QT6_EDITOR
"""
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from gi.repository import Gio, GLib

from kwin_session import KWinSession
from panel import PROPERTIES, WATCHER, Panel, ScreenReader
from session import AccessibilityBus, DesktopError, call, run_scene, until
from stage import DESKTOPS, SCENES, main
from wayland_scenes import RECORDER, scenes_of

SCENE_SECONDS = 180
AT_ONCE = 2

scene = scenes_of('kwin')


def scene_without_grant(function):
    DESKTOPS[f'kwin_{function.__name__}'] = {'granted': False}
    return scene(function)


OTHER_PROGRAM = ['other', 'rename', 'Other', 'Rename']
F2, F3 = 0x01000031, 0x01000032  # as Qt numbers them
TAKEN = 'הצירוף תפוס'
ALT_H = {'hotKeyCode': 4, 'hotKeyModifiers': 0x0800}
CONTROL_ALT_H = {'hotKeyCode': 4, 'hotKeyModifiers': 0x0900}


def shortcuts(method, *arguments):
    return call('org.kde.kglobalaccel', '/kglobalaccel', 'org.kde.KGlobalAccel', method, *arguments)


def holder_of_f2():
    return shortcuts('action', '(i)', F2)[0][:1]


def start_agent_with(stage, **settings):
    folder = stage.session.home / '.config' / 'lexwend'
    folder.mkdir(parents=True, exist_ok=True)
    lines = [f'{key}={value}\n' for key, value in settings.items()]
    (folder / 'settings').write_text(f'[Settings]\n{"".join(lines)}', encoding='utf-8')
    stage.start_agent()


@scene
def gives_its_hot_key_back(stage):
    stage.start_agent()
    assert holder_of_f2() == ['lexwend'], holder_of_f2()
    assert stage.session.end(stage.agent) == 0
    assert holder_of_f2() == [], holder_of_f2()


@scene
def takes_no_hot_key_of_another_program(stage):
    shortcuts('doRegister', '(as)', OTHER_PROGRAM)
    shortcuts('setShortcut', '(asaiu)', OTHER_PROGRAM, [F2], 6)
    stage.start_agent()
    assert 'hotkey: register F2 ok=false' in stage.session.log(), stage.session.log()
    assert holder_of_f2() == ['other'], holder_of_f2()


@scene
def hears_a_letter_in_each_layout(stage):
    start_agent_with(stage, **ALT_H)
    stage.open('mousepad', 'akuo')
    for expected in ('שלום', 'akuo', 'שלום'):
        stage.select_all()
        stage.keyboard.press('Alt+h')
        stage.expect_text(expected)


@scene
def presses_its_keys_while_the_user_holds_modifiers(stage):
    start_agent_with(stage, compatMode='true', **CONTROL_ALT_H)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    for expected in ('שלום', 'akuo'):
        stage.select_all()
        for key in ('Control', 'Alt', 'h'):
            stage.keyboard.down(key)
        stage.expect_text(expected)
        for key in ('h', 'Alt', 'Control'):
            stage.keyboard.up(key)
        until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    stage.keyboard.press('End')
    stage.keyboard.press('a')
    stage.expect_text('akuoa')


@scene
def reads_layouts_with_variants(stage):
    stage.session.set_layouts('us(dvorak),il')
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    # By the places of the keys: a is the same in both, k is at v, u at f, o at s.
    stage.fix('שהכד')


@scene
def refuses_while_the_screen_is_locked(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    lock('Lock')
    until(lambda: lock('GetActive')[0], 'the screen to be locked')
    stage.keyboard.press('F2')  # fires no shortcut; the command does the same
    subprocess.run([str(stage.agent_path), '--fix'], check=False, capture_output=True)
    until(lambda: 'fix: failed secureInput' in stage.session.log(), 'the fix to be refused')
    assert stage.session.log().count('fix: front=') == 1 and 'AX' not in stage.session.log(), stage.session.log()


def lock(method):
    return call('org.kde.KWin', '/ScreenSaver', 'org.freedesktop.ScreenSaver', method)


@scene_without_grant
def fixes_what_needs_no_key_and_says_what_it_may_not_do(stage):
    start_agent_with(stage, mayInstall='false')
    said = os.read(stage.agent.stderr.fileno(), 4096).decode()
    assert 'the compositor does not let Lexwend press keys' in said, said
    stage.open('mousepad', 'akuo')
    for expected in ('שלום', 'akuo'):
        stage.select_all()
        stage.fix(expected)
    stage.expect_paths(['done', 'done'])
    stage.session.end(stage.agent)
    start_agent_with(stage, mayInstall='false', compatMode='true')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.fix_that_fails('')
    stage.expect_text('akuo')
    assert stage.clipboard() == 'kept'


@scene_without_grant
def is_granted_keys_when_the_user_agrees(stage):
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'
    start_agent_with(stage, compatMode='true')
    reader = ScreenReader(stage.session)
    until(lambda: reader.is_active('Lexwend'), 'the agent to ask')
    picture(stage, 'grant')
    stage.keyboard.press('Return')
    until(lambda: stage.session.log().count('hotkey: register F2 ok=true') == 2, 'the agent to start anew')
    assert stage.agent.poll() is None, 'the agent has ended'
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.fix('שלום')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')


@scene_without_grant
def refuses_a_terminal_that_is_known_by_accessibility_alone(stage):
    start_agent_with(stage, mayInstall='false')
    stage.put_on_clipboard('kept')
    bus = AccessibilityBus()
    until(lambda: bus.hears_focus(stage.agent.pid), 'the agent to listen to the focus')
    alive = stage.session.folder / 'alive'
    terminal = stage.session.start_in_front([*stage.session.TERMINAL, 'sh', '-c', f'touch {alive}; exec sleep 600'])
    until(alive.exists, 'the program in the terminal to run')
    until(bus.text_has_said_that_it_is_focused, 'the terminal to have the focus')
    stage.expect_secure_input()
    assert terminal.poll() is None, 'the terminal has ended'


@scene
def leaves_the_shortcuts_of_others_on_when_it_is_killed_with_its_recorder_open(stage):
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'
    presses = presses_of_other_program(stage)

    def heard():
        stage.keyboard.press('F3')
        try:
            return until(presses, 'the press of the other program', 2)
        except DesktopError:
            return False  # KWin was not ready for keys yet
    before = until(heard, 'the press of the other program')
    stage.start_agent()
    reader = ScreenReader(stage.session)
    subprocess.run([str(stage.agent_path), '--settings'], check=True)
    until(lambda: reader.is_active(RECORDER), 'the recorder to have the keyboard')
    stage.keyboard.press('F3')
    until(lambda: 'F3' in reader.labels(RECORDER), 'the combination in the recorder')
    stage.agent.kill()
    stage.agent.wait()
    until(lambda: stage.session.active_process() != stage.agent.pid, 'the recorder to go')
    stage.keyboard.press('F3')
    until(lambda: presses() == before + 1, 'the press of the other program')


def presses_of_other_program(stage):
    """Registers F3 for it. Gives the number of its presses so far."""
    shortcuts('doRegister', '(as)', OTHER_PROGRAM)
    shortcuts('setShortcut', '(asaiu)', OTHER_PROGRAM, [F3], 6)
    heard = []
    stage.session.front.bus.signal_subscribe(None, 'org.kde.kglobalaccel.Component', 'globalShortcutPressed', shortcuts('getComponent', '(s)', 'other')[0],
                                             'other', Gio.DBusSignalFlags.NONE, lambda *_: heard.append(1))

    def presses():
        stage.session.front.listen()
        return len(heard)
    return presses


@scene
def shows_its_icon_its_recorder_and_an_alert(stage):
    """A combination that another program holds reaches the recorder, which then says that it is taken."""
    session = stage.session
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'  # Qt 6.4 on Wayland asks for it at its start only
    settings = session.folder / 'bar'
    settings.write_text('{"layer": "top", "height": 32, "modules-right": ["tray"], "tray": {"icon-size": 24}}', encoding='utf-8')
    session.start(['waybar', '--config', str(settings), '--style', '/dev/null'])
    panel = Panel(session)
    until(bar_shows_items, 'the bar')
    stage.start_agent()
    until(lambda: len(panel.items()) == 1, 'one icon in the bar')
    assert panel.item('ItemIsMenu'), 'the bar does not draw the menu at each click'
    reader = ScreenReader(session)
    presses_of_other_program(stage)
    subprocess.run([str(stage.agent_path), '--settings'], check=True)
    until(lambda: session.active_process() == stage.agent.pid, 'a window of the agent')
    until(lambda: reader.is_active(RECORDER), 'the recorder to have the keyboard')
    picture(stage, 'icon-and-recorder')
    stage.keyboard.press('F3')
    until(lambda: 'F3' in reader.labels(RECORDER), 'the combination in the recorder')
    before = session.look()
    stage.keyboard.press('Return')
    until(lambda: TAKEN in reader.labels('Lexwend'), 'the alert')
    until(lambda: reader.is_active('Lexwend'), 'the alert to have the keyboard')
    until(lambda: session.look() != before, 'the alert to be drawn')
    picture(stage, 'alert')
    stage.keyboard.press('Return')
    until(lambda: not reader.window('Lexwend'), 'the alert to close')
    assert holder_of_f2() == ['lexwend'], holder_of_f2()


def bar_shows_items():
    try:
        return call(WATCHER, '/StatusNotifierWatcher', PROPERTIES, 'Get', '(ss)', WATCHER, 'IsStatusNotifierHostRegistered')[0]
    except GLib.Error:
        return False  # not yet there


def picture(stage, what):
    folder = os.environ.get('LEXWEND_DESKTOP_PICTURES')
    if folder:
        stage.session.screenshot(Path(folder) / f'{what}.png')


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
