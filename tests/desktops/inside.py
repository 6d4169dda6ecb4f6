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

from kwin_session import KWinKeyboard  # noqa: E402  (found by the line above)
from panel import PROPERTIES, Panel, ScreenReader  # noqa: E402  (found by the line above)
from session import AccessibilityBus, DesktopError, FocusedText, Keyboard, call, run_scene, until  # noqa: E402

PICTURES = Path('/pictures')
HOME = Path.home()
ENTRY = HOME / '.config' / 'autostart' / 'org.lexwend.Lexwend.desktop'
LOGIN_SECONDS = 90
FLASH_SECONDS = 8
MENU_PIXELS = 15000  # that the panel's menu changes at least
RECORDER = 'מקש קיצור'
FIX = 'תקן טקסט מסומן    F2'
TAKEN = 'הצירוף תפוס'
NOTIFICATIONS, NOTIFICATIONS_PATH = 'org.freedesktop.Notifications', '/org/freedesktop/Notifications'


class Desktop:
    """How one desktop is started, and where its things are."""

    def __init__(self, session, log_out, editor, is_ready, dark=None, light=None, name='', names_icon=False, colors_icons=False, draws_menu=False,
                 embeds_icon=False, has_tray=True, socket=None, prepare=None, is_settled=lambda: True, taken='Alt+F2', **environment):
        self.session = session
        self.log_out = log_out
        self.editor = editor
        self.is_ready = is_ready  # the desktop, for its user
        self.is_settled = is_settled  # asked whenever the screen is still after the login
        self.dark, self.light = dark, light  # commands that change the theme; a panel that is always dark has no light one
        self.names_icon = names_icon or colors_icons  # the agent, to the panel
        self.colors_icons = colors_icons  # the panel, by its own theme
        self.draws_menu = draws_menu  # the panel, on a click of either button
        self.embeds_icon = embeds_icon  # as a window of the agent's
        self.has_tray = has_tray
        self.socket = socket  # of the compositor KWin, which draws into a window of the display; nothing for a desktop of X11
        self.prepare = prepare  # the user's settings, before the login
        self.taken = taken  # a combination that the desktop holds
        self.environment = environment
        if name:  # as the screen of the login sets it
            self.environment['XDG_CURRENT_DESKTOP'] = name


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


def prepare_gnome():
    for command in (gsettings('org.gnome.desktop.input-sources', 'sources', "[('xkb', 'us'), ('xkb', 'il')]"),
                    gsettings('org.gnome.shell', 'enabled-extensions', "['ubuntu-appindicators@ubuntu.com']"),
                    gsettings('org.gnome.shell', 'welcome-dialog-last-shown-version', '99'),
                    gsettings('org.gnome.desktop.session', 'idle-delay', '0')):
        subprocess.run(command, check=True)


def prepare_plasma():
    write_file(HOME / '.config' / 'kxkbrc', '[Layout]\nUse=true\nLayoutList=us,il\n')
    write_file(HOME / '.config' / 'kscreenlockerrc', '[Daemon]\nAutolock=false\n')


def prepare_cinnamon():
    subprocess.run(gsettings('org.gnome.libgnomekbd.keyboard', 'layouts', "['us', 'il']"), check=True)


def prepare_i3():
    # A bar without a tray. Its users start programs from here.
    write_file(HOME / '.config' / 'i3' / 'config', f'# i3 config file (v4)\nfont pango:monospace 9\nexec --no-startup-id {HOME}/.local/bin/lexwend\n'
               f'bindsym Mod1+F2 exec true\nbar {{\n  tray_output none\n}}\n')


def has_window(window_class):
    return lambda: window_class in windows()


def windows():
    return subprocess.run(['wmctrl', '-lx'], capture_output=True, text=True, check=False).stdout


