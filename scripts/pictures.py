#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Makes the pictures of the documents anew, with the real agent on private desktops.

usage: scripts/pictures.py AGENT [--into FOLDER]

Every picture is taken in a state that was seen to be reached: the texts are read through the accessibility interface,
the icons are compared with the usual one, and the pixels that are kept are those that stood still. Anything else ends
the run with one sentence and a non-zero exit. Started by root it continues as nobody, because editors warn of root.

Everything is drawn at twice its size, with the window frames of Xfce. The documents name half of a picture's width, and the script
writes it there. The animation shows the same editor while the text is typed and fixed.

Light is the toolkit's own palette; dark is a dark color scheme of KDE's settings, which the toolkit follows, a dark
panel, and GTK's switch for dark themes.
"""
import argparse
import ctypes
import os
import re
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / 'tests' / 'desktop'))
from first_fix import GARBLED, MEANT  # noqa: E402
from session import DesktopError, FocusedText, Session, run_scene, until  # noqa: E402
from tray import Screen, Tray  # noqa: E402

NOBODY = '65534'
CAPS_LOCK_MASK = 2
SCALE = 2
SCREEN = (900 * SCALE, 600 * SCALE)
MARGIN = 8 * SCALE  # around an icon, in pixels
LONG, SHORT = 150, 12  # how long a frame of the animation stays, in hundredths of a second

PANEL = """rounded = 0
border_width = 0
background_color = {color} 100
border_color = {color} 100
panel_items = FS
panel_position = top center horizontal
panel_size = 100% 72
panel_background_id = 1
systray_background_id = 1
systray_padding = 32 8 16
"""

# The line of the menu that tells the agent's state.
TRUSTED = ' · פריסה מהמערכת · פעיל'
UNTRUSTED = ' · ממתין לאישור נגישות'

# KDE's settings name the colors by the part of a window that they are for.
DARK_COLORS = {
    'Window': ('42,46,50', '252,252,252'),
    'View': ('27,30,32', '252,252,252'),
    'Button': ('49,54,59', '252,252,252'),
    'Selection': ('61,174,233', '252,252,252'),
    'Tooltip': ('49,54,59', '252,252,252'),
}

EDITOR_SETTINGS = """[org/xfce/mousepad/preferences/view]
use-default-monospace-font=false
font-name='DejaVu Sans 20'

[org/xfce/mousepad/preferences/window]
path-in-title=false

