#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The agent's interface as its user meets it, on a private desktop.

usage: agent_story.py AGENT SCENE [--pictures FOLDER]

SCENE is one of: tray (an XEmbed tray, the whole story), panel (a StatusNotifier panel), colors (the icon on a dark and on
a light tray, and what it shows after a fix), wayland (where the agent says what does not work). With --pictures it leaves pictures of the stations there.
"""
import argparse
import os
import signal
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / 'desktop'))
from session import Session, run_scene, until  # noqa: E402

# How often Down is pressed in the menu to reach an item that can be chosen.
CHANGE_KEY, SWITCH_LAYOUT, START_AT_LOGIN, COMPATIBILITY = 2, 3, 4, 5

TRAY = """rounded = 0
border_width = 0
background_color = {color} 100
border_color = {color} 100
panel_items = S
panel_size = 100% 30
panel_background_id = 1
systray_background_id = 1
systray_padding = 4 2 4
"""

# Holds the key F7 with Caps Lock locked: enough that nobody else gets it, and F7 alone still arrives elsewhere.
KEY_HOLDER = """import ctypes, signal
x11 = ctypes.CDLL('libX11.so.6')
x11.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x11.XOpenDisplay(None))
x11.XGrabKey(display, 73, 2, ctypes.c_ulong(x11.XDefaultRootWindow(display)), 0, 1, 1)
x11.XSync(display, 0)
print('held', flush=True)
signal.pause()
"""


class User:
    """Looks at the agent's windows and uses mouse and keyboard."""

    def __init__(self, session, pictures):
        self.session = session
        self.pictures = pictures
        self.keyboard = session.keyboard

    def picture(self, name):
        if self.pictures:
            self.session.screenshot(self.pictures / f'{name}.png')

    def windows(self):
        """The agent's visible windows as (x, y, width, height)."""
        def xdotool(*arguments):
            return subprocess.run(('xdotool',) + arguments, capture_output=True, text=True, check=False).stdout

        result = []
        for window in xdotool('search', '--onlyvisible', '--class', 'lexwend').split():
            values = dict(line.split('=') for line in xdotool('getwindowgeometry', '--shell', window).splitlines())
            if 'WIDTH' in values:
                result.append(tuple(int(values[name]) for name in ('X', 'Y', 'WIDTH', 'HEIGHT')))
        return result

    def window(self, what, width, height):
        """Waits for a window of such a size (lowest and highest) and returns its geometry."""
        return until(lambda: next((w for w in self.windows()
                                   if width[0] <= w[2] <= width[1] and height[0] <= w[3] <= height[1]), None), what)

    def gone(self, geometry, what):
        until(lambda: geometry not in self.windows(), f'{what} to go')

    def icon(self):
        return self.window('the icon in the tray', (16, 64), (16, 64))

    def icons_pixels(self):
        """The gray levels where the icon stands, row by row."""
        x, y, width, height = self.icon()
        return subprocess.run(['import', '-silent', '-window', 'root', '-crop', f'{width}x{height}+{x}+{y}', '-depth', '8',
                               'gray:-'], capture_output=True, check=True).stdout

    def icons_levels(self):
        """Darkest and lightest gray level where the icon stands."""
        pixels = self.icons_pixels()
        return min(pixels), max(pixels)

    def click(self, geometry):
        x, y, width, height = geometry
        subprocess.run(['xdotool', 'mousemove', str(x + width // 2), str(y + height // 2), 'click', '1'], check=True)

    def menu(self):
        self.click(self.icon())
        return self.window('the menu', (200, 500), (120, 400))

    def choose(self, item):
        """Opens the menu and chooses an item with the keyboard."""
        menu = self.menu()
        for _ in range(item):
            self.keyboard.press('Down')
        self.keyboard.press('Return')
        self.gone(menu, 'the menu')

    def has_keyboard(self, what, size):
        """Waits until a window of that size is the one that keys go to."""
        def active_size():
            text = subprocess.run(['xdotool', 'getactivewindow', 'getwindowgeometry', '--shell'], capture_output=True,
                                  text=True, check=False).stdout
            values = dict(line.split('=') for line in text.splitlines() if '=' in line)
            return (int(values.get('WIDTH', 0)), int(values.get('HEIGHT', 0)))
        until(lambda: active_size() == size, f'{what} to have the keyboard')

    def recorder(self):
        self.choose(CHANGE_KEY)
        recorder = self.window('the recorder', (400, 400), (210, 210))
        self.has_keyboard('the recorder', recorder[2:])
        return recorder


def settings():
    path = Path(os.environ['HOME']) / '.config' / 'lexwend' / 'settings'
    return path.read_text(encoding='utf-8') if path.exists() else ''


def start_tray(session, color, template=TRAY):
    config = session.folder / f'tint2rc{color}'
    config.write_text(template.format(color=color), encoding='utf-8')
    return session.start(['tint2', '-c', str(config)])


def tray_scene(agent_program, pictures):
    with Session(layouts='us,il', size='900x600x24') as session:
        agent = session.start_agent(agent_program)
        user = User(session, pictures)
        tray = start_tray(session, '#303030')
        user.icon()
        entry = session.home / '.config' / 'autostart' / 'org.lexwend.Lexwend.desktop'
        assert entry.exists(), 'the login item was not registered on the first run'

        menu = user.menu()
        user.picture('menu')
        user.keyboard.press('Escape')
        user.gone(menu, 'the menu')

        recorder = user.recorder()
        user.picture('recorder-current')
        user.keyboard.press('Shift+a')
        user.keyboard.press('Control+c')
        user.picture('recorder-refused')
        user.keyboard.press('Return')
        assert recorder in user.windows(), 'Return saved a combination that is not allowed'
        user.keyboard.press('F5')
        user.picture('recorder-accepted')
        user.keyboard.press('Return')
        user.gone(recorder, 'the recorder')
        until(lambda: 'hotkey: register F5 ok=true' in session.log(), 'the new hot key to be registered')
        assert 'hotKeyCode = integer 96\nhotKeyModifiers = integer 0\n' in settings(), settings()

        holder = session.start([sys.executable, '-c', KEY_HOLDER], stdout=subprocess.PIPE, text=True)
        assert holder.stdout.readline() == 'held\n'
        user.recorder()
        user.keyboard.press('F7')
        user.keyboard.press('Return')
        alert = user.window('the alert', (300, 700), (100, 300))
        user.has_keyboard('the alert', alert[2:])
        user.picture('alert-taken')
        user.keyboard.press('Return')
        user.gone(alert, 'the alert')
        session.end(holder)
        assert 'hotkey: register F7 ok=false' in session.log(), session.log()
        assert session.log().rstrip().endswith('hotkey: register F5 ok=true'), session.log()
        assert 'hotKeyCode = integer 96\n' in settings(), settings()

        recorder = user.recorder()
        user.keyboard.press('Escape')
        user.gone(recorder, 'the recorder')

        for item, key, expected in ((SWITCH_LAYOUT, 'switchLayoutAfterFix', ('false', 'true')),
                                    (COMPATIBILITY, 'compatMode', ('true', 'false'))):
            for value in expected:
                user.choose(item)
                until(lambda: f'{key} = boolean {value}' in settings(), f'{key} to become {value}')
        user.choose(START_AT_LOGIN)
        until(lambda: not entry.exists(), 'the login item to go')
        user.choose(START_AT_LOGIN)
        until(entry.exists, 'the login item to come back')

        before = session.log()
        second = session.start([str(agent_program)])
        assert second.wait(10) == 0, 'a second instance does not leave with status 0'
        assert session.log() == before, 'a second instance wrote to the log'

        session.end(tray)
        start_tray(session, '#303030')
        user.icon()
        menu = user.menu()
        user.keyboard.press('Up')
        user.keyboard.press('Return')
        assert agent.wait(10) == 0, 'Quit does not end the agent with status 0'

        agent = session.start_agent(agent_program)
        until(lambda: session.log().count('hotkey: register F5 ok=true') >= 4, 'the kept hot key to be registered')
        for ending in (signal.SIGTERM, signal.SIGINT):
            agent.send_signal(ending)
            assert agent.wait(10) == 0, f'the agent ended with {agent.returncode} by {ending.name}'
            agent = session.start_agent(agent_program)
            user.icon()


def panel_scene(agent_program, pictures):
    watcher = ['--dest', 'org.kde.StatusNotifierWatcher', '--object-path', '/StatusNotifierWatcher']

    def items():
        answer = subprocess.run(['gdbus', 'call', '--session', *watcher, '--method', 'org.freedesktop.DBus.Properties.Get',
                                 'org.kde.StatusNotifierWatcher', 'RegisteredStatusNotifierItems'],
                                capture_output=True, text=True, check=False).stdout
        return [part for part in answer.split("'") if part.startswith(':')]

    with Session(layouts='us,il', size='900x600x24') as session:
        session.start_agent(agent_program)
        panel = session.start(['xfce4-panel', '--disable-wm-check'])
        user = User(session, pictures)
        item = until(items, 'the panel to know the item')[0]
        name = item.split('/')[0]
        until(lambda: not [w for w in user.windows() if w[2] < 100], 'no icon in an XEmbed tray as well')
        activate = ['gdbus', 'call', '--session', '--dest', name, '--object-path', '/StatusNotifierItem', '--method',
                    'org.kde.StatusNotifierItem.Activate', '700', '30']
        subprocess.run(['xdotool', 'mousemove', '700', '30'], check=True)
        subprocess.run(activate, check=True, capture_output=True)
        menu = user.window('the menu', (200, 500), (120, 400))
        user.picture('panel-menu')
        user.keyboard.press('Escape')
        user.gone(menu, 'the menu')
        session.end(panel)


def colors_scene(agent_program, pictures):
    with Session(layouts='us,il', size='900x600x24') as session:
        session.start_agent(agent_program)
        user = User(session, pictures)
        tray = start_tray(session, '#202020')
        until(lambda: user.icons_levels()[1] > 180, 'a light icon on a dark tray')
        user.picture('icon-on-dark')
        session.end(tray)
        start_tray(session, '#f0f0f0')

        def dark_on_light():
            # All of it in one look: a tray that is being set up shows other backgrounds first.
            pixels = user.icons_pixels()
            return pixels if min(pixels) < 80 and pixels[0] == pixels[-1] == 0xf0 else None

        usual = until(dark_on_light, 'a dark icon on a light tray')
        user.picture('icon-on-light')
        user.keyboard.press('F2')  # nothing is selected
        until(lambda: user.icons_pixels() != usual, 'the cross to be shown')
        user.picture('icon-cross')
        until(lambda: user.icons_pixels() == usual, 'the usual icon to come back')
        assert 'fix: failed' in session.log(), session.log()


def wayland_scene(agent_program, _):
    with Session(layouts='us,il', size='900x600x24') as session:
        os.environ.update(WAYLAND_DISPLAY='wayland-of-nobody', XDG_SESSION_TYPE='wayland')
        agent = session.start_agent(agent_program)
        agent.send_signal(signal.SIGTERM)
        assert agent.wait(10) == 0
        said = agent.stderr.read().decode()
        assert said.startswith('lexwend: this is a Wayland session: ') and said.count('\n') == 1, said
        assert said[len('lexwend: '):] in session.log(), session.log()

        for display in ('', ':9999'):
            os.environ['DISPLAY'] = display
            refused = subprocess.run([str(agent_program)], capture_output=True, text=True, timeout=10, check=False)
            assert refused.returncode == 1, refused
            assert refused.stderr.startswith('lexwend: this Wayland session has no X11 display'), refused.stderr
            assert refused.stderr.count('\n') == 1, refused.stderr
        del os.environ['WAYLAND_DISPLAY'], os.environ['XDG_SESSION_TYPE']
        refused = subprocess.run([str(agent_program)], capture_output=True, text=True, timeout=10, check=False)
        assert refused.stderr == 'lexwend: no X11 display can be opened; the agent needs one (DISPLAY)\n', refused.stderr


SCENES = {'tray': tray_scene, 'panel': panel_scene, 'colors': colors_scene, 'wayland': wayland_scene}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('agent', type=Path)
    parser.add_argument('scene', choices=SCENES)
    parser.add_argument('--pictures', type=Path)
    arguments = parser.parse_args()
    SCENES[arguments.scene](arguments.agent.resolve(), arguments.pictures)


if __name__ == '__main__':
    run_scene(main)