def has_name(name):
    return lambda: call('org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'NameHasOwner', '(s)', name)[0]


def overview_is_closed():
    """GNOME begins with its overview, over which no panel opens a menu. Closes it where it is open."""
    from gi.repository import GLib
    shell = ('org.gnome.Shell', '/org/gnome/Shell', PROPERTIES)
    if not call(*shell, 'Get', '(ss)', 'org.gnome.Shell', 'OverviewActive')[0]:
        return True
    call(*shell, 'Set', '(ssv)', 'org.gnome.Shell', 'OverviewActive', GLib.Variant('b', False))
    return False


def i3_is_ready():
    return 'Name: i3' in subprocess.run(['wmctrl', '-m'], capture_output=True, text=True, check=False).stdout


PLASMA_LOG_OUT = ['gdbus', 'call', '--session', '--dest', 'org.kde.ksmserver', '--object-path', '/KSMServer',
                  '--method', 'org.kde.KSMServerInterface.logout', '0', '0', '0']
PLASMA_THEMES = [['plasma-apply-colorscheme', name] for name in ('BreezeDark', 'BreezeLight')]

DESKTOPS = {
    'xfce': Desktop(['xfce4-session'], ['xfce4-session-logout', '--logout', '--fast'], ['mousepad'], has_window('xfce4-panel'),
                    xfce_theme('Greybird-dark', 'true'), xfce_theme('Adwaita', 'false'), name='XFCE', colors_icons=True),
    'mate': Desktop(['mate-session'], ['mate-session-save', '--force-logout'], ['pluma'], has_window('mate-panel'),
                    gsettings('org.mate.interface', 'gtk-theme', 'BlackMATE'), gsettings('org.mate.interface', 'gtk-theme', 'Menta'),
                    name='MATE'),
    'lxqt': Desktop(['startlxqt'], ['lxqt-leave', '--logout'], ['featherpad', '--standalone'], has_window('lxqt-panel'),
                    lxqt_theme('dark'), lxqt_theme('light'), name='LXQt', prepare=prepare_lxqt, XDG_CONFIG_DIRS='/etc:/etc/xdg:/usr/share'),
    'gnome': Desktop(['gnome-session', '--builtin', '--session=gnome'], ['gnome-session-quit', '--logout', '--no-prompt'],
                     ['gnome-text-editor', '--standalone'], has_name('org.gnome.Shell'),
                     gsettings('org.gnome.desktop.interface', 'color-scheme', 'prefer-dark'), name='GNOME', names_icon=True,
                     draws_menu=True, prepare=prepare_gnome, is_settled=overview_is_closed),
    'plasma': Desktop(['startplasma-x11'], PLASMA_LOG_OUT, ['kwrite'], has_window('plasmashell'), *PLASMA_THEMES, name='KDE', colors_icons=True,
                      prepare=prepare_plasma),
    'plasma-wayland': Desktop(['startplasma-wayland'], PLASMA_LOG_OUT, ['kwrite'], has_name('org.kde.plasmashell'), *PLASMA_THEMES, name='KDE',
                              colors_icons=True, draws_menu=True, prepare=prepare_plasma, socket='wayland-0'),
    'cinnamon': Desktop(['cinnamon-session', '--session', 'cinnamon'], ['cinnamon-session-quit', '--logout', '--no-prompt'], ['gedit', '--standalone'],
                        has_name('org.Cinnamon'), name='X-Cinnamon', embeds_icon=True, prepare=prepare_cinnamon),
    'i3': Desktop(['i3'], ['i3-msg', 'exit'], ['mousepad'], i3_is_ready, name='i3', has_tray=False, prepare=prepare_i3),
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
        os.environ.update(DISPLAY=':7', DBUS_SESSION_BUS_ADDRESS='unix:path=/run/user/1000/bus', XDG_SESSION_TYPE='wayland' if self.desktop.socket else 'x11',
                          XDG_SESSION_CLASS='user', XDG_SESSION_ID='c1', XDG_SEAT='seat0', LIBGL_ALWAYS_SOFTWARE='1', QT_LINUX_ACCESSIBILITY_ALWAYS_ON='1', XDG_CONFIG_DIRS='/etc/xdg', XDG_DATA_DIRS='/usr/local/share:/usr/share')
        os.environ.update(self.desktop.environment)
        if not self.desktop.socket:
            os.environ['GDK_BACKEND'] = 'x11'
        self.display = self.start(['Xvfb', ':7', '-screen', '0', '1280x800x24', '-nolisten', 'tcp', '-noreset'])
        until(Path('/tmp/.X11-unix/X7').exists, 'the display')
        subprocess.run(['setxkbmap', '-model', 'pc105', '-layout', 'us,il', '-option', 'grp:alt_shift_toggle'], check=True)
        self.start(['dbus-daemon', '--session', '--nofork', f'--address={os.environ["DBUS_SESSION_BUS_ADDRESS"]}'])
        until(Path('/run/user/1000/bus').exists, 'the session bus')
        self.keyboard = KWinKeyboard(':7') if self.desktop.socket else Keyboard(':7')
        if self.desktop.prepare:
            self.desktop.prepare()
        self.session = self.start(self.desktop.session)
        self.home = HOME  # as the reader and the panel know a session
        until(self.desktop.is_ready, 'the desktop to be there', LOGIN_SECONDS)
        if self.desktop.socket:  # for the programs that are started from here on
            os.environ['WAYLAND_DISPLAY'] = self.desktop.socket

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
    entry = HOME / '.local' / 'share' / 'applications' / 'org.lexwend.Lexwend.desktop'
    entry.write_text(entry.read_text(encoding='utf-8').replace(str(prefix), f'{HOME}/.local'), encoding='utf-8')
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
        until(lambda: self.screen.still_look() and self.login.desktop.is_settled(), 'the desktop to be settled', LOGIN_SECONDS)
        self.says('the login starts the agent')

    def one_icon_is_in_the_panel(self):
        if not self.login.desktop.embeds_icon:
            until(lambda: len(self.panel.items()) == 1, 'one item in the panel')
            wanted = 'org.lexwend.Lexwend-symbolic' if self.login.desktop.names_icon else ''
            assert self.panel.item('IconName') == wanted, self.panel.item('IconName')
        self.place = self.find_icon()
        self.login.picture('icon')
        self.says(f'one icon, at {self.place}')

    def find_icon(self):
        """The icon's place: what changes in the panel while the cross is shown after a press with nothing selected, and
        changes back. A clock that changes meanwhile is no icon."""
        def found():
            before = self.screen.still_look()
            failures = self.login.log().count('fix: failed')
            places = set()

            def gone():
                place = self.screen.small_change(before)
                if place:
                    places.add(place)
                return self.login.log().count('fix: failed') > failures and places and not place and not self.screen.changed_pixels(before)
            self.keyboard.press('F2')
            try:
                until(gone, 'the cross to come and go', FLASH_SECONDS)
            except DesktopError:
                return None
            return max(places, key=lambda place: place[2] * place[3])  # some panels let it grow
        return until(found, 'the cross on the icon', 60)

    def click_icon(self, button=1):
        x, y, width, height = self.place
        self.keyboard.click(x + width // 2, y + height // 2, button)

    def the_icon_is_legible_while_the_theme_changes(self):
        self.place = self.find_icon()  # others may have come beside it
        for name, command in (('dark', self.login.desktop.dark), ('light', self.login.desktop.light)):
            if not command:
                continue
            subprocess.run(command, check=True)
            self.keyboard.point(640, 400)  # away from the panel
            until(lambda n=name: self._looks(n == 'dark'), f'an icon that is legible on the {name} panel')
            self.login.picture(f'theme-{name}')
        self.says('the icon is legible while the theme changes')

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
        desktop = self.login.desktop
        for button, name, panel_draws in ((1, 'menu-left', desktop.draws_menu), (3, 'menu-right', not desktop.embeds_icon)):
            (self.open_menu_of_panel if panel_draws else self.open_own_menu)(button, name)
        self.says('both buttons open the menu')

    def open_own_menu(self, button, picture):
        self.click_icon(button)
        self.reader.hear_menu()
        if self.login.desktop.embeds_icon:
            # The click holds the keyboard in the panel until the pointer comes to the menu.
            self.keyboard.point(*self.reader.middle_of_item(FIX))
        else:
            self.keyboard.press('Down')
        until(self.reader.focused_item, 'an item of the menu to be highlighted')
        assert self.reader.menu_titles()[0] == FIX, self.reader.menu_titles()
        self.screen.still_look()  # some come in gently
        self.login.picture(picture)
        self.keyboard.press('Escape')
        until(self.reader.menu_is_closed, 'the menu to close')

    def open_menu_of_panel(self, button, picture):
        before = self.screen.still_look()
        self.click_icon(button)
        until(lambda: self.screen.changed_pixels(before) > MENU_PIXELS, 'the menu of the panel')
        opened = self.screen.still_look()
        assert not self.reader.open_menu_in_tree(), 'the agent has opened a menu of its own'
        self.login.picture(picture)
        self.keyboard.press('Escape')
        until(lambda: self.screen.changed_pixels(opened) > MENU_PIXELS, 'the menu of the panel to close')

    def a_notification_says_that_the_agent_runs(self):
        def shown():
            return call(NOTIFICATIONS, NOTIFICATIONS_PATH, PROPERTIES, 'Get', '(ss)', 'org.dunstproject.cmd0', 'displayedLength')[0]
        until(lambda: shown() == 1, 'the notification')
        self.login.picture('notification')
        call(NOTIFICATIONS, NOTIFICATIONS_PATH, 'org.dunstproject.cmd0', 'NotificationCloseAll')
        history = call(NOTIFICATIONS, NOTIFICATIONS_PATH, 'org.dunstproject.cmd0', 'NotificationListHistory')[0]
        assert 'F2' in history[0]['body'] and history[0]['body'].startswith('\u200f'), history
        self.says('without a tray a notification says that the agent runs')

    def the_recorder_gets_a_combination_of_the_desktop(self):
        subprocess.run([str(self.program), '--settings'], check=True)
        until(lambda: self.reader.is_active(RECORDER), 'the recorder to have the keyboard')
        self.keyboard.press(self.login.desktop.taken)
        until(lambda: self.login.desktop.taken in self.reader.labels(RECORDER), 'the combination of the desktop in the recorder')
        self.screen.still_look()
        self.login.picture('recorder')
        self.keyboard.press('Return')
        until(lambda: TAKEN in self.reader.labels('Lexwend'), 'the alert')
        until(lambda: self.reader.is_active('Lexwend'), 'the alert to have the keyboard')
        self.screen.still_look()
        self.login.picture('alert')
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

        def highlighted():  # a compositor gives it the keyboard a moment later
            self.keyboard.press('Down')
            return self.reader.focused_item()
        until(highlighted, 'an item of the menu to be highlighted')
        self.login.picture('menu-by-command')
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
        if login.desktop.has_tray:
            scenes.one_icon_is_in_the_panel()
            scenes.both_buttons_open_the_menu()
            # Before there was a window: the desktop of LXQt selects one of its icons when the last window closes.
            if login.desktop.dark:
                scenes.the_icon_is_legible_while_the_theme_changes()
        else:
            scenes.a_notification_says_that_the_agent_runs()
        scenes.the_recorder_gets_a_combination_of_the_desktop()
        scenes.a_fix_goes_both_ways_in_the_editor_of_the_desktop()
        scenes.commands_reach_the_agent()
        scenes.the_log_out_ends_the_agent()
    except BaseException:
        if login.display.poll() is None:
            login.picture('failure')
        print(login.log(), file=sys.stderr)
        raise


if __name__ == '__main__':
    run_scene(main)
