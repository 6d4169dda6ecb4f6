#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fixes in real applications on a private desktop, one scene per run.

usage: scenes.py --list | scenes.py SCENE AGENT QT6_EDITOR
"""
import os
import signal
import subprocess
from datetime import datetime, timedelta

from session import PressCounter, run_scene, until
from stage import HERE, SCENES, Stage, active_class, main, scene


def fixes_both_ways(stage, editor):
    """Latin text becomes Hebrew, that becomes Latin again, and the layout follows."""
    stage.start_agent()
    stage.open(editor, 'akuo nv akunl')
    stage.select_all()
    stage.fix('שלום מה שלומך')
    stage.expect_group(1)
    stage.select_all()
    stage.fix('akuo nv akunl')
    stage.expect_group(0)
    stage.expect_paths(['done'] * 2)


def fixes_through_the_clipboard(stage, editor):
    """The same by copy and paste, with everything on the clipboard kept."""
    stage.start_agent(compatMode=True)
    stage.open(editor, 'akuo nv akunl')
    stage.put_on_clipboard('<b>kept</b>', 'text/html')
    targets = stage.clipboard_targets()
    stage.select_all()
    stage.fix('שלום מה שלומך')
    assert 'clipboard: pasted 13 chars' in stage.session.log(), stage.session.log()
    until(lambda: stage.clipboard('text/html') == '<b>kept</b>', 'the clipboard to come back')
    assert stage.clipboard_targets() == targets, f'targets were {targets}, are {stage.clipboard_targets()}'


for _editor in Stage.EDITORS:
    _name = _editor.replace('-', '_')
    SCENES[f'fixes_both_ways_in_{_name}'] = lambda stage, editor=_editor: fixes_both_ways(stage, editor)
    SCENES[f'keeps_the_clipboard_in_{_name}'] = lambda stage, editor=_editor: fixes_through_the_clipboard(stage, editor)


@scene
def fixes_mixed_text_by_the_active_layout(stage):
    stage.start_agent()
    stage.open('mousepad', 'היי akuo nv')
    stage.select_all()
    stage.fix('היי שלום מה')
    stage.expect_group(1)


@scene
def fixes_several_lines_with_emoji_and_vowel_points(stage):
    for compat in (False, True):
        if compat:
            stage.session.end(stage.agent)
            stage.session.end(stage.editor)
        stage.start_agent(compatMode=compat)
        stage.editor = stage.open('mousepad', 'akuo 😀\n\tnv 👨‍👩‍👧  e\u0301\n\nakunl שָׁ')
        stage.keyboard.lock_group(0)
        stage.select_all()
        stage.fix('שלום 😀\n\tמה 👨‍👩‍👧  e\u0301\n\nשלומך שָׁ')


@scene
def fixes_a_megabyte(stage):
    text = 'akuo nv akunl ' * 75000
    stage.start_agent()
    stage.open('mousepad', text)
    stage.select_all()
    stage.fix('שלום מה שלומך ' * 75000)


@scene
def leaves_everything_alone_without_a_selection(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.fix_that_fails('noSelection')
    assert stage.field.text() == 'akuo', stage.field.text()
    assert stage.clipboard() == 'kept', stage.clipboard()


@scene
def leaves_text_without_layout_letters_alone(stage):
    stage.start_agent()
    stage.open('mousepad', '123 456')
    stage.select_all()
    stage.fix_that_fails('nothingToChange')
    assert stage.field.text() == '123 456', stage.field.text()


def read_only(stage):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    stage.show(['/usr/bin/python3', str(HERE / 'gtk_field.py'), '3', 'read-only', 'akuo'], 'gtk_field')
    until(lambda: stage.field.text() == 'akuo', 'the field to show its text')
    stage.select_all()
    stage.fix('akuo')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')


SCENES['leaves_read_only_text_alone'] = read_only


def refuses_password(stage, command, application):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    stage.show(command, application)
    until(stage.field.find, 'the field to have the focus')
    stage.keyboard.press('Control+a')
    until(lambda: stage.field.selection_length() == len('akuo'), 'the text to be selected')
    stage.expect_refused_password()


@scene
def refuses_a_hidden_entry_of_gtk3(stage):
    refuses_password(stage, ['/usr/bin/python3', str(HERE / 'gtk_field.py'), '3', 'entry-hidden', 'akuo'], 'gtk_field')


@scene
def refuses_a_hidden_entry_of_gtk4(stage):
    refuses_password(stage, ['/usr/bin/python3', str(HERE / 'gtk_field.py'), '4', 'entry-hidden', 'akuo'], 'gtk_field')


@scene
def refuses_a_password_entry_of_gtk4(stage):
    refuses_password(stage, ['/usr/bin/python3', str(HERE / 'gtk_field.py'), '4', 'password-entry', 'akuo'], 'gtk_field')


@scene
def refuses_a_password_field_of_qt6(stage):
    refuses_password(stage, [str(stage.qt6_editor), '--password', 'akuo'], 'qt6_editor')


@scene
def refuses_a_terminal_and_leaves_its_program_running(stage):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    alive = stage.session.folder / 'alive'
    terminal = stage.session.start(['xterm', '-e', f'touch {alive}; exec sleep 600'])
    until(alive.exists, 'the program in the terminal to run')
    until(lambda: 'XTerm' in active_class(), 'the terminal to have the keyboard')
    stage.fix_that_fails('noSelection')
    assert terminal.poll() is None, 'the terminal has ended'
    assert 'fix: front=XTerm' in stage.session.log(), stage.session.log()
    assert stage.clipboard() == 'kept'


def layouts(stage, names, group, garbled, meant, group_after):
    """A fix with these layouts and this group active, by either path."""
    for compat in (False, True):
        stage.session.set_layouts(names)
        if compat:
            stage.session.end(stage.agent)
            stage.session.end(stage.editor)
        stage.start_agent(compatMode=compat)
        stage.editor = stage.open('mousepad', garbled)
        stage.keyboard.lock_group(group)
        stage.select_all()
        stage.fix(meant)
        stage.expect_group(group_after)


@scene
def works_with_hebrew_first_and_active(stage):
    layouts(stage, 'il,us', 0, 'akuo', 'שלום', 0)


@scene
def works_with_hebrew_first_and_english_active(stage):
    layouts(stage, 'il,us', 1, 'akuo', 'שלום', 0)


@scene
def works_with_english_first_and_hebrew_active(stage):
    layouts(stage, 'us,il', 1, 'יקךךם', 'hello', 0)


@scene
def works_with_hebrew_alone(stage):
    layouts(stage, 'il', 0, 'akuo', 'שלום', 0)


@scene
def works_with_german_and_hebrew(stage):
    layouts(stage, 'de,il', 0, 'akuo', 'שלום', 1)


@scene
def works_where_simulated_keys_have_another_layout(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.keyboard.type_on_the_servers_own('us', 'us,il')
    for group, meant in ((1, 'שלום'), (0, 'akuo')):
        stage.select_all()
        stage.fix(meant)
        stage.expect_group(group)


@scene
def works_where_control_and_caps_lock_have_changed_places(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    subprocess.run(['setxkbmap', '-option', 'ctrl:swapcaps'], check=True)
    stage.fix('שלום')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    assert stage.keyboard.locks() == 0, 'Caps Lock is on'


@scene
def is_restored_when_it_is_ended_during_a_paste(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.keyboard.press('F2')
    until(lambda: 'clipboard: pasted' in stage.session.log(), 'the paste')
    status = stage.session.end(stage.agent)
    assert status == 0, f'the agent ended with {status}'


@scene
def a_held_hot_key_fires_once(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    subprocess.run(['xset', 'r', 'rate', '100', '50'], check=True)
    counter = PressCounter(os.environ['DISPLAY'])
    stage.keyboard.down('F2')
    until(lambda: stage.field.text() == 'שלום', 'the fix')
    repetitions = counter.presses() + 10
    until(lambda: counter.presses() >= repetitions, 'the key to repeat')
    stage.keyboard.up('F2')
    # A second fix comes after whatever the repetitions have set off.
    stage.select_all()
    stage.fix('akuo')
    assert stage.session.log().count('fix: front=') == 2, stage.session.log()


def moment(log, words):
    """When the line with these words was logged."""
    line = next(line for line in log.splitlines() if words in line)
    return datetime.strptime(line[:23], '%Y-%m-%d %H:%M:%S.%f')


@scene
def is_not_held_up_by_an_application_that_has_stopped(stage):
    stage.start_agent()
    program = stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')  # so that the accessibility of both sides is up
    before = len(stage.session.log())
    program.send_signal(signal.SIGSTOP)
    try:
        stage.keyboard.press('F2')
        until(lambda: 'fix: failed noSelection' in stage.session.log()[before:], 'the fix to fail')
    finally:
        program.send_signal(signal.SIGCONT)
    log = stage.session.log()[before:]
    asked = moment(log, 'AX path: not applicable') - moment(log, 'fix: front=')
    assert asked < timedelta(seconds=1), f'the accessibility questions took {asked}'


@scene
def a_second_instance_leaves_silently(stage):
    stage.start_agent()
    log = stage.session.log()
    second = subprocess.run([str(stage.agent_path)], capture_output=True, timeout=10, check=False)
    assert (second.returncode, second.stdout, second.stderr) == (0, b'', b''), second
    assert stage.session.log() == log, 'the second instance wrote to the log'


@scene
def self_test_sees_the_system_layouts(stage):
    report = subprocess.run([str(stage.agent_path), '--selftest'], capture_output=True, text=True, timeout=10, check=True)
    assert report.stdout.startswith('source: system layouts\ncurrent layout is Hebrew: false\n'), report.stdout[:80]
    stage.keyboard.lock_group(1)
    report = subprocess.run([str(stage.agent_path), '--selftest'], capture_output=True, text=True, timeout=10, check=True)
    assert 'current layout is Hebrew: true\n' in report.stdout, report.stdout[:80]


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