[org/xfce/mousepad/state/window]
width=uint32 440
height=uint32 120
"""

FRAMES = '''<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfwm4" version="1.0">
  <property name="general" type="empty">
    <property name="theme" type="string" value="Default-xhdpi"/>
    <property name="title_font" type="string" value="DejaVu Sans Bold 18"/>
    <property name="use_compositing" type="bool" value="false"/>
    <property name="workspace_count" type="int" value="1"/>
  </property>
</channel>
'''

GTK_SETTINGS = """[Settings]
gtk-cursor-blink=0
gtk-application-prefer-dark-theme={dark}
"""


class Image(ctypes.Structure):
    """The head of an XImage."""
    _fields_ = [('width', ctypes.c_int), ('height', ctypes.c_int), ('xoffset', ctypes.c_int), ('format', ctypes.c_int),
                ('data', ctypes.c_void_p), ('byte_order', ctypes.c_int), ('bitmap_unit', ctypes.c_int),
                ('bitmap_bit_order', ctypes.c_int), ('bitmap_pad', ctypes.c_int), ('depth', ctypes.c_int),
                ('bytes_per_line', ctypes.c_int)]


@dataclass(frozen=True)
class Look:
    name: str
    is_dark: bool
    panel: str


LOOKS = {look.name: look for look in (Look('light', False, '#f0f0f0'), Look('dark', True, '#202020'))}


@dataclass(frozen=True)
class Region:
    x: int
    y: int
    width: int
    height: int

    def united(self, other):
        left, top = min(self.x, other.x), min(self.y, other.y)
        right = max(self.x + self.width, other.x + other.width)
        bottom = max(self.y + self.height, other.y + other.height)
        return Region(left, top, right - left, bottom - top)


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding='utf-8')


class Studio:
    """A private desktop in one look, with an agent, a keyboard and a camera."""

    def __init__(self, session, look, agent, folder):
        self.session = session
        self.keyboard = session.keyboard
        self.look = look
        self.folder = folder
        self._set_up()
        # The panel first: an agent that starts without one says in a notification that it runs.
        Tray(session).start(look.panel, PANEL)
        until(lambda: self.pixels(Region(0, 0, 1, 1)) == bytes.fromhex(look.panel[1:]), 'the panel to be drawn')
        self.agent = session.start_agent(agent)
        self.screen = Screen(session)
        until(self._icon_is_legible, 'an icon that is legible on its panel')

    def _set_up(self):
        config = self.session.home / '.config'
        write(config / 'gtk-3.0' / 'settings.ini', GTK_SETTINGS.format(dark=int(self.look.is_dark)))
        write(config / 'glib-2.0' / 'settings' / 'keyfile', EDITOR_SETTINGS)
        write(config / 'xfce4' / 'xfconf' / 'xfce-perchannel-xml' / 'xfwm4.xml', FRAMES)
        if self.look.is_dark:
            write(config / 'kdeglobals', ''.join(
                f'[Colors:{part}]\nBackgroundNormal={back}\nForegroundNormal={front}\nForegroundInactive=161,169,177\n\n'
                for part, (back, front) in DARK_COLORS.items()))
            os.environ.update(XDG_CURRENT_DESKTOP='KDE', KDE_FULL_SESSION='true', KDE_SESSION_VERSION='5')
        # The frames have a size of their own.
        self.session.start(['xfwm4'], env=dict(os.environ, GDK_SCALE='1'))
        until(self.session.window_manager_runs, 'the window manager')
        os.environ.update(GDK_SCALE=str(SCALE), QT_SCALE_FACTOR=str(SCALE))
        subprocess.run(['gdbus', 'call', '--session', '--dest', 'org.a11y.Bus', '--object-path', '/org/a11y/bus', '--method',
                        'org.freedesktop.DBus.Properties.Set', 'org.a11y.Status', 'IsEnabled', '<true>'],
                       check=True, capture_output=True)

    def _icon_is_legible(self):
        x, y, _, _ = self.screen.icon()
        if self.pixels(Region(x, y, 1, 1)) != bytes.fromhex(self.look.panel[1:]):
            return False  # not yet drawn on this panel
        pixels = self.screen.icon_pixels()
        field = sum(80 < pixel < 140 for pixel in pixels)
        return max(pixels) > 220 and field > len(pixels) / 5

    def texts(self):
        """Every name in the agent's windows that can be seen."""
        import gi
        gi.require_version('Atspi', '2.0')
        from gi.repository import Atspi, GLib
        found = []

        def walk(node):
            if node.get_state_set().contains(Atspi.StateType.SHOWING):
                found.append((node.get_name() or '').replace('\n', ' '))
            for i in range(node.get_child_count()):
                child = node.get_child_at_index(i)
                if child:
                    walk(child)

        try:
            desktop = Atspi.get_desktop(0)
            for i in range(desktop.get_child_count()):
                application = desktop.get_child_at_index(i)
                if application and application.get_process_id() == self.agent.pid:
                    walk(application)
        except GLib.Error:
            pass  # a window that goes while it is looked at
        return found

    def wait_for_texts(self, *wanted):
        def shown():
            joined = '\n'.join(self.texts())
            return all(text in joined for text in wanted)
        try:
            until(shown, f'these texts to be seen: {wanted}')
        except DesktopError as error:
            raise DesktopError(f'{error}; seen are {self.texts()}') from None

    def call_item(self, interface, method, kinds, *arguments):
        """Calls the agent's object for panels, which is there without a panel as well."""
        from gi.repository import Gio, GLib
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)

        def call(name, path, interface, method, kinds, *arguments):
            return bus.call_sync(name, path, interface, method, GLib.Variant(kinds, arguments), None, Gio.DBusCallFlags.NONE,
                                 -1, None).unpack()

        dbus = ('org.freedesktop.DBus', '/', 'org.freedesktop.DBus')
        for name in call(*dbus, 'ListNames', '()')[0]:
            try:
                if call(*dbus, 'GetConnectionUnixProcessID', '(s)', name)[0] == self.agent.pid:
                    return call(name, '/StatusNotifierItem', interface, method, kinds, *arguments)
            except GLib.Error:
                pass  # the agent's other connections have no such object, and others may have gone
        raise DesktopError('the agent has no object for panels')

    def state(self):
        """The menu's information line. Menus are not in the tree of accessible windows; the tool tip shows the same."""
        tool_tip = self.call_item('org.freedesktop.DBus.Properties', 'Get', '(ss)', 'org.kde.StatusNotifierItem', 'ToolTip')[0]
        return tool_tip[3]

    def pixels(self, region):
        """Straight from the server, because the icon shows an outcome for less than a second."""
        x11, display = self.keyboard.x11, self.keyboard.display
        x11.XGetImage.restype = ctypes.POINTER(Image)
        x11.XDefaultRootWindow.restype = ctypes.c_ulong
        root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
        all_planes, z_pixmap = ctypes.c_ulong(0xffffffff), 2
        image = x11.XGetImage(display, root, region.x, region.y, region.width, region.height, all_planes, z_pixmap)
        assert image, f'{region} is not wholly on the screen'
        size = image.contents.bytes_per_line * region.height
        assert size == 4 * region.width * region.height, 'the screen has another depth'
        data = ctypes.string_at(image.contents.data, size)  # blue, green, red, nothing
        x11.XDestroyImage(image)
        result = bytearray(3 * region.width * region.height)
        result[0::3], result[1::3], result[2::3] = data[2::4], data[1::4], data[0::4]
        return bytes(result)

    def settled(self, region, unlike=None):
        """The pixels there as soon as two pictures in a row are the same, and not the ones given."""
        last = [None]

        def same_again():
            pixels, last[0] = self.pixels(region), last[0]
            stands_still = pixels == last[0] and pixels != unlike
            last[0] = pixels
            return stands_still

        until(same_again, 'a picture that stands still and shows something new' if unlike else 'a picture that stands still')
        assert len(last[0]) == region.width * region.height * 3, f'{region} is not wholly on the screen'
        return last[0]

    def keep(self, name, region, pixels):
        path = self.folder / f'{name}-{self.look.name}.png'
        subprocess.run(['convert', '-size', f'{region.width}x{region.height}', '-depth', '8', 'rgb:-', '+dither', '-colors', '256',
                        '-strip', '-define', 'png:compression-level=9', '-define', 'png:exclude-chunks=date,time', str(path)],
                       input=pixels, check=True)

    def take(self, name, region, unlike=None):
        pixels = self.settled(region, unlike)
        self.keep(name, region, pixels)
        return pixels

    def framed(self):
        """The active window's region with its frame."""
        active = subprocess.run(['xdotool', 'getactivewindow'], capture_output=True, text=True, check=True).stdout.strip()
        found = subprocess.run(['xprop', '-id', active, '-notype', '_NET_FRAME_EXTENTS'], capture_output=True, text=True,
                               check=True).stdout
        left, right, top, bottom = (int(part) for part in found.split('=')[1].split(','))
        values = dict(line.strip().split(':', 1) for line in subprocess.run(
            ['xwininfo', '-id', active], capture_output=True, text=True, check=True).stdout.splitlines() if ': ' in line)
        x, y, width, height = (int(values[name]) for name in
                               ('Absolute upper-left X', 'Absolute upper-left Y', 'Width', 'Height'))
        return Region(x - left, y - top, width + left + right, height + top + bottom)

    def icon_region(self):
        # The panel's edges are of no interest, its color is.
        icon = Region(*self.screen.icon())
        return Region(icon.x - MARGIN, icon.y - 2, icon.width + 2 * MARGIN, icon.height + 4)


