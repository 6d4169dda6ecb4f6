# SPDX-License-Identifier: MIT
"""A private desktop as session.py describes, on the Wayland compositor KWin, which draws into a window of a virtual display:
the keys pressed there are those of its user. Runs in the root of that name (tests/desktops/root)."""
import os
import shutil
import subprocess
from pathlib import Path

from gi.repository import Gio, GLib

from session import DesktopError, Keyboard, call, until
from wayland_session import WaylandSession

ENTRY = """[Desktop Entry]
Type=Application
Name=Lexwend
Exec={program}
NoDisplay=true
X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input,org_kde_plasma_window_management
"""

# Tells which window has the keyboard: at the start, and when another one gets it.
SCRIPT = """
function tell(window) {{
  callDBus('{listener}', '/front', 'org.lexwend.Test', 'Front', window ? window.pid : 0, window ? String(window.windowId || 0) : '0');
}}
workspace.clientActivated.connect(tell);
tell(workspace.activeClient);
"""


class Front:
    """The window in front, as a script inside KWin tells it."""
    INTERFACE = '<node><interface name="org.lexwend.Test"><method name="Front"><arg type="i" direction="in"/><arg type="s" direction="in"/></method></interface></node>'

    def __init__(self, folder):
        self.context = GLib.MainContext.default()
        self.process, self.is_of_x11, told = None, False, []
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)

        def tells(_bus, _sender, _path, _interface, _method, arguments, invocation):
            process, window = arguments.unpack()
            self.process, self.is_of_x11 = process or None, window != '0'
            told.append(process)
            invocation.return_value(None)

        self.bus.register_object('/front', Gio.DBusNodeInfo.new_for_xml(self.INTERFACE).interfaces[0], tells, None, None)
        script = folder / 'front.js'
        script.write_text(SCRIPT.format(listener=self.bus.get_unique_name()), encoding='utf-8')
        number = call('org.kde.KWin', '/Scripting', 'org.kde.kwin.Scripting', 'loadScript', '(ss)', str(script), 'front')[0]
        call('org.kde.KWin', f'/{number}', 'org.kde.kwin.Script', 'run')
        until(lambda: self.listen() or told, 'KWin to tell which window is in front')

    def listen(self):
        while self.context.iteration(False):
            pass


class KWinKeyboard(Keyboard):
    """The keys of the display that KWin draws on; the layouts are KWin's."""

    def _ask(self, method, *arguments):
        return call('org.kde.keyboard', '/Layouts', 'org.kde.KeyboardLayouts', method, *arguments)

    def layouts(self):
        """Their short names; empty where there is a single one, which KWin does not tell of."""
        try:
            return [names[0] for names in self._ask('getLayoutsList')[0]]
        except GLib.Error:
            return []

    def group(self):
        return self._ask('getLayout')[0] if self.layouts() else 0

    def lock_group(self, group):
        if self.layouts():
            self._ask('setLayout', '(u)', group)
        until(lambda: self.group() == group, f'keyboard group {group}')


class KWinSession(WaylandSession):
    """A session whose display is a compositor. XWayland starts with it."""
    TERMINAL, TERMINAL_CLASS = ['konsole', '-e'], 'org.kde.konsole'
    OWN_COMBINATIONS = ('Alt+Tab', 'Alt+F4', 'Alt+F3')

    def __init__(self, granted=True, **options):
        super().__init__(**options)
        self.granted = granted  # whether KWin lets the agent press keys

    def _start(self):
        runtime = self._enter_home(XDG_SESSION_TYPE='wayland', GDK_BACKEND='wayland', XDG_MENU_PREFIX='kf5-',
                                   KWIN_COMPOSE='Q', QT_QUICK_BACKEND='software')
        configuration = self.home / '.config'
        configuration.mkdir(exist_ok=True)
        (configuration / 'kscreenlockerrc').write_text('[Daemon]\nAutolock=false\nLockOnResume=false\n', encoding='utf-8')
        self.write_layouts(self.layouts)

        read_end, write_end = os.pipe()
        self.start(['Xvfb', '-displayfd', str(write_end), '-screen', '0', self.size, '-nolisten', 'tcp', '-noreset'], pass_fds=(write_end,))
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise DesktopError('Xvfb did not start')
        self.display = f':{number}'
        # A keyboard sends no key again; it is KWin that repeats the one that is held.
        subprocess.run(['xset', '-display', self.display, 'r', 'off'], check=True)
        self._start_bus()

        width, height, _ = self.size.split('x')
        told = runtime / 'environment'
        program = shutil.which('kwin_wayland')
        os.environ.pop('DISPLAY', None)
        kwin = self.start([program, f'--x11-display={self.display}', '--width', width, '--height', height, '--socket', 'wayland-kwin', '--xwayland',
                           f'{shutil.which("sh")} -c "echo $DISPLAY >{told}.new && mv {told}.new {told}"'])

        def environment():
            if kwin.poll() is not None:
                raise DesktopError(f'KWin ended with {kwin.returncode}')
            return told.exists() and told.read_text(encoding='utf-8').strip()

        os.environ['DISPLAY'] = until(environment, 'KWin to start')
        os.environ.update(WAYLAND_DISPLAY='wayland-kwin', QT_QPA_PLATFORM='wayland')
        self.keyboard = KWinKeyboard(self.display)
        self.keyboard.point(int(width) // 2, int(height) // 2)  # keys go to the window under the mouse
        self.front = Front(self.folder)

    def let_in_to_xwayland(self):
        pass  # every program is of the same user

    def write_layouts(self, layouts):
        names = [entry.partition('(') for entry in layouts.split(',')]
        lists = {'LayoutList': ','.join(name[0] for name in names), 'VariantList': ','.join(name[2].rstrip(')') for name in names)}
        lines = [f'{key}={value}\n' for key, value in lists.items()]
        (self.home / '.config' / 'kxkbrc').write_text(f'[Layout]\n{"".join(lines)}Use=true\n', encoding='utf-8')

    def set_layouts(self, layouts):
        """Layouts in the order given; a variant stands in parentheses."""
        self.write_layouts(layouts)
        self.front.bus.emit_signal(None, '/Layouts', 'org.kde.keyboard', 'reloadConfig', None)
        self.front.bus.flush_sync(None)
        wanted = [entry.partition('(')[0] for entry in layouts.split(',')]
        until(lambda: self.keyboard.layouts() == (wanted if len(wanted) > 1 else []), 'the layouts')

    def start_agent(self, program):
        if self.granted:
            entry = self.home / '.local' / 'share' / 'applications' / 'org.lexwend.Lexwend.desktop'
            entry.parent.mkdir(parents=True, exist_ok=True)
            entry.write_text(ENTRY.format(program=program), encoding='utf-8')
        return super().start_agent(program)

    def active_process(self):
        self.front.listen()
        return self.front.process

    def front_is_of_x11(self):
        self.front.listen()
        return self.front.is_of_x11

    def screenshot(self, path):
        Path(path).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(['import', '-display', self.display, '-window', 'root', str(path)], check=True)

    def look(self):
        """The pixels of the screen."""
        return subprocess.run(['import', '-display', self.display, '-window', 'root', 'rgb:-'], check=True, capture_output=True).stdout
