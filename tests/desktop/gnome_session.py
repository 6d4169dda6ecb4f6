# SPDX-License-Identifier: MIT
"""A private desktop as session.py describes, in GNOME Shell on Wayland, without a screen. It needs a system bus with a
stand-in for logind, as tests/desktops/root makes them."""
import json
import os
import shutil
import subprocess
import time
from pathlib import Path

from session import DEADLINE_SECONDS, KEYS, DesktopError, Session, call, until

X_OFFSET = 8  # of X key codes from the kernel's
EXTENSION = Path(__file__).resolve().parent.parent.parent / 'packaging' / 'gnome-extension'
UUID = 'lexwend@lexwend.org'
TRAY = 'ubuntu-appindicators@ubuntu.com'
# mutter was seen to lose the modifier of a chord whose events come at once.
KEY_PAUSE_SECONDS = 0.015
ANSWERS_AT_ONCE = 5
PROMPT_SECONDS = 0.05


class Shell:
    """Questions to GNOME Shell, in its own language."""

    def ask(self, expression):
        is_done, answer = call('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell', 'Eval', '(s)', expression)
        if not is_done:
            raise DesktopError(f'GNOME Shell refuses "{expression}": {answer}')
        return json.loads(answer) if answer else None

    def layouts(self, what):
        return self.ask(f'imports.ui.status.keyboard.getInputSourceManager().{what}')

    def front(self):
        """The process of the window that has the keyboard; nothing where none has."""
        return self.ask('global.display.focus_window ? global.display.focus_window.get_pid() : 0') or None


class GnomeKeyboard:
    """The user's keyboard; see session.Keyboard. A session of remote control, as long as the desktop."""
    NAME = 'org.gnome.Mutter.RemoteDesktop'

    def __init__(self, shell):
        from gi.repository import Gio
        self.shell = shell
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)  # held, because the session ends with the connection
        self.path = call(self.NAME, '/org/gnome/Mutter/RemoteDesktop', self.NAME, 'CreateSession')[0]
        self._tell('Start')
        self.press('Shift')  # from its first key on there is a keyboard, without which GTK 3 has no focus

    def _tell(self, method, *arguments):
        call(self.NAME, self.path, f'{self.NAME}.Session', method, *arguments)

    def _event(self, key, is_down):
        self._tell('NotifyKeyboardKeycode', '(ub)', KEYS[key] - X_OFFSET, is_down)
        time.sleep(KEY_PAUSE_SECONDS)

    def down(self, key):
        self._event(key, True)

    def up(self, key):
        self._event(key, False)

    def press(self, combination):
        keys = combination.split('+')
        for key in keys:
            self.down(key)
        for key in reversed(keys):
            self.up(key)

    def group(self):
        return self.shell.layouts('currentSource.index')

    def lock_group(self, group):
        self.shell.layouts(f'inputSources[{group}].activate(true)')
        until(lambda: self.group() == group, f'keyboard layout {group}')


class GnomeSession(Session):
    """A session of GNOME Shell, with the agent's extension or without it."""
    OWN_COMBINATIONS = ('Alt+F2', 'Alt+Tab', 'Alt+F4')
    TERMINAL, TERMINAL_CLASS = ['foot'], 'foot'
    KEEPER = 'lexwend-clipboard'

    def __init__(self, has_extension=True, **options):
        super().__init__(**options)
        self.has_extension = has_extension

    def _start(self):
        self._enter_home(XDG_SESSION_TYPE='wayland', XDG_CURRENT_DESKTOP='GNOME', QT_QPA_PLATFORM='wayland', GDK_BACKEND='wayland',
                         XDG_DATA_DIRS='/usr/local/share:/usr/share', XDG_CONFIG_DIRS='/etc/xdg')
        for name in ('GSETTINGS_BACKEND', 'DISPLAY'):  # the settings are what every program of the session sees
            os.environ.pop(name, None)
        shutil.copytree(EXTENSION, self.home / '.local' / 'share' / 'gnome-shell' / 'extensions' / UUID)
        self._start_bus()
        self.set('org.gnome.shell', 'enabled-extensions', str([TRAY] + [UUID] * self.has_extension))
        self.set('org.gnome.shell', 'welcome-dialog-last-shown-version', '99')
        self.set('org.gnome.desktop.session', 'idle-delay', '0')
        self.set_layouts(self.layouts)
        width, height, _ = self.size.split('x')
        shell = self.start(['gnome-shell', '--headless', '--unsafe-mode', '--virtual-monitor', f'{width}x{height}',
                            '--wayland-display', 'lexwend-0'])
        self.shell = Shell()

        def runs():
            if shell.poll() is not None:
                raise DesktopError(f'GNOME Shell ended with {shell.returncode}')
            from gi.repository import GLib
            try:
                return self.shell.ask('Main.layoutManager._startingUp') is False
            except (GLib.Error, DesktopError):
                return False

        until(runs, 'GNOME Shell to start', 60)
        self.shell.ask('Main.overview.hide()')
        until(lambda: not self.shell.ask('Main.overview.visible'), 'the overview to go')
        os.environ['WAYLAND_DISPLAY'] = 'lexwend-0'
        for name in ('DISPLAY', 'XAUTHORITY'):
            os.environ[name] = self.shell.ask(f'imports.gi.GLib.getenv("{name}")')
        self.display = os.environ['DISPLAY']
        self.keyboard = GnomeKeyboard(self.shell)

    @staticmethod
    def set(schema, key, value):
        subprocess.run(['gsettings', 'set', schema, key, value], check=True, timeout=DEADLINE_SECONDS)

    def set_layouts(self, layouts):
        names = [name.replace('(', '+').rstrip(')') for name in layouts.split(',')]
        self.set('org.gnome.desktop.input-sources', 'sources', str([('xkb', name) for name in names]))

    def let_window_have_combinations(self):
        """GNOME asks the user first."""
        until(lambda: self.shell.ask('Main.modalCount') == 1, 'the question of GNOME')
        self.keyboard.press('Return')

    def let_in_to_xwayland(self):
        pass  # every program is of the same user

    def start_in_front(self, command, **options):
        program = super().start_in_front(command, **options)
        until(self._has_drawn, 'GNOME Shell to have drawn the window')
        return program

    def _has_drawn(self):
        """On a busy machine it was seen to answer nothing for 0.8 s after a new window: the agent waits for a second."""
        begin = time.monotonic()
        for _ in range(ANSWERS_AT_ONCE):
            self.shell.front()
        return time.monotonic() - begin < ANSWERS_AT_ONCE * PROMPT_SECONDS

    def active_process(self):
        return self.shell.front()

    def front_is_of_x11(self):
        return self.shell.ask('global.display.focus_window.get_client_type() === imports.gi.Meta.WindowClientType.X11')

    def screenshot(self, path):
        """GNOME lets only some names ask for it, of which this is one."""
        from gi.repository import Gio
        name = Gio.bus_own_name(Gio.BusType.SESSION, 'org.gnome.Screenshot', Gio.BusNameOwnerFlags.NONE, None, None, None)
        try:
            until(lambda: self._screenshot(path), 'a picture of the screen')
        finally:
            Gio.bus_unown_name(name)

    @staticmethod
    def _screenshot(path):
        from gi.repository import GLib
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            return call('org.gnome.Shell.Screenshot', '/org/gnome/Shell/Screenshot', 'org.gnome.Shell.Screenshot', 'Screenshot',
                        '(bbs)', False, False, str(path))[0]
        except GLib.Error:
            return False
