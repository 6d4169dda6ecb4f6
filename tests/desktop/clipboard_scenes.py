#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What becomes of the user's clipboard where a fix does not go smoothly, on a private desktop, one scene per run.

usage: clipboard_scenes.py --list | clipboard_scenes.py SCENE AGENT QT6_EDITOR
"""
import signal
import subprocess
import time

from session import DesktopError, run_scene, until
from stage import HERE, main, scene

HTML = '<b>kept – נשמר</b>'


def start_clipboard_manager(stage):
    """Whoever ends may hand the clipboard over from now on."""
    manager = stage.session.start([str(stage.qt6_editor.with_name('clipboard_manager'))], stdout=subprocess.PIPE, text=True)
    assert manager.stdout.readline() == 'ready\n', 'the clipboard manager did not start'
    return manager


def start_editor(stage, editor):
    stage.start_agent(compatMode=True)
    program = stage.open(editor, 'akuo nv akunl')
    stage.put_on_clipboard(HTML, 'text/html')
    stage.select_all()
    return program


def press_again(stage):
    """The keys reach the program after those of the first fix."""
    for keys in ('Control+Home', 'Control+Shift+End', 'F2'):
        stage.keyboard.press(keys)


def fix_again(stage):
    """A press in the first fix, which ends some moments after its last line, is dropped: then it is made once more."""
    begun = stage.session.log().count('fix: front=')
    press_again(stage)
    while True:
        try:
            return until(lambda: stage.session.log().count('fix: front=') > begun, 'the next fix to begin', 1)
        except DesktopError:
            stage.keyboard.press('F2')


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
    until(lambda: stage.session.log().count('fix: success') == 1, 'the first fix to end: what is pressed before is dropped')
    fix_again(stage)
    until(lambda: stage.session.log().count('clipboard: pasted') == 2, 'the second paste')
    until(lambda: stage.field.text() == 'akuo nv akunl', 'the second fix')
    expect_clipboard_at_the_end(stage)


@scene
def pastes_the_second_text_though_the_first_fix_gives_back_the_clipboard(stage):
    """Both are due when the agent wakes up again."""
    start_editor(stage, 'mousepad')
    stage.keyboard.press('F2')
    until(lambda: stage.field.text() == 'שלום מה שלומך' and 'fix: success' in stage.session.log(), 'the first fix')
    time.sleep(0.1)  # the end of the fix, or the press would be dropped
    stage.agent.send_signal(signal.SIGSTOP)
    try:
        press_again(stage)
    finally:
        stage.agent.send_signal(signal.SIGCONT)
    until(lambda: stage.field.text() == 'akuo nv akunl', 'the second fix')
    expect_clipboard_at_the_end(stage)


@scene
def keeps_the_clipboard_where_a_fix_begins_before_the_restore_of_the_one_before(stage):
    """What was pasted stays until the application, which stops, has had time for it."""
    editor = start_editor(stage, 'mousepad')
    targets = stage.clipboard_targets()
    stage.fix('שלום מה שלומך')
    editor.send_signal(signal.SIGSTOP)
    time.sleep(0.75)
    editor.send_signal(signal.SIGCONT)
    stage.select_all()
    stage.fix('akuo nv akunl')
    until(lambda: stage.clipboard('text/html') == HTML, 'the clipboard to come back')
    assert stage.clipboard_targets() == targets, stage.clipboard_targets()


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
        assert 'clipboard: copy produced nothing' not in stage.session.log(), 'a copy was waited for that nobody makes'
    finally:
        stage.owner.send_signal(signal.SIGCONT)
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to be answered for again')
    assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'
    stage.expect_text('akuo')


@scene
def gives_the_replacement_to_an_application_that_stops_before_it_pastes(stage):
    """It pastes when it goes on, and everybody else has the clipboard back meanwhile."""
    stage.start_agent(compatMode=True)
    editor = stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.keyboard.press('F2')
    until(lambda: 'clipboard: copied' in stage.session.log(), 'the copy')
    editor.send_signal(signal.SIGSTOP)
    try:
        until(lambda: 'clipboard: pasted' in stage.session.log(), 'the paste')
        until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    finally:
        editor.send_signal(signal.SIGCONT)
    stage.expect_text('שלום')
    until(lambda: stage.clipboard_targets() == ['UTF8_STRING'], 'the clipboard to have its types back')
    assert stage.clipboard() == 'kept', stage.clipboard()


@scene
def leaves_what_the_user_copies_right_after_a_paste(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.fix('שלום')
    stage.put_on_clipboard('copied since')
    # The second fix is over when the first has long given back what it has to.
    stage.select_all()
    stage.fix('akuo')
    until(lambda: stage.clipboard() == 'copied since', 'the clipboard to come back')


@scene
def undoes_a_copy_that_comes_after_the_fix_has_given_up(stage):
    stage.start_agent(compatMode=True)
    editor = stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    editor.send_signal(signal.SIGSTOP)
    try:
        stage.fix_that_fails('noSelection')
        assert stage.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'
    finally:
        editor.send_signal(signal.SIGCONT)
    until(lambda: not stage.clipboard_owner_is_still_the_first(), 'the copy that comes late')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    stage.expect_text('akuo')


def keeps_a_picture(stage, command):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    owner = stage.session.start(command, stdout=subprocess.PIPE, text=True)
    assert owner.stdout.readline() == 'ready\n', 'there is no picture'
    before = stage.clipboard_bytes('image/png')
    assert before.startswith(b'\x89PNG'), 'the picture cannot be had'
    stage.select_all()
    stage.fix('שלום')
    until(lambda: 'image/png' in stage.clipboard_targets(), 'the picture to come back')
    stage.session.end(owner)
    assert stage.clipboard_bytes('image/png') == before, 'the picture has changed'


@scene
def keeps_a_picture_of_3840_by_2160_from_gtk_3(stage):
    keeps_a_picture(stage, ['/usr/bin/python3', str(HERE / 'gtk_picture.py'), '3840', '2160'])


@scene
def keeps_a_picture_of_1920_by_1080_from_qt_6(stage):
    keeps_a_picture(stage, [str(stage.qt6_editor), '--picture', '1920', '1080'])


@scene
def stays_until_the_clipboard_is_fetched_where_there_is_no_manager(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.keyboard.press('F2')
    until(lambda: 'clipboard: pasted' in stage.session.log(), 'the paste')
    stage.agent.send_signal(signal.SIGTERM)
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    assert stage.agent.wait(10) == 0, f'the agent ended with {stage.agent.returncode}'
    assert stage.field.text() == 'שלום', stage.field.text()


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
