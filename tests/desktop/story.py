#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What a user does with the agent from its first start to its end, on a private desktop, one scene per run.

usage: story.py --list | story.py SCENE AGENT QT6_EDITOR

The menu, the recorder and the alerts are read as a screen reader reads them, and operated by raw key events.
"""
import os
import signal
import subprocess

from panel import DesktopPanel, Panel, ScreenReader, start_ready
from session import run_scene, until
from stage import in_each_editor, main, scene, scene_on
from tray import Screen, Tray

FIX = 'תקן טקסט מסומן    '
CHANGE_KEY = 'שנה מקש קיצור…'
SWITCH_LAYOUT = 'החלף שפת מקלדת אחרי תיקון'
LOGIN_ITEM = 'הפעל עם הכניסה למחשב'
COMPATIBILITY = 'מצב תאימות (דרך הלוח)'
PERMISSION = 'נדרש אישור נגישות…'
READY = 'פריסה מהמערכת · פעיל'
WAITING = 'ממתין לאישור נגישות'
QUIT = 'יציאה'

RECORDER = 'מקש קיצור'
PROMPT = 'לחץ על צירוף המקשים שתרצה להפעיל בו את התיקון'
CURRENT_KEY = 'הצירוף הנוכחי. מקש F לבד, או מקש אחר יחד עם Ctrl, Super או Alt.'
VALID_KEY = 'אפשר לשמור. הצירוף יחליף את הקודם מיד.'
PLAIN_KEY = 'מקש רגיל לבד יחסום את ההקלדה שלו בכל המחשב. הוסף Ctrl, Super או Alt, או בחר מקש F.'
RESERVED_KEY = 'הצירוף Ctrl+C שמור למערכת (העתקה, הדבקה, סגירה וכדומה). בחר צירוף אחר.'
TAKEN_KEY = 'הצירוף תפוס'
TAKEN_KEY_WHY = ('המערכת לא אפשרה לרשום את הצירוף הזה, כנראה אפליקציה אחרת כבר משתמשת בו. '
                 'חזרנו לצירוף הקודם.')


CONTROL_MASK = 4

NEEDS_PERMISSION = 'נדרש אישור נגישות'
NEEDS_PERMISSION_WHY = ('כדי לתקן טקסט מסומן, האפליקציה צריכה אישור לשלוט במחשב דרך הנגישות. '
                        'האישור ניתן פעם אחת בהגדרות המערכת. '
                        'האפליקציה לא שומרת ולא שולחת שום הקלדה.')


X11_WINDOWS_ONLY = ('זו סביבת Wayland: מקש הקיצור והתיקון פועלים רק בחלונות X11 (XWayland). '
                    'בחלונות Wayland שום דבר לא נקרא ולא משתנה.')
NO_X11_DISPLAY = 'בסביבת Wayland הזו אין תצוגת X11 (XWayland), ולכן מקש הקיצור והתיקון לא יכולים לפעול בה.'


class User:
    """Somebody in front of that desktop: sees the panel, hears the screen reader, has a keyboard."""

    def __init__(self, stage):
        self.stage = stage
        self.session = stage.session
        self.keyboard = stage.keyboard
        self.reader = ScreenReader(stage.session)
        self.panel = Panel(stage.session)

    def open_menu(self):
        """Opens the menu by the item in the panel and returns its entries, by title."""
        self.panel.click_item()
        self.reader.hear_menu()
        self.keyboard.press('Down')
        until(self.reader.focused_item, 'an item of the menu to be highlighted')
        return self.reader.menu_items()

    def close_menu(self):
        self.keyboard.press('Escape')
        until(self.reader.menu_is_closed, 'the menu to close')

    def choose(self, title):
        self.open_menu()
        while self.reader.focused_item() != title:
            before = self.reader.focused_item()
            self.keyboard.press('Down')
            until(lambda b=before: self.reader.focused_item() != b, 'the next item of the menu')
        self.keyboard.press('Return')
        until(self.reader.menu_is_closed, 'the menu to close')

    def checked(self, title):
        item = self.open_menu()[title]
        self.close_menu()
        return item.is_checked

    def open_recorder(self):
        self.choose(CHANGE_KEY)
        self.expect_keyboard_in(RECORDER)

    def expect_keyboard_in(self, title):
        """The toolkit calls its window active before the display has given it the keyboard."""
        until(lambda: self.reader.is_active(title) and self.session.active_title() == title, f'{title} to have the keyboard')

    def expect_recorder(self, combination, message, may_save):
        wanted = [PROMPT, combination, message]
        until(lambda: self.reader.labels(RECORDER) == wanted and self.reader.button(RECORDER, 'שמור') == may_save,
              f'the recorder to show {wanted}')

    def expect_no_recorder(self):
        until(lambda: not self.reader.window(RECORDER), 'the recorder to close')


def status(stage, state):
    """The menu's information line."""
    told = subprocess.run([str(stage.agent_path), '--version'], capture_output=True, text=True, check=True).stdout
    return f'גרסה {told.split()[1]} · {state}'


