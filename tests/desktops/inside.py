#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A whole session of a real desktop, from the login to the log-out, with the agent in it. Runs in the root of that desktop.

usage: inside.py DESKTOP PREFIX

Each step says what it has seen. Pictures of the screen go to /pictures, to be looked at.
"""
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

CHECKOUT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(CHECKOUT / 'tests' / 'desktop'))

from panel import Panel, ScreenReader  # noqa: E402  (found by the line above)
from session import AccessibilityBus, FocusedText, Keyboard, run_scene, until  # noqa: E402

PICTURES = Path('/pictures')
HOME = Path.home()
ENTRY = HOME / '.config' / 'autostart' / 'org.lexwend.Lexwend.desktop'
LOGIN_SECONDS = 90
RECORDER = 'מקש קיצור'
FIX = 'תקן טקסט מסומן    F2'
TAKEN = 'הצירוף תפוס'


class Desktop:
    """How one desktop is started, and where its things are."""

    def __init__(self, session, log_out, editor, panel_class, dark, light, taken='Alt+F2', colors_icons=True, prepare=None, **environment):
        self.session = session
        self.log_out = log_out
        self.editor = editor
        self.panel_class = panel_class
        self.dark, self.light = dark, light  # commands that change the theme
        self.colors_icons = colors_icons  # the panel, by its own theme
        self.taken = taken  # a combination that the desktop holds
        self.prepare = prepare  # the user's settings, before the login
        self.environment = environment


def gsettings(schema, key, value):
    return ['gsettings', 'set', schema, key, value]


def xfce_theme(name, is_dark):
    # The panel has a switch of its own.
    return ['sh', '-c', f'xfconf-query -c xsettings -p /Net/ThemeName -n -t string -s {name}'
            f' && xfconf-query -c xfce4-panel -p /panels/dark-mode -n -t bool -s {is_dark}']


def lxqt_theme(name):
    # The panel follows the file.
    return ['sh', '-c', f'mkdir -p ~/.config/lxqt && printf "[General]\\n__userfile__=true\\ntheme={name}\\nicon_theme=oxygen\\n"'
            f' > ~/.config/lxqt/lxqt.conf']


def write_file(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding='utf-8')


def prepare_lxqt():
    # Nobody answers the question whether to log out.
    write_file(HOME / '.config' / 'lxqt' / 'session.conf', '[General]\n__userfile__=true\nleave_confirmation=false\nwindow_manager=openbox\n')


DESKTOPS = {
    'xfce': Desktop(['xfce4-session'], ['xfce4-session-logout', '--logout', '--fast'], ['mousepad'], 'xfce4-panel', xfce_theme('Greybird-dark', 'true'),
                    xfce_theme('Adwaita', 'false')),
    'mate': Desktop(['mate-session'], ['mate-session-save', '--force-logout'], ['pluma'], 'mate-panel', gsettings('org.mate.interface', 'gtk-theme', 'BlackMATE'),
                    gsettings('org.mate.interface', 'gtk-theme', 'Menta'), colors_icons=False),
    'lxqt': Desktop(['startlxqt'], ['lxqt-leave', '--logout'], ['featherpad', '--standalone'], 'lxqt-panel', lxqt_theme('dark'), lxqt_theme('light'),
                    colors_icons=False, prepare=prepare_lxqt,
                    XDG_CONFIG_DIRS='/etc:/etc/xdg:/usr/share'),
}


class Login:
    """A display with the session of that desktop on it."""

    def __init__(self, name):
        self.name = name
        self.desktop = DESKTOPS[name]
        self.processes = []
        self.pictures = 0

    def start(self, command, **options):
        log = open(f'/tmp/{command[0]}.log', 'ab')
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def begin(self):
        os.environ.update(DISPLAY=':7', DBUS_SESSION_BUS_ADDRESS='unix:path=/run/user/1000/bus', XDG_SESSION_TYPE='x11',
                          XDG_SESSION_CLASS='user', XDG_SESSION_ID='c1', XDG_SEAT='seat0', GDK_BACKEND='x11',
                          LIBGL_ALWAYS_SOFTWARE='1', QT_LINUX_ACCESSIBILITY_ALWAYS_ON='1', XDG_CONFIG_DIRS='/etc/xdg', XDG_DATA_DIRS='/usr/local/share:/usr/share')
        os.environ.update(self.desktop.environment)
        if self.desktop.prepare:
            self.desktop.prepare()
        self.display = self.start(['Xvfb', ':7', '-screen', '0', '1280x800x24', '-nolisten', 'tcp', '-noreset'])
        until(Path('/tmp/.X11-unix/X7').exists, 'the display')
        subprocess.run(['setxkbmap', '-model', 'pc105', '-layout', 'us,il', '-option', 'grp:alt_shift_toggle'], check=True)
        self.start(['dbus-daemon', '--session', '--nofork', f'--address={os.environ["DBUS_SESSION_BUS_ADDRESS"]}'])
        until(Path('/run/user/1000/bus').exists, 'the session bus')
        self.keyboard = Keyboard(':7')
        self.session = self.start(self.desktop.session)
        self.home = HOME  # as the reader and the panel know a session
        until(lambda: self.desktop.panel_class in self.windows(), 'the panel of the desktop', LOGIN_SECONDS)

    def windows(self):
        return subprocess.run(['wmctrl', '-lx'], capture_output=True, text=True, check=False).stdout

    def picture(self, what):
        self.pictures += 1
        path = PICTURES / f'{self.pictures:02}-{what}.png'
        subprocess.run(['import', '-silent', '-window', 'root', str(path)], check=True)
        return path

    def log(self):
        path = HOME / 'Library' / 'Logs' / 'Lexwend.log'
        return path.read_text(encoding='utf-8') if path.exists() else ''

    def agent(self):
        """The process of the agent; nothing while none runs."""
        found = subprocess.run(['pgrep', '-x', '-r', 'R,S,D', 'lexwend'], capture_output=True, text=True, check=False).stdout.split()
        return int(found[0]) if found else None


def install(prefix):
    """What `cmake --install` has put into that folder, as it stands after an installation for this user."""
    shutil.copytree(prefix, HOME / '.local', dirs_exist_ok=True)
    (HOME / 'Library' / 'Logs').mkdir(parents=True)
    return HOME / '.local' / 'bin' / 'lexwend'


def write_entry(program):
    write_file(ENTRY, f'[Desktop Entry]\nType=Application\nName=Lexwend\nExec="{program}"\nTerminal=false\n')
    write_file(HOME / '.config' / 'lexwend' / 'settings', '[Settings]\ndidRegisterLoginItem=true\n')


class XImage(ctypes.Structure):
    """The head of an image of Xlib."""
    _fields_ = [('width', ctypes.c_int), ('height', ctypes.c_int), ('offset', ctypes.c_int), ('format', ctypes.c_int),
                ('data', ctypes.c_void_p), ('byte_order', ctypes.c_int), ('unit', ctypes.c_int), ('bit_order', ctypes.c_int),
                ('pad', ctypes.c_int), ('depth', ctypes.c_int), ('bytes_per_line', ctypes.c_int)]


class Screen:
    """The pixels of the screen, fast enough to see a sign that is shown for less than a second."""
    WIDTH, HEIGHT, BYTES = 1280, 800, 4
    SMALLEST, LARGEST = 6, 40  # sides of an icon
    STILL_SECONDS = 2

    def __init__(self, keyboard):
        self.x11, self.display = keyboard.x11, keyboard.display
        self.x11.XGetImage.restype = ctypes.POINTER(XImage)
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def look(self):
        """The rows of the screen."""
        all_planes, z_pixmap = ctypes.c_ulong(-1), 2
        image = self.x11.XGetImage(self.display, self.root, 0, 0, self.WIDTH, self.HEIGHT, all_planes, z_pixmap)
        line = image.contents.bytes_per_line
        data = ctypes.string_at(image.contents.data, line * self.HEIGHT)
        self.x11.XFree(ctypes.c_void_p(image.contents.data))
        self.x11.XFree(image)
        return [data[row * line:row * line + self.WIDTH * self.BYTES] for row in range(self.HEIGHT)]

    def still_look(self):
        """The rows of a screen that has not changed for some time: nothing of the session is still being drawn."""
        first = self.look()
        seen = time.monotonic()

        def still():
            nonlocal first, seen
            now = self.look()
            if now != first:
                first, seen = now, time.monotonic()
            return time.monotonic() - seen > self.STILL_SECONDS
        until(still, 'the screen to be still', LOGIN_SECONDS)
        return first

    def _changed(self, before):
        """The places that differ, as pairs of column and row."""
        now = self.look()
        return [(x, y) for y, (old, new) in enumerate(zip(before, now)) if old != new
                for x in range(self.WIDTH) if old[x * 4:x * 4 + 3] != new[x * 4:x * 4 + 3]]

    def changed_pixels(self, before):
        return len(self._changed(before))

    def small_change(self, before):
        """The rectangle that holds everything that differs, where it is as small as an icon; nothing otherwise."""
        changed = self._changed(before)
        if not changed:
            return None
        columns, rows = [x for x, _ in changed], [y for _, y in changed]
        place = (min(columns), min(rows), max(columns) - min(columns) + 1, max(rows) - min(rows) + 1)
        return place if all(self.SMALLEST <= side <= self.LARGEST for side in place[2:]) else None

    def _pixels(self, place):
        x, y, width, height = place
        rows = self.look()[y:y + height]
        return [row[4 * c:4 * c + 3] for row in rows for c in range(x, x + width)]

    def grays(self, place):
        return [sum(pixel) // 3 for pixel in self._pixels(place)]

    def colorfulness(self, place):
        """The largest difference of two channels of a pixel; none in a gray picture."""
        return max(max(pixel) - min(pixel) for pixel in self._pixels(place))


class Scenes:
    """What is done in the session, step by step."""

    def __init__(self, login, program):
        self.login = login
        self.program = program
        self.keyboard = login.keyboard
        self.screen = Screen(login.keyboard)

    def says(self, sentence):
        print(f'{self.login.name}: {sentence}', flush=True)

    def the_agent_starts_with_the_login(self):
        until(self.login.agent, 'the agent, which the login starts', LOGIN_SECONDS)
        until(lambda: 'hotkey: register F2 ok=true' in self.login.log(), 'the hot key to be registered')
        self.reader = ScreenReader(self.login)
        self.panel = Panel(self.login)
        self.says('the login starts the agent')

    def one_icon_is_in_the_panel(self):
        until(lambda: len(self.panel.items()) == 1, 'one item in the panel')
        wanted = 'org.lexwend.Lexwend-symbolic' if self.login.desktop.colors_icons else ''
        assert self.panel.item('IconName') == wanted, self.panel.item('IconName')
        self.place = self.find_icon()
        self.login.picture('icon')
        self.says(f'one icon, at {self.place}')

    def find_icon(self):
        """The icon's place: what changes in the panel while the cross is shown after a press with nothing selected, and
        changes back. A clock that changes meanwhile is no icon."""
        def found():
            before = self.screen.still_look()
            self.keyboard.press('F2')
            shown = until(lambda: self.screen.small_change(before), 'something to change in the panel')
            until(lambda: 'fix: failed' in self.login.log(), 'the fix to fail')
            until(lambda: self.screen.small_change(before) != shown, 'the cross to go')
            return shown if not self.screen.changed_pixels(before) else None
        return until(found, 'the cross on the icon', 60)

    def click_icon(self, button=1):
        x, y, width, height = self.place
        self.keyboard.click(x + width // 2, y + height // 2, button)

    def the_icon_is_legible_while_the_theme_changes(self):
        for name, command in (('dark', self.login.desktop.dark), ('light', self.login.desktop.light)):
            subprocess.run(command, check=True)
            self.keyboard.point(640, 400)  # away from the panel
            until(lambda n=name: self._looks(n == 'dark'), f'an icon that is legible on the {name} panel')
            self.login.picture(f'theme-{name}')
        self.says('the icon is legible with the dark and with the light theme')

    def _looks(self, dark):
        """Whether the panel is dark, or light, and the lightest and the darkest tenth of the icon's pixels differ."""
        x, y, width, height = self.place
        panel = self.screen.grays((x - 4, y + height // 2, 1, 2))  # beside the icon, which may move by a pixel
        levels = sorted(self.screen.grays(self.place))
        tenth = max(1, len(levels) // 10)
        is_legible = levels[-tenth] - levels[tenth] > 60
        # A panel that gives icons its own color shows the picture of the agent's only while its theme changes.
        is_settled = not self.login.desktop.colors_icons or self.screen.colorfulness(self.place) < 60
        return (max(panel) < 110 if dark else min(panel) > 150) and is_legible and is_settled

    def both_buttons_open_the_menu(self):
        self.click_icon()
        self.reader.hear_menu()
        self.keyboard.press('Down')
        until(self.reader.focused_item, 'an item of the menu to be highlighted')
        assert self.reader.menu_titles()[0] == FIX, self.reader.menu_titles()
        self.login.picture('menu-left')
        self.keyboard.press('Escape')
        until(self.reader.menu_is_closed, 'the menu to close')
        before = self.screen.look()
        self.click_icon(3)
        until(lambda: self.screen.changed_pixels(before) > 20000, 'the menu of the second button')
        self.login.picture('menu-right')
        self.keyboard.press('Escape')
        self.says('both buttons open the menu')

    def the_recorder_gets_a_combination_of_the_desktop(self):
        subprocess.run([str(self.program), '--settings'], check=True)
        until(lambda: self.reader.is_active(RECORDER), 'the recorder to have the keyboard')
        self.keyboard.press(self.login.desktop.taken)
        until(lambda: self.login.desktop.taken in self.reader.labels(RECORDER), 'the combination of the desktop in the recorder')
        self.login.picture('recorder')
        self.keyboard.press('Return')
        until(lambda: TAKEN in self.reader.labels('Lexwend'), 'the alert')
        self.login.picture('alert')
        until(lambda: self.reader.is_active('Lexwend'), 'the alert to have the keyboard')
        self.keyboard.press('Return')
        until(lambda: not self.reader.window('Lexwend'), 'the alert to close')
        self.says(f'the recorder gets {self.login.desktop.taken}, and the alert says that it is taken')

    def a_fix_goes_both_ways_in_the_editor_of_the_desktop(self):
        document = HOME / 'letter.txt'
        document.write_text('akuo', encoding='utf-8')
        editor = self.login.desktop.editor
        bus = AccessibilityBus()
        until(lambda: bus.hears_focus(self.login.agent()), 'the agent to listen to the focus')
        field = FocusedText(editor[0])
        program = self.login.start(editor + [str(document)])
        until(lambda: field.text() and field.text().strip() == 'akuo', 'the editor to show the text', LOGIN_SECONDS)
        for expected, group in (('שלום', 1), ('akuo', 0)):
            self.select_all(field)
            self.keyboard.press('F2')
            until(lambda e=expected: field.text().strip() == e, f'the text to be {expected}')
            until(lambda g=group: self.keyboard.group() == g, f'keyboard group {group}')
            self.login.picture(f'fix-{group}')
        program.send_signal(signal.SIGKILL)
        self.says('a fix goes both ways, and the layout follows')

    def select_all(self, field):
        def selected():
            self.keyboard.press('Control+Home')
            self.keyboard.press('Control+Shift+End')
            return field.selection_length() >= 4
        until(selected, 'the text to be selected')

    def commands_reach_the_agent(self):
        subprocess.run([str(self.program), '--menu'], check=True)
        self.reader.hear_menu()
        self.keyboard.press('Escape')
        until(self.reader.menu_is_closed, 'the menu to close')
        self.says('a command opens the menu')

    def the_log_out_ends_the_agent(self):
        assert self.login.agent(), 'the agent has ended before'
        self.login.start(self.login.desktop.log_out)
        until(lambda: self.login.session.poll() is not None, 'the session to end', LOGIN_SECONDS)
        # As the program that asks for the password does: the display is started anew.
        self.login.display.terminate()
        until(lambda: not self.login.agent(), 'the agent to end with the session')
        self.says('the log-out ends the agent')


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in DESKTOPS:
        print(__doc__.strip(), file=sys.stderr)
        sys.exit(2)
    program = install(Path(sys.argv[2]).resolve())
    # An entry of a copy that is gone stays off; the one of the installed copy starts it.
    write_entry(program)
    login = Login(sys.argv[1])
    login.begin()
    scenes = Scenes(login, program)
    try:
        scenes.the_agent_starts_with_the_login()
        scenes.one_icon_is_in_the_panel()
        scenes.both_buttons_open_the_menu()
        scenes.the_recorder_gets_a_combination_of_the_desktop()
        scenes.a_fix_goes_both_ways_in_the_editor_of_the_desktop()
        scenes.commands_reach_the_agent()
        scenes.the_icon_is_legible_while_the_theme_changes()
        scenes.the_log_out_ends_the_agent()
    except BaseException:
        if login.display.poll() is None:
            login.picture('failure')
        print(login.log(), file=sys.stderr)
        raise


if __name__ == '__main__':
    run_scene(main)
