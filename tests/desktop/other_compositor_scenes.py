#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes on a Wayland compositor of which nothing is known except the protocols of wlroots, one scene per run. It is sway
without its socket. The user has bound F2 to `lexwend --fix`.

usage: other_compositor_scenes.py --list | other_compositor_scenes.py SCENE AGENT QT6_EDITOR
"""
import json
import os
import subprocess

from session import DEADLINE_SECONDS, run_scene, until
from stage import main
from sway_session import SwaySession, WaylandKeyboard
from wayland_scenes import SHARED, scenes_of

SAME = ('keeps_the_clipboard_in_mousepad', 'keeps_the_clipboard_in_gnome_text_editor', 'keeps_the_clipboard_in_featherpad',
        'keeps_the_clipboard_in_qt6_editor', 'leaves_everything_alone_without_a_selection_in_mousepad',
        'refuses_a_password_field_of_qt6', 'refuses_a_terminal_inside_another_window', 'fixes_an_application_of_x11',
        'keeps_a_picture', 'keeps_the_clipboard_after_its_end')
for name in SHARED.keys() - set(SAME):
    del SHARED[name]
scene = scenes_of('other_compositor')


class BoundKeyboard(WaylandKeyboard):
    """With the binding of the user's own."""
    agent = None

    def press(self, combination):
        if combination != 'F2':
            return super().press(combination)
        return subprocess.run([str(self.agent), '--fix'], check=True, timeout=DEADLINE_SECONDS, stdin=subprocess.DEVNULL)


class OtherSession(SwaySession):
    def _start(self):
        super()._start()
        del os.environ['SWAYSOCK']
        self.keyboard = BoundKeyboard(self.keyboard.typist, self.sway)

    def start_agent(self, program):
        self.keyboard.agent = program
        return super().start_agent(program)


@scene
def fixes_by_accessibility(stage):
    """Both ways. The layout stays as it is."""
    stage.start_agent()
    stage.open('gnome-text-editor', 'akuo nv akunl')
    stage.select_all()
    stage.fix('שלום מה שלומך')
    stage.select_all()
    stage.fix('akuo nv akunl')
    stage.expect_paths(['done'] * 2)
    stage.expect_group(0)


@scene
def reads_the_layouts_of_the_user_after_keys_of_its_own(stage):
    """The compositor sends the keymap of those keys as well."""
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    for expected in ('שלום', 'akuo', 'שלום'):
        stage.select_all()
        stage.fix(expected)


@scene
def presses_no_key_in_an_unknown_window(stage):
    """A terminal that is not on the accessibility bus."""
    stage.start_agent()
    stage.put_on_clipboard('kept')
    received = stage.session.folder / 'received'
    terminal = stage.session.start_in_front(['foot', 'sh', '-c', f'stty raw -echo; touch {received}; exec cat >{received}'])
    until(received.exists, 'the program in the terminal to run')
    stage.fix_that_fails('noSelection')
    stage.keyboard.press('a')
    until(received.read_bytes, 'the terminal to pass a key on')
    assert received.read_bytes() == b'a', received.read_bytes()
    assert terminal.poll() is None, 'the terminal has ended'
    assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'


@scene
def says_what_to_do_about_the_hot_key(stage):
    stage.start_agent()
    assert 'this compositor lets no program take a hot key' in stage.session.log(), stage.session.log()
    doctor = stage.agent_path.parent.parent / 'tools' / 'lexwend-doctor'
    report = subprocess.run([doctor, '--json'], capture_output=True, check=False, timeout=60, stdin=subprocess.DEVNULL).stdout.decode()
    checks = json.loads(report)['checks']
    assert any('this compositor lets no program take a hot key' in check['found'] for check in checks), report
    assert 'bind a key to the command lexwend --fix' in report, report


def make_session(agent, **options):
    return OtherSession(agent.parent.parent / 'tests' / 'linux' / 'typist' / 'wayland_typist', **options)


if __name__ == '__main__':
    run_scene(lambda: main(__doc__, make_session))
