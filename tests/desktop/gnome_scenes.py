#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications in GNOME Shell on Wayland, one scene per run: those of X11 that do not depend on the
display, and what is GNOME's own. Run in a root of its own: tests/desktops/gnome.

usage: gnome_scenes.py --list | gnome_scenes.py SCENE AGENT QT6_EDITOR
"""
import os
import subprocess

import clipboard_scenes
from gnome_session import UUID, GnomeSession
from session import DEADLINE_SECONDS, DesktopError, call, run_scene, until
from stage import DESKTOPS, SCENES, main
from wayland_scenes import SHARED, processes_of, scenes_of

# What is not in the root, and what GNOME does in its own way.
ELSEWHERE = ('kate',)
for name in [name for name in SHARED if any(word in name for word in ELSEWHERE)]:
    del SHARED[name]
scene = scenes_of('gnome')
scene(clipboard_scenes.keeps_the_clipboard_through_fixes_in_quick_succession)

REMOTE = 'org.gnome.Mutter.RemoteDesktop'
BINDINGS = 'org.gnome.settings-daemon.plugins.media-keys'
# Whether no window is on its way to the screen.
SHOWN = 'global.get_window_actors().every(actor => actor.visible && actor.opacity === 255 && actor.scale_x === 1)'
RECORDER, ALERT = 'מקש קיצור', 'Lexwend'  # the titles of windows


def scene_without_extension(function):
    DESKTOPS[f'gnome_{function.__name__}'] = {'has_extension': False}
    return scene(function)


def sessions():
    """The open sessions of remote control; one is that of the keyboard."""
    description = call(REMOTE, '/org/gnome/Mutter/RemoteDesktop/Session', 'org.freedesktop.DBus.Introspectable', 'Introspect')[0]
    return description.count('<node name=')


@scene
def controls_the_session_only_while_a_fix_needs_it(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')
    assert sessions() == 1, 'Accessibility needs no keys'
    stage.session.end(stage.agent)
    stage.start_agent(compatMode=True)
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.fix('akuo')
    assert sessions() == 2, sessions()
    until(lambda: sessions() == 1, 'the session to end')
    assert stage.clipboard() == 'kept'


@scene
def leaves_an_empty_clipboard_empty(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')
    until(lambda: sessions() == 1, 'the session to end')
    assert not stage.clipboard_targets(), stage.clipboard_targets()


@scene
def keeps_the_clipboard_after_its_end_without_x(stage):
    """By remote control, until somebody copies."""
    display = os.environ.pop('DISPLAY')
    stage.start_agent(compatMode=True)
    os.environ['DISPLAY'] = display
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept', 'text/html')
    targets = stage.clipboard_targets()
    stage.select_all()
    stage.fix('שלום')
    until(lambda: stage.clipboard('text/html') == 'kept', 'the clipboard to come back')
    assert stage.session.end(stage.agent) == 0
    assert stage.clipboard('text/html') == 'kept', stage.clipboard('text/html')
    assert stage.clipboard_targets() == targets, stage.clipboard_targets()
    assert sessions() == 2, sessions()
    stage.put_on_clipboard('copied since')
    until(lambda: sessions() == 1 and not processes_of(stage.session.KEEPER), 'the process that has kept it to end')


@scene
def fixes_by_a_key_with_a_modifier(stage):
    """Its modifier is down for a while longer, and would make another shortcut of the paste."""
    control = 256  # cmdKey
    k = 40
    stage.start_agent(hotKeyCode=k, hotKeyModifiers=control, compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.keyboard.down('Control')
    stage.keyboard.down('k')
    stage.keyboard.up('k')
    stage.keyboard.up('Control')
    stage.expect_text('שלום')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')


def tell_agent(stage):
    """As a key binding of the user's does."""
    return subprocess.run([str(stage.agent_path), '--fix'], capture_output=True, check=False, timeout=DEADLINE_SECONDS).returncode


def indicator(stage):
    """The agent's item in the top bar, in GNOME Shell's words, when the extension AppIndicator has made it."""
    def name():
        return next((each for each in stage.session.shell.ask('Object.keys(Main.panel.statusArea)') if each.startswith('appindicator-')), None)
    return f'Main.panel.statusArea["{until(name, "the icon in the top bar")}"]'


def open_menu(stage, name):
    """The text of its menu, of which a picture is kept."""
    shell, menu = stage.session.shell, f'{indicator(stage)}.menu'
    shell.ask(f'{menu}.open(false)')
    text = until(lambda: shell.ask(f'{menu}._getMenuItems().map(item => item.label ? item.label.text : "").join("\\n")').strip(), 'its texts')
    keep_picture(stage, name)
    shell.ask(f'{menu}.close(false)')
    return text


def shows(stage, title):
    """Whether a window of the agent with that title has the keyboard."""
    shell = stage.session.shell
    return shell.front() == stage.agent.pid and shell.ask('global.display.focus_window.get_title()') == title