def take_fix(studio):
    """An editor before and after, and the check mark."""
    environment = dict(os.environ, GSETTINGS_BACKEND='keyfile')
    document = studio.session.folder / 'letter.txt'
    document.write_text('', encoding='utf-8')
    studio.session.start_in_front(['mousepad', '--disable-server', str(document)], env=environment)
    field = FocusedText('mousepad')
    until(lambda: field.text() == '', 'the empty editor')
    window = studio.framed()
    icon = studio.icon_region()
    usual = studio.take('icon', icon)
    for count, letter in enumerate(GARBLED, start=1):
        studio.keyboard.press({' ': 'space'}.get(letter, letter))
        until(lambda: field.text() == GARBLED[:count], 'the letter to be typed')
        studio.take(f'typed-{count:02}', window)
    studio.keyboard.press('Control+a')
    until(lambda: field.selection_length() == len(GARBLED), 'the text to be selected')

    before = studio.take('fix-before', window)

    studio.keyboard.press('F2')
    check_mark = studio.settled(icon, unlike=usual)
    assert 'fix: success' in studio.session.log(), studio.session.log()
    studio.keep('icon-check', icon, check_mark)
    until(lambda: field.text() == MEANT, 'the editor to hold the text that was meant')
    studio.take('fix-after', window, unlike=before)
    until(lambda: studio.pixels(icon) == usual, 'the usual icon to come back')

    studio.keyboard.press('Escape')  # nothing is selected any more
    until(lambda: field.selection_length() == 0, 'no text to be selected')
    studio.keyboard.press('F2')
    cross = studio.settled(icon, unlike=usual)
    assert 'fix: failed noSelection' in studio.session.log(), studio.session.log()
    assert cross != check_mark, 'the cross looks like the check mark'
    studio.keep('icon-cross', icon, cross)


