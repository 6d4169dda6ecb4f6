# SPDX-License-Identifier: MIT
"""The scenes of every Wayland compositor: those of X11 that do not depend on the display, and those of Wayland alone."""
import os
import shutil
import subprocess
import time
from pathlib import Path

# These fill SCENES.
import clipboard_scenes  # noqa: F401
import large_apps  # noqa: F401
import scenes  # noqa: F401
from panel import ScreenReader
from session import until
from stage import SCENES

RECORDER = 'מקש קיצור'

FROM_X11 = (
    'fixes_both_ways_in_mousepad', 'fixes_both_ways_in_gnome_text_editor', 'fixes_both_ways_in_featherpad',
    'fixes_both_ways_in_qt6_editor',
    'keeps_the_clipboard_in_mousepad', 'keeps_the_clipboard_in_gnome_text_editor', 'keeps_the_clipboard_in_featherpad',
    'keeps_the_clipboard_in_qt6_editor',
    'fixes_several_lines_with_emoji_and_vowel_points_in_mousepad',
    'fixes_several_lines_through_the_clipboard_in_gnome_text_editor',
    'fixes_several_lines_through_the_clipboard_in_qt6_editor',
    'works_with_every_order_of_layouts_in_mousepad', 'works_with_every_order_of_layouts_through_the_clipboard_in_qt6_editor',
    'fixes_an_entry_of_gtk4', 'fixes_a_full_entry_of_gtk3',
    'leaves_everything_alone_without_a_selection_in_mousepad', 'leaves_read_only_text_alone',
    'refuses_a_hidden_entry_of_gtk3', 'refuses_a_password_entry_of_gtk4', 'refuses_a_password_field_of_qt6',
    'refuses_a_terminal_inside_another_window',
    'is_not_held_up_by_an_application_that_has_stopped', 'a_second_instance_leaves_silently',
    'fixes_both_ways_in_kate', 'keeps_the_clipboard_in_kate', 'leaves_kate_alone_without_a_selection',
    'leaves_what_the_user_copies_right_after_a_paste', 'leaves_a_clipboard_alone_that_cannot_be_kept',
    'fixes_a_megabyte_through_the_clipboard',
    'keeps_the_clipboard_where_a_fix_begins_before_the_restore_of_the_one_before',
)
SHARED = {name: SCENES[name] for name in FROM_X11}


def scene(function):
    SHARED[function.__name__] = function
    return function


def scenes_of(compositor):
    """From now on SCENES holds the shared ones by the names that they have on that compositor. Gives what adds one of its own."""
    SCENES.clear()
    SCENES.update({f'{compositor}_{name}': function for name, function in SHARED.items()})

    def add(function):
        SCENES[f'{compositor}_{function.__name__}'] = function
        return function
    return add


@scene
def fixes_an_application_of_x11(stage):
    """By each path."""
    stage.session.let_in_to_xwayland()
    stage.start_agent()
    os.environ['GDK_BACKEND'] = 'x11'
    editor = stage.open('mousepad', 'akuo')
    assert stage.session.front_is_of_x11(), 'the window is none of X11'
    stage.put_on_clipboard('kept')
    stage.select_all()
    stage.fix('שלום')
    stage.expect_paths(['done'])
    stage.session.end(stage.agent)
    stage.start_agent(compatMode=True)
    stage.select_all()
    stage.fix('akuo')
    until(lambda: stage.clipboard() == 'kept', 'the clipboard to come back')
    stage.session.end(editor)


@scene
def keeps_a_picture(stage):
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    picture = stage.session.folder / 'picture.png'
    subprocess.run(['convert', '-size', '1920x1080', 'plasma:', str(picture)], check=True)
    stage.put_file_on_clipboard(picture, 'image/png')
    stage.select_all()
    stage.fix('שלום')
    until(lambda: stage.clipboard_targets() == ['image/png'], 'the picture to come back')
    assert stage.clipboard_bytes('image/png') == picture.read_bytes(), 'the picture has changed'


