#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What becomes of the user's clipboard where a fix does not go smoothly, on a private desktop, one scene per run.

usage: clipboard_scenes.py --list | clipboard_scenes.py SCENE AGENT QT6_EDITOR
"""
import signal
import subprocess

from session import run_scene, until
from stage import main, scene

HTML = '<b>kept – נשמר</b>'


def start_clipboard_manager(stage):
    """Whoever ends may hand the clipboard over from now on."""
    manager = stage.session.start([str(stage.qt6_editor.with_name('clipboard_manager'))], stdout=subprocess.PIPE, text=True)
    assert manager.stdout.readline() == 'ready\n', 'the clipboard manager did not start'
    return manager


def start_editor(stage, editor):
    stage.start_agent(compatMode=True)
    stage.open(editor, 'akuo nv akunl')
    stage.put_on_clipboard(HTML, 'text/html')
    stage.select_all()


def fix_again(stage):
    """The keys reach the program after those of the first fix."""
    for keys in ('Control+Home', 'Control+Shift+End', 'F2'):
        stage.keyboard.press(keys)


def expect_clipboard_at_the_end(stage):
    """The agent does not end before it has put back what it has to."""
    start_clipboard_manager(stage)
    stage.session.end(stage.agent)
    until(lambda: stage.clipboard('text/html') == HTML, 'the clipboard to be handed over')
    assert stage.clipboard_targets() == ['text/html'], stage.clipboard_targets()


@scene
def keeps_the_clipboard_through_fixes_in_quick_succession(stage):
    """In an editor that takes no key before it has finished a paste."""
    start_editor(stage, 'qt6_editor')
    stage.keyboard.press('F2')
    until(lambda: stage.session.log().count('clipboard: pasted') == 1, 'the first paste')
    fix_again(stage)
    until(lambda: stage.session.log().count('clipboard: pasted') == 2, 'the second paste')
    until(lambda: stage.field.text() == 'akuo nv akunl', 'the second fix')
    expect_clipboard_at_the_end(stage)


@scene
def pastes_the_second_text_though_the_first_fix_gives_back_the_clipboard(stage):
    """Both are due when the agent wakes up again."""
    start_editor(stage, 'mousepad')
    stage.keyboard.press('F2')
    until(lambda: stage.field.text() == 'שלום מה שלומך', 'the first fix')
    stage.agent.send_signal(signal.SIGSTOP)
    try:
        fix_again(stage)
    finally:
        stage.agent.send_signal(signal.SIGCONT)
    until(lambda: stage.field.text() == 'akuo nv akunl', 'the second fix')
    expect_clipboard_at_the_end(stage)


def is_restored(stage, ending):
    """Everything is as after a fix that was left alone, and no key is left down."""
    stage.start_agent(compatMode=True)
    editor = stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    manager = start_clipboard_manager(stage)
    stage.select_all()
    pastes = stage.session.log().count('clipboard: pasted')
    stage.keyboard.press('F2')
    until(lambda: stage.session.log().count('clipboard: pasted') > pastes, 'the paste')
    stage.agent.send_signal(ending)
    assert stage.agent.wait(10) == 0, f'the agent ended with {stage.agent.returncode}'
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to be handed over')
    assert stage.clipboard_targets() == ['UTF8_STRING'], stage.clipboard_targets()
    until(lambda: stage.field.text() == 'שלום', 'the field to hold the fixed text')
    assert not stage.keyboard.pressed(), f'keys are left down: {stage.keyboard.pressed()}'
    stage.session.end(manager)
    stage.session.end(editor)


@scene
def is_restored_when_it_is_ended_during_a_paste(stage):
    for ending in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        is_restored(stage, ending)


@scene
def leaves_a_clipboard_alone_that_cannot_be_kept(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.owner.send_signal(signal.SIGSTOP)
    try:
        stage.fix_that_fails('noSelection')
    finally:
        stage.owner.send_signal(signal.SIGCONT)
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to be answered for again')
    assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'
    stage.expect_text('akuo')


def copy_meanwhile(stage):
    """The hot key, and another program that copies again and again while the fix waits for a copy that nobody makes."""
    stage.keyboard.press('F2')
    until(lambda: 'clipboard: copy produced nothing (attempt 1, changed=false' in stage.session.log(), 'the first attempt')
    while 'fix: ' not in stage.session.log().partition('fix: front=')[2]:
        stage.put_on_clipboard('akuo')
    assert 'fix: failed noSelection' in stage.session.log(), stage.session.log()
    assert stage.clipboard() == 'akuo', stage.clipboard()
    assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'


@scene
def takes_no_foreign_copy_for_the_selection_when_the_clipboard_cannot_be_kept(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'nv')
    stage.put_on_clipboard('kept')
    stage.select_all()
    slow = stage.owner
    slow.send_signal(signal.SIGSTOP)
    try:
        copy_meanwhile(stage)
    finally:
        slow.send_signal(signal.SIGCONT)
    stage.expect_text('nv')


@scene
def fixes_a_megabyte_through_the_clipboard(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo nv akunl ' * 75000)
    stage.put_on_clipboard(HTML, 'text/html')
    stage.select_all()
    stage.fix('שלום מה שלומך ' * 75000)
    until(lambda: stage.clipboard('text/html') == HTML, 'the clipboard to come back')


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