def open_menu(studio):
    """Opens it below the icon, where no item lies under the mouse, and returns its geometry."""
    x, y, width, height = studio.screen.icon()
    subprocess.run(['xdotool', 'mousemove', str(x + width // 2), str(y + height)], check=True, capture_output=True)
    studio.call_item('org.kde.StatusNotifierItem', 'Activate', '(ii)', x, y)
    return studio.screen.window('the menu', (200 * SCALE, 500 * SCALE), (120 * SCALE, 400 * SCALE))


def take_menu(studio, name, state):
    """Leaves the menu open and returns its geometry."""
    until(lambda: studio.state().endswith(state), f'the state "{state}"')
    menu = open_menu(studio)
    studio.take(name, Region(*menu).united(Region(*studio.screen.icon())))
    return menu


def open_recorder(studio):
    """Chooses it in the menu and returns the geometry of its window."""
    menu = open_menu(studio)
    for key in ('Down', 'Down', 'Return'):
        studio.keyboard.press(key)
    studio.screen.gone(menu, 'the menu')
    recorder = studio.screen.window('the recorder', (400 * SCALE, 400 * SCALE), (210 * SCALE, 210 * SCALE))
    studio.screen.has_keyboard('the recorder', recorder[2:])
    return recorder


def take_interface(studio):
    """The menu, the recorder in its three states, and the alert about a combination that is taken."""
    keyboard, screen = studio.keyboard, studio.screen
    menu = take_menu(studio, 'menu', TRUSTED)
    keyboard.press('Escape')
    screen.gone(menu, 'the menu')

    recorder = open_recorder(studio)
    window = studio.framed()
    studio.wait_for_texts('F2', 'הצירוף הנוכחי.')
    last = studio.take('recorder-current', window)
    keyboard.press('Control+c')
    studio.wait_for_texts('Ctrl+C', 'שמור למערכת')
    last = studio.take('recorder-refused', window, unlike=last)
    keyboard.press('Control+Alt+Super+Shift+k')
    studio.wait_for_texts('Super+Ctrl+Alt+Shift+K', 'אפשר לשמור.')
    studio.take('recorder-accepted', window, unlike=last)
    keyboard.press('Escape')
    screen.gone(recorder, 'the recorder')

    # With Caps Lock locked: enough that nobody else gets the key, and F7 alone still arrives in the recorder.
    keyboard.take('F7', CAPS_LOCK_MASK)
    recorder = open_recorder(studio)
    keyboard.press('F7')
    studio.wait_for_texts('F7', 'אפשר לשמור.')
    keyboard.press('Return')
    screen.gone(recorder, 'the recorder')
    take_alert(studio, 'alert-taken', 'הצירוף תפוס')


def take_alert(studio, name, title):
    alert = studio.screen.window('the alert', (300 * SCALE, 700 * SCALE), (100 * SCALE, 300 * SCALE))
    studio.screen.has_keyboard('the alert', alert[2:])
    studio.wait_for_texts(title)
    studio.take(name, studio.framed())


def take_permission(studio):
    """What stands there while the agent may not look into other applications."""
    studio.take('icon-waiting', studio.icon_region())
    take_menu(studio, 'menu-permission', UNTRUSTED)
    menu = subprocess.run(['xdotool', 'search', '--onlyvisible', '--class', 'lexwend'], capture_output=True, text=True,
                          check=True).stdout.split()[-1]
    # No key can be typed here, so the menu is sent the events.
    for key in ('Down', 'Return'):
        subprocess.run(['xdotool', 'key', '--window', menu, key], check=True, capture_output=True)
    take_alert(studio, 'alert-permission', 'נדרש אישור נגישות')


# A display server that lets nobody type for another: there the agent has no permission.
SCENES = {'fix': (take_fix, ()), 'interface': (take_interface, ()), 'permission': (take_permission, ('-extension', 'XTEST'))}


def run_one(scene, look, agent, folder):
    take, server_options = SCENES[scene]
    size = f'{SCREEN[0]}x{SCREEN[1]}x24'
    ground = '-br' if LOOKS[look].is_dark else '-wr'
    with Session(layouts='us,il', size=size, window_manager=None, server_options=(ground, *server_options)) as session:
        take(Studio(session, LOOKS[look], agent, folder))


def drawn_key(look, name, back='none'):
    front, top = ('#f2f2f2', '#3a3f44') if look.is_dark else ('#202020', '#ffffff')
    width = 120 if len(name) < 4 else 240
    cap = ['-fill', top, '-stroke', '#808080', '-strokewidth', '2', '-draw', f'roundrectangle 18,10 {width - 20},68 10,10',
           '-stroke', 'none', '-fill', front, '-font', 'DejaVu-Sans-Bold', '-pointsize', '30', '-gravity', 'center',
           '-annotate', '+0+0', name]
    return ['-size', f'{width}x80', f'xc:{back}', *(cap if name else [])]


def join_animation(folder, look):
    """The editor, and below it the key that is pressed, on the color of a page: GIF knows no half transparent pixels."""
    page = '#0d1117' if look.is_dark else '#ffffff'

    def frame(picture, key, delay):
        return ['(', '-delay', str(delay), str(folder / f'{picture}-{look.name}.png'), '(', *drawn_key(look, key, page), ')',
                '-background', page, '-gravity', 'center', '-append', '+repage', ')']

    typed = [frame(f'typed-{count:02}', '', SHORT) for count in range(1, len(GARBLED))]
    last = f'typed-{len(GARBLED):02}'
    frames = [*typed, frame(last, '', LONG), frame('fix-before', 'Ctrl+A', LONG), frame('fix-before', 'F2', LONG // 2),
              frame('fix-after', 'F2', LONG // 2), frame('fix-after', '', 2 * LONG)]
    subprocess.run(['convert', '-dispose', 'none', *(part for parts in frames for part in parts), '-loop', '0', '+dither', '-colors', '64',
                    '-layers', 'optimize', '-strip', str(folder / f'animation-{look.name}.gif')], check=True)


def join_fix(folder, look):
    """Before, the key, after: one below the other on nothing, so that it stands on any page."""
    key = drawn_key(look, 'F2')
    subprocess.run(['convert', str(folder / f'fix-before-{look.name}.png'), '(', *key, ')',
                    str(folder / f'fix-after-{look.name}.png'), '-background', 'none', '-gravity', 'center', '-append',
                    '+dither', '-colors', '256', '-strip', '-define', 'png:exclude-chunks=date,time',
                    str(folder / f'fix-{look.name}.png')], check=True)


def name_widths(folder):
    """Writes half of each picture's width into the documents that show it."""
    def with_width(found):
        width = subprocess.run(['identify', '-format', '%w\n', str(folder / found['name'])], capture_output=True, text=True,
                               check=True).stdout.split()[0]
        return f'<img width="{int(width) // SCALE}" src="{found["path"]}{found["name"]}"'

    for document in (ROOT / 'README.md', ROOT / 'README.he.md', ROOT / 'docs' / 'using.md', ROOT / 'docs' / 'he' / 'using.md'):
        text = document.read_text(encoding='utf-8')
        document.write_text(re.sub(r'<img (?:width="\d+" )?src="(?P<path>[^"]*pictures/)(?P<name>[^"]+)"', with_width, text),
                            encoding='utf-8')


def run_all(agent, into):
    work = Path(tempfile.mkdtemp(prefix='lexwend-pictures-'))
    try:
        copy = work / 'lexwend'
        shutil.copy(agent, copy)
        prefix = []
        if os.geteuid() == 0:
            prefix = ['setpriv', f'--reuid={NOBODY}', f'--regid={NOBODY}', '--clear-groups']
            for path in (work, copy):
                os.chown(path, int(NOBODY), int(NOBODY))
        for look in LOOKS.values():
            for scene in SCENES:
                print(f'pictures: {scene}, {look.name}', flush=True)
                done = subprocess.run([*prefix, sys.executable, '-B', __file__, str(copy), '--into', str(work), '--scene', scene,
                                       '--look', look.name], check=False)
                if done.returncode != 0:
                    raise DesktopError(f'the pictures of {scene} in the {look.name} look could not be taken')
            join_fix(work, look)
            join_animation(work, look)
        into.mkdir(parents=True, exist_ok=True)
        pictures = sorted(picture for picture in [*work.glob('*.png'), *work.glob('*.gif')]
                          if not picture.name.startswith(('fix-before', 'fix-after', 'typed-')))
        for picture in pictures:
            shutil.copyfile(picture, into / picture.name)
        name_widths(into)
    finally:
        shutil.rmtree(work)
    print(f'pictures: {len(pictures)} are in {into}')


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('agent', type=Path)
    parser.add_argument('--into', type=Path, default=ROOT / 'docs' / 'pictures')
    parser.add_argument('--scene', choices=SCENES, help=argparse.SUPPRESS)
    parser.add_argument('--look', choices=LOOKS, help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if arguments.scene:
        run_one(arguments.scene, arguments.look, arguments.agent, arguments.into)
    else:
        run_all(arguments.agent.resolve(), arguments.into)


if __name__ == '__main__':
    run_scene(main)