def usual_states(stage):
    """Of the menu's items, whether each is enabled and checked. The permission's item is not shown."""
    return {FIX + 'F2': (True, False), CHANGE_KEY: (True, False), SWITCH_LAYOUT: (True, True), LOGIN_ITEM: (True, True),
            COMPATIBILITY: (True, False), status(stage, READY): (False, False), QUIT: (True, False)}


class StandIn:
    """A program by that name that only notes with which arguments it was run."""

    def __init__(self, stage, name):
        folder = stage.session.folder / 'bin'
        folder.mkdir()
        self.notes = folder / 'notes'
        program = folder / name
        program.write_text(f'#!/bin/sh\necho "$@" >> "{self.notes}"\n', encoding='utf-8')
        program.chmod(0o755)
        os.environ['PATH'] = f'{folder}:{os.environ["PATH"]}'

    def runs(self):
        return self.notes.read_text(encoding='utf-8').splitlines() if self.notes.exists() else []


def registrations(stage):
    return [line.partition(' hotkey: ')[2] for line in stage.session.log().splitlines() if ' hotkey: ' in line]


def select_in_mousepad(stage, text='akuo'):
    stage.open('mousepad', text)
    stage.select_all()


@scene
def the_menu_reads_to_the_letter(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.panel.expect_item()
    assert user.panel.item('Title') == 'Lexwend'
    assert user.panel.item('ToolTip')[2:] == ('Lexwend', status(stage, READY)), user.panel.item('ToolTip')
    user.panel.expect_drawn_icon()

    items = user.open_menu()
    titles = [FIX + 'F2', CHANGE_KEY, None, SWITCH_LAYOUT, LOGIN_ITEM, COMPATIBILITY, None, PERMISSION,
              status(stage, READY), None, QUIT]
    assert user.reader.menu_titles() == titles, user.reader.menu_titles()
    states = {title: (item.is_enabled, item.is_checked) for title, item in items.items() if item.is_shown}
    assert states == usual_states(stage), states
    user.close_menu()


@scene
def the_open_menu_stands_in_the_accessibility_tree(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.panel.expect_item()
    assert user.reader.open_menu_in_tree() is None, user.reader.open_menu_in_tree()
    user.open_menu()
    entries = user.reader.open_menu_in_tree()
    titles = [FIX + 'F2', CHANGE_KEY, SWITCH_LAYOUT, LOGIN_ITEM, COMPATIBILITY, PERMISSION, status(stage, READY), QUIT]
    assert entries == [('menu item', title) for title in titles], entries
    user.close_menu()
    assert user.reader.open_menu_in_tree() is None, user.reader.open_menu_in_tree()


@in_each_editor
def fixes_from_the_menu(stage, editor):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    stage.open(editor, 'akuo')
    stage.select_all()
    user.choose(FIX + 'F2')
    until(lambda: stage.field.text() == 'שלום', 'the fix')
    stage.expect_group(1)


@scene
def the_hot_key_is_changed_in_the_recorder(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.open_recorder()
    user.expect_recorder('F2', CURRENT_KEY, may_save=False)
    stage.keyboard.press('a')
    user.expect_recorder('A', PLAIN_KEY, may_save=False)
    stage.keyboard.press('Control+c')
    user.expect_recorder('Ctrl+C', RESERVED_KEY, may_save=False)
    for sentence in ('Ctrl+C', RESERVED_KEY):
        until(lambda s=sentence: user.reader.has_said(s), f'the screen reader to say {sentence}')
    stage.keyboard.press('Return')  # saves nothing that is not allowed
    stage.keyboard.press('Control+F5')
    user.expect_recorder('Ctrl+F5', VALID_KEY, may_save=True)
    stage.keyboard.press('Return')
    user.expect_no_recorder()
    assert registrations(stage) == ['register F2 ok=true', 'register Ctrl+F5 ok=true'], stage.session.log()
    assert FIX + 'Ctrl+F5' in user.open_menu()
    user.close_menu()

    select_in_mousepad(stage)
    stage.keyboard.press('F2')  # reaches the editor, which has no use for it
    stage.keyboard.press('Control+F5')
    until(lambda: stage.field.text() == 'שלום', 'the fix')
    assert stage.session.log().count('fix: front=') == 1, stage.session.log()

    assert stage.session.end(stage.agent) == 0
    stage.start_agent()
    until(lambda: registrations(stage)[-1] == 'register Ctrl+F5 ok=true' and len(registrations(stage)) == 3,
          'the new combination after a restart')


@scene
def escape_leaves_the_recorder_with_the_old_key(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.open_recorder()
    stage.keyboard.press('Control+F5')
    user.expect_recorder('Ctrl+F5', VALID_KEY, may_save=True)
    stage.keyboard.press('Escape')
    user.expect_no_recorder()
    assert registrations(stage) == ['register F2 ok=true', 'register F2 ok=true'], stage.session.log()
    assert FIX + 'F2' in user.open_menu()
    user.close_menu()
    select_in_mousepad(stage)
    stage.fix('שלום')


@scene
def a_taken_key_is_rolled_back_with_an_alert(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    stage.keyboard.take('F5', CONTROL_MASK)
    user.open_recorder()
    stage.keyboard.press('Control+F5')  # comes to the recorder, which holds the keyboard
    user.expect_recorder('Ctrl+F5', VALID_KEY, may_save=True)
    stage.keyboard.press('Return')
    until(lambda: user.reader.labels('Lexwend') == [TAKEN_KEY, TAKEN_KEY_WHY], 'the alert')
    assert user.reader.buttons('Lexwend') == ['אישור'], user.reader.buttons('Lexwend')
    assert registrations(stage) == ['register F2 ok=true', 'register Ctrl+F5 ok=false', 'register F2 ok=true']
    user.expect_keyboard_in('Lexwend')
    stage.keyboard.press('Return')
    until(lambda: not user.reader.window('Lexwend'), 'the alert to close')
    assert FIX + 'F2' in user.open_menu()
    user.close_menu()
    select_in_mousepad(stage)
    stage.fix('שלום')


@scene
def toggles_are_kept_over_a_restart(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.choose(SWITCH_LAYOUT)
    user.choose(COMPATIBILITY)
    assert not user.checked(SWITCH_LAYOUT) and user.checked(COMPATIBILITY)
    assert stage.session.end(stage.agent) == 0
    stage.start_agent()
    user.panel.expect_item()
    assert not user.checked(SWITCH_LAYOUT) and user.checked(COMPATIBILITY)

    select_in_mousepad(stage)
    stage.fix('שלום')
    assert 'compat=true' in stage.session.log() and 'clipboard: pasted 4 chars' in stage.session.log()
    assert stage.keyboard.group() == 0, 'the layout was switched'


@scene
def the_login_item_appears_at_the_first_start_and_obeys_the_menu(stage):
    entry = stage.session.home / '.config' / 'autostart' / 'org.lexwend.Lexwend.desktop'
    user = User(stage)
    user.panel.start()
    assert not entry.exists()
    stage.start_agent()
    until(entry.exists, 'the login item')
    assert f'\nExec="{stage.agent_path}"\n' in entry.read_text(encoding='utf-8'), entry.read_text(encoding='utf-8')
    user.choose(LOGIN_ITEM)
    until(lambda: not entry.exists(), 'the login item to go')
    assert not user.checked(LOGIN_ITEM)

    assert stage.session.end(stage.agent) == 0
    stage.start_agent()
    user.panel.expect_item()
    assert not user.checked(LOGIN_ITEM) and not entry.exists()  # who switched it off is not asked again
    user.choose(LOGIN_ITEM)
    until(entry.exists, 'the login item')
    assert user.checked(LOGIN_ITEM)


@scene
def quit_from_the_menu_ends_the_agent(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.choose(QUIT)
    until(lambda: stage.agent.poll() is not None, 'the agent to end')
    assert stage.agent.returncode == 0, stage.agent.returncode
    until(lambda: user.panel.items() == [], 'the item to leave the panel')


@scene
def a_panel_that_comes_late_gets_the_item(stage):
    user = User(stage)
    stage.start_agent()
    select_in_mousepad(stage)
    stage.fix('שלום')  # works without any panel
    user.panel.start()
    user.panel.expect_item()
    user.panel.expect_drawn_icon()
    assert FIX + 'F2' in user.open_menu()
    user.close_menu()


@scene
def a_panel_that_restarts_gets_the_item_again(stage):
    user = User(stage)
    user.panel.start()
    stage.start_agent()
    user.panel.expect_item()
    for _ in range(2):
        user.panel.end()
        user.panel.start()
        user.panel.expect_item()
    assert FIX + 'F2' in user.open_menu()
    user.close_menu()


@scene
def an_embedded_tray_shows_the_icon_and_opens_the_menu(stage):
    user = User(stage)
    tray, screen = Tray(stage.session), Screen(stage.session)
    tray.start()
    stage.start_agent()
    for _ in range(2):
        screen.click_icon()
        user.reader.hear_menu()
        stage.keyboard.press('Down')
        until(user.reader.focused_item, 'an item of the menu to be highlighted')
        assert user.reader.menu_titles()[0] == FIX + 'F2', user.reader.menu_titles()
        user.close_menu()
        tray.end()
        tray.start()


def expect_legible_icon(session):
    """White on a field of its own, on a dark tray and then on a light one, where it is left; returns its pixels there."""
    tray, screen = Tray(session), Screen(session)

    def usual(background):
        # All of it in one look: a tray that is being set up shows other backgrounds first.
        pixels = screen.icon_pixels()
        corners = (pixels[0], pixels[-1])
        near = all(abs(corner - background) < 40 for corner in corners)
        field = sum(80 < pixel < 140 for pixel in pixels)
        return pixels if near and max(pixels) > 220 and field > len(pixels) / 5 else None

    tray.start('#202020')
    until(lambda: usual(0x20), 'the icon on a dark tray')
    tray.end()
    tray.start('#f0f0f0')
    return until(lambda: usual(0xf0), 'the icon on a light tray')


@scene
def the_icon_is_legible_on_a_dark_tray_and_on_a_light_one(stage):
    screen = Screen(stage.session)
    stage.start_agent()
    icon = expect_legible_icon(stage.session)
    place = screen.icon()
    stage.keyboard.press('F2')  # nothing is selected
    until(lambda: screen.pixels(place) != icon, 'the cross to be shown')
    until(lambda: screen.pixels(place) == icon, 'the usual icon to come back')
    assert 'fix: failed' in stage.session.log(), stage.session.log()


@scene
def a_dense_display_shows_windows_twice_as_large_and_the_icon_as_sharp(stage):
    os.environ['QT_SCALE_FACTOR'] = '2'
    user = User(stage)
    stage.start_agent()
    expect_legible_icon(stage.session)
    user.panel.start()
    user.panel.expect_item()
    user.panel.expect_drawn_icon()
    sides = [width for width, _, _ in user.panel.item('IconPixmap')]
    assert sides == [16, 22, 24, 32, 48, 64], sides  # pixels of the screen
    user.open_recorder()
    user.expect_recorder('F2', CURRENT_KEY, may_save=False)
    Screen(stage.session).window('the recorder', (800, 800), (420, 420))


@scene
def a_desktop_panel_shows_the_item_and_no_second_icon(stage):
    user = User(stage)
    stage.start_agent()
    DesktopPanel(stage.session)
    user.panel.expect_item()
    screen = Screen(stage.session)
    until(lambda: not [w for w in screen.windows() if w[2] < 100], 'no icon in an XEmbed tray as well')
    assert FIX + 'F2' in user.open_menu()
    user.close_menu()


@scene
def a_desktop_panel_draws_the_menu_itself_at_the_second_button_of_the_mouse(stage):
    user = User(stage)
    stage.start_agent()
    panel = DesktopPanel(stage.session)
    user.panel.expect_item()
    items = panel.draw_menu_of_item(user.reader, QUIT)
    states = {title: (item.is_enabled, item.is_checked) for title, (item, _) in items.items()}
    assert states == usual_states(stage), states
    stage.keyboard.click(*items[SWITCH_LAYOUT][1])
    until(lambda: user.panel.menu_property(4, 'toggle-state') == 0, 'the check mark to go')
    panel.click_item(panel.LEFT)
    user.reader.hear_menu()  # the agent's own
    assert not user.reader.menu_items()[SWITCH_LAYOUT].is_checked
    user.close_menu()
    assert not panel.draw_menu_of_item(user.reader, QUIT)[SWITCH_LAYOUT][0].is_checked


@scene
def an_interrupt_ends_the_agent_like_a_request(stage):
    for ending in (signal.SIGTERM, signal.SIGINT):
        stage.start_agent()
        stage.agent.send_signal(ending)
        assert stage.agent.wait(10) == 0, f'the agent ended with {stage.agent.returncode} by {ending.name}'


@scene
def a_session_of_another_kind_is_told_in_one_sentence(stage):
    notifications = start_ready(stage.session, 'notification_server.py')
    os.environ.update(WAYLAND_DISPLAY='wayland-of-nobody', XDG_SESSION_TYPE='wayland')
    stage.start_agent()
    assert stage.session.end(stage.agent) == 0
    said = stage.agent.stderr.read().decode()
    assert said.startswith('lexwend: this is a Wayland session: ') and said.count('\n') == 1, said
    assert stage.session.log().count(said[len('lexwend: '):]) == 1, stage.session.log()

    def refused():
        return subprocess.run([str(stage.agent_path)], capture_output=True, text=True, timeout=10, check=False)

    for count, display in enumerate(('', ':9999'), start=1):
        os.environ['DISPLAY'] = display
        answer = refused()
        assert answer.returncode == 1, answer
        assert answer.stderr.startswith('lexwend: this Wayland session has no X11 display'), answer.stderr
        assert answer.stderr.count('\n') == 1, answer.stderr
        assert stage.session.log().count(answer.stderr[len('lexwend: '):]) == count, stage.session.log()
    del os.environ['WAYLAND_DISPLAY'], os.environ['XDG_SESSION_TYPE']
    answer = refused()
    assert (answer.returncode, answer.stderr) == (1, 'lexwend: no X11 display can be opened; the agent needs one (DISPLAY)\n'), answer

    stage.session.end(notifications)
    shown = notifications.stdout.read().splitlines()
    from_right_to_left = '\u200f'
    assert shown == [from_right_to_left + sentence for sentence in (X11_WINDOWS_ONLY, NO_X11_DISPLAY, NO_X11_DISPLAY)], shown


@scene_on(server_options=('-extension', 'XTEST'))
def a_desktop_that_cannot_be_controlled_is_told(stage):
    """No key can be simulated there, by nobody, so the screen reader presses what is to be pressed."""
    settings = StandIn(stage, 'gnome-control-center')
    os.environ['XDG_CURRENT_DESKTOP'] = 'GNOME'
    user = User(stage)
    waiting = status(stage, WAITING)
    user.panel.start()
    stage.start_agent()
    user.panel.expect_item()
    assert user.panel.item('ToolTip')[3] == waiting, user.panel.item('ToolTip')
    user.panel.click_item()
    user.reader.hear_menu()
    assert user.reader.menu_items()[PERMISSION].is_shown, user.reader.menu_items()
    assert waiting in user.reader.menu_titles(), user.reader.menu_titles()
    user.reader.press_item(PERMISSION)
    until(lambda: settings.runs() == ['universal-access'], 'the accessibility settings')

    for button, runs in (('ביטול', 1), ('פתח הגדרות', 2)):
        user.reader.press_item(FIX + 'F2')
        until(lambda: user.reader.labels('Lexwend') == [NEEDS_PERMISSION, NEEDS_PERMISSION_WHY], 'the alert')
        assert user.reader.buttons('Lexwend') == ['פתח הגדרות', 'ביטול'], user.reader.buttons('Lexwend')
        assert 'fix: no permission' in stage.session.log(), stage.session.log()
        user.reader.press_button('Lexwend', button)
        until(lambda: not user.reader.window('Lexwend'), 'the alert to close')
        until(lambda n=runs: settings.runs() == ['universal-access'] * n, f'{runs} runs of the accessibility settings')
        until(user.reader.menu_is_closed, 'the menu to close')  # the alert closes it, such a press does not
        user.panel.click_item()
        user.reader.hear_menu()
    # Settings grant nothing on such a display.
    assert user.panel.item('ToolTip')[3] == waiting, user.panel.item('ToolTip')
    assert stage.agent.poll() is None, 'the agent has ended'


if __name__ == '__main__':
    run_scene(lambda: main(__doc__))