@scene
def records_combinations_of_the_desktop(stage):
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'  # Qt 6.4 on Wayland asks for it at its start only
    stage.start_agent()
    reader = ScreenReader(stage.session)
    subprocess.run([str(stage.agent_path), '--settings'], check=True)
    stage.session.let_window_have_combinations()
    until(lambda: reader.is_active(RECORDER), 'the recorder to have the keyboard')
    for combination in stage.session.OWN_COMBINATIONS:
        stage.keyboard.press(combination)
        until(lambda c=combination: c in reader.labels(RECORDER), f'{combination} in the recorder')


def processes_of(program):
    """Those that were started by that path, or by that name in any folder."""
    found = []
    for folder in Path('/proc').glob('[0-9]*'):
        try:
            command = (folder / 'cmdline').read_bytes().split(b'\0')
        except OSError:
            continue  # has ended
        name = os.fsdecode(command[0])
        found += [int(folder.name)] if str(program) in (name, Path(name).name) else []
    return found


@scene
def keeps_the_clipboard_after_its_end(stage):
    """Also where it ends before the paste, and only until somebody else copies."""
    stage.agent_path = shutil.copy(stage.agent_path, stage.session.folder / 'agent')  # other tests run the same program
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.put_on_clipboard('kept', 'text/html')
    targets = stage.clipboard_targets()
    stage.select_all()
    stage.keyboard.press('F2')
    until(lambda: 'clipboard: pasted' in stage.session.log(), 'the paste')
    assert stage.session.end(stage.agent) == 0
    stage.expect_text('שלום')
    assert stage.clipboard('text/html') == 'kept', stage.clipboard('text/html')
    assert stage.clipboard_targets() == targets, stage.clipboard_targets()
    keeper = stage.session.KEEPER or stage.agent_path
    assert len(processes_of(keeper)) == 1, processes_of(keeper)
    stage.start_agent()
    stage.put_on_clipboard('copied since')
    until(lambda: set(processes_of(keeper)) <= {stage.agent.pid}, 'the process that has kept it to end')


@scene
def refuses_a_terminal_and_leaves_its_program_running(stage):
    stage.start_agent()
    stage.put_on_clipboard('kept')
    alive = stage.session.folder / 'alive'
    terminal = stage.session.start_in_front([*stage.session.TERMINAL, 'sh', '-c', f'touch {alive}; exec sleep 600'])
    until(alive.exists, 'the program in the terminal to run')
    stage.expect_secure_input()
    assert terminal.poll() is None, 'the terminal has ended'
    assert f'fix: front={stage.session.TERMINAL_CLASS} ' in stage.session.log(), stage.session.log()


@scene
def a_held_hot_key_fires_once(stage):
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.keyboard.down('F2')
    until(lambda: stage.field.text() == 'שלום', 'the fix')
    time.sleep(1.5)  # the key repeats after 0.6 s; nothing tells how often
    stage.keyboard.up('F2')
    # A second fix comes after whatever the repetitions have set off.
    stage.select_all()
    stage.fix('akuo')
    assert stage.session.log().count('fix: front=') == 2, stage.session.log()


@scene
def types_in_the_layout_of_the_fixed_text(stage):
    """The agent's own keys leave the user's keyboard as it is."""
    stage.start_agent(compatMode=True)
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')
    stage.keyboard.press('a')
    stage.expect_text('שלוםש')


@scene
def works_without_xwayland(stage):
    del os.environ['DISPLAY']
    report = subprocess.run([str(stage.agent_path), '--selftest'], capture_output=True, text=True, timeout=10, check=True).stdout
    assert report.startswith('source: system layouts\ncurrent layout is Hebrew: false\n'), report[:80]
    stage.start_agent()
    stage.open('mousepad', 'akuo')
    stage.select_all()
    stage.fix('שלום')
    stage.expect_group(1)