@scene
def shows_its_menu_its_recorder_and_an_alert(stage):
    stage.start_agent()
    text = open_menu(stage, 'menu')
    assert 'יציאה' in text, text
    stage.open('mousepad', 'akuo')
    stage.session.shell.ask('global.display.grab_accelerator("<Control><Alt>k", 0)')  # as another program's key
    subprocess.run([str(stage.agent_path), '--settings'], check=True, timeout=DEADLINE_SECONDS)
    until(lambda: shows(stage, RECORDER), 'the recorder to have the keyboard')
    stage.keyboard.press('Control+Alt+k')
    keep_picture(stage, 'recorder')
    stage.keyboard.press('Return')
    until(lambda: 'hotkey: register Ctrl+Alt+K ok=false' in stage.session.log(), 'the agent to find the key taken')
    until(lambda: shows(stage, ALERT), 'the alert to have the keyboard')
    keep_picture(stage, 'alert')
    stage.keyboard.press('Return')
    until(lambda: not shows(stage, ALERT), 'the alert to go')
    stage.select_all()
    stage.fix('שלום')


@scene_without_extension
def says_in_its_menu_why_no_press_comes(stage):
    stage.start_agent()
    text = open_menu(stage, 'menu-without-extension')
    assert 'gnome-extensions enable' in text, text


@scene
def takes_its_hot_key_again_when_the_extension_was_away(stage):
    """As it is while the screen is locked."""
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    for switch in ('disable', 'enable'):
        stage.session.shell.ask(f'Main.extensionManager.{switch}Extension("{UUID}")')
        until(lambda s=switch: has_owner('org.lexwend.Shell') == (s == 'enable'), f'GNOME to {switch} the extension')
    stage.select_all()
    stage.fix('שלום')
    stage.expect_group(1)


@scene_without_extension
def is_fixed_by_a_command_without_extension(stage):
    """By each path, and the layout follows by the user's own shortcut."""
    stage.start_agent()
    for editor, compat in (('gnome-text-editor', False), ('mousepad', True)):
        if compat:
            stage.session.end(stage.agent)
            stage.start_agent(compatMode=True)
        program = stage.open(editor, 'akuo')
        stage.put_on_clipboard('kept')
        for expected, group in (('שלום', 1), ('akuo', 0)):
            stage.select_all()
            assert tell_agent(stage) == 0
            stage.expect_text(expected)
            stage.expect_group(group)
            until(lambda g=group: setting('org.gnome.desktop.input-sources', 'mru-sources').startswith(f"[('xkb', '{('us', 'il')[g]}'"),
                  'the settings to say so')  # a moment later, and the agent knows by them
        until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
        until(lambda: sessions() == 1, 'the session of remote control to end')
        stage.session.end(program)
    assert 'its extension Lexwend is not switched on' in stage.session.log(), stage.session.log()


@scene_without_extension
def presses_no_key_in_an_unknown_window_without_extension(stage):
    """A terminal that is not on the accessibility bus."""
    stage.start_agent()
    stage.put_on_clipboard('kept')
    terminal = stage.session.start_in_front(['foot', 'sh', '-c', 'exec sleep 600'])
    assert tell_agent(stage) == 0
    until(lambda: 'fix: failed' in stage.session.log(), 'the fix to fail')
    assert terminal.poll() is None, 'the terminal has ended'
    assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'


@scene_without_extension
def binds_a_key_when_the_user_agrees_and_takes_it_away(stage):
    daemon = stage.session.start(['/usr/libexec/gsd-media-keys'])
    until(lambda: has_owner('org.gnome.SettingsDaemon.MediaKeys'), 'the daemon of key bindings')
    stage.start_agent()
    until(lambda: shows(stage, ALERT), 'the agent to ask')
    keep_picture(stage, 'question')
    stage.keyboard.press('Return')
    until(lambda: 'Lexwend' in bindings(), 'the key to be bound')
    stage.open('mousepad', 'akuo')
    stage.select_all()

    def fixed():
        stage.keyboard.press('F2')
        try:
            return until(lambda: stage.field.text() == 'שלום', 'the fix', 3)
        except DesktopError:
            return False  # the daemon has not taken the key yet
    until(fixed, 'the key to fix')
    stage.session.end(stage.agent)
    assert 'Lexwend' not in bindings(), bindings()
    assert daemon.poll() is None
    stage.start_agent()
    until(lambda: 'Lexwend' in bindings(), 'the agent to remember the answer')


def setting(schema, key):
    return subprocess.run(['gsettings', 'get', schema, key], capture_output=True, text=True, check=True).stdout


def bindings():
    return setting(BINDINGS, 'custom-keybindings')


def has_owner(name):
    return call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'NameHasOwner', '(s)', name)[0]


def keep_picture(stage, name):
    """For somebody to look at."""
    folder = os.environ.get('LEXWEND_DESKTOP_PICTURES')
    if folder:
        until(lambda: stage.session.shell.ask(SHOWN), 'the window to be there whole')
        stage.session.screenshot(f'{folder}/{name}.png')


def make_session(_, **options):
    return GnomeSession(**options)


if __name__ == '__main__':
    run_scene(lambda: main(__doc__, make_session))
