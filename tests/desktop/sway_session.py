# SPDX-License-Identifier: MIT
"""A private desktop as session.py describes, on the Wayland compositor sway, without a screen."""
import json
import os
import re
import socket
import struct
import subprocess
from pathlib import Path

from session import DEADLINE_SECONDS, KEYS, DesktopError, until
from wayland_session import WaylandSession

X_OFFSET = 8  # of X key codes from the kernel's
MODIFIERS = {'Shift': 1, 'Control': 4, 'Alt': 8, 'Super': 64}
LOCKS = {'CapsLock': 2, 'NumLock': 16}
NOBODY = 65534  # sway refuses to run as root

CONFIGURATION = """
output HEADLESS-1 resolution {size}
default_border none
focus_on_window_activation focus
bindsym Mod1+Tab focus next
bindsym Mod1+F4 kill
exec echo "$DISPLAY" >'{folder}/display'
"""


class Sway:
    """Questions to the compositor (sway-ipc(7))."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)

    def _read(self, size):
        data = b''
        while len(data) < size:
            piece = self.socket.recv(size - len(data))
            if not piece:
                raise DesktopError('sway has ended')
            data += piece
        return data

    def ask(self, kind, payload=''):
        self.socket.sendall(b'i3-ipc' + struct.pack('<II', len(payload.encode()), kind) + payload.encode())
        size, _ = struct.unpack('<II', self._read(14)[6:])
        return json.loads(self._read(size))

    def run(self, command):
        results = self.ask(0, command)
        if not all(result['success'] for result in results):
            raise DesktopError(f'sway refuses "{command}": {results}')

    def keyboards(self):
        """The user's, without the agent's own."""
        return [entry for entry in self.ask(100) if entry['type'] == 'keyboard' and entry['xkb_layout_names'] != ['Lexwend']]

    def windows(self):
        nodes = [self.ask(4)]
        while nodes:
            node = nodes.pop()
            if node.get('pid'):
                yield node
            nodes += node.get('nodes', []) + node.get('floating_nodes', [])

    def front(self):
        """The window that has the keyboard; nothing where none has."""
        return next((window for window in self.windows() if window['focused']), None)


class KeyRecord:
    """The keys that are down for one program, by what the compositor has told it: nobody else is told."""
    EVENT = re.compile(rb'\] wl_keyboard@\d+\.(?:(leave)\(|key\(\d+, \d+, (\d+), (\d)\))')

    def __init__(self, program, path):
        self.program, self.file = program, open(path, 'rb')
        self.rest = b''
        self.down = set()

    def pressed(self):
        *lines, self.rest = (self.rest + self.file.read()).split(b'\n')
        for left, key, is_down in (event.groups() for event in map(self.EVENT.search, lines) if event):
            if left:
                self.down.clear()
            else:
                (self.down.add if is_down == b'1' else self.down.discard)(int(key) + X_OFFSET)
        return self.down if self.program.poll() is None else set()


class WaylandKeyboard:
    """The user's keyboard; see session.Keyboard."""

    def __init__(self, typist, sway):
        self.typist, self.sway = typist, sway
        self.held = []
        self.locked = 0
        self.records = None  # of the programs whose keys are looked at

    def tell(self, line):
        self.typist.stdin.write(line + '\n')
        self.typist.stdin.flush()
        if self.typist.stdout.readline() != 'done\n':
            raise DesktopError(f'the keyboard has ended at "{line}"')

    def _event(self, key, is_down):
        self.tell(f'key {KEYS[key] - X_OFFSET} {is_down}')
        if key in LOCKS and is_down:
            self.locked ^= LOCKS[key]
        if key in MODIFIERS or key in LOCKS:
            mask = sum(MODIFIERS[held] for held in self.held if held in MODIFIERS)
            self.tell(f'modifiers {mask} {self.locked} {self.group()}')

    def down(self, key):
        self.held.append(key)
        self._event(key, 1)

    def up(self, key):
        self.held.remove(key)
        self._event(key, 0)

    def press(self, combination):
        keys = combination.split('+')
        for key in keys:
            self.down(key)
        for key in reversed(keys):
            self.up(key)

    def record(self):
        """From now on `pressed` tells of the programs that start."""
        self.records = []

    def pressed(self):
        """The key codes that are down for a program, the user's and the agent's."""
        assert self.records is not None, 'no program is looked at'
        return sorted(set().union(*(record.pressed() for record in self.records)))

    def locks(self):
        """The user's; the agent has a keyboard of its own."""
        return self.locked

    def group(self):
        return self.sway.keyboards()[0]['xkb_active_layout_index']

    def lock_group(self, group):
        self.sway.run(f'input type:keyboard xkb_switch_layout {group}')
        until(lambda: self.group() == group, f'keyboard group {group}')


class SwaySession(WaylandSession):
    """A session whose display is a compositor. XWayland starts with its first window."""
    TERMINAL, TERMINAL_CLASS = ['foot'], 'foot'
    GIVES_CLIPBOARD_TO_ALL = TELLS_WHO_COPIES = False
    OWN_COMBINATIONS = ('Alt+Tab', 'Alt+F4')

    def __init__(self, typist, **options):
        super().__init__(**options)
        self.typist = typist

    def _start(self):
        self._enter_home(XDG_SESSION_TYPE='wayland', QT_QPA_PLATFORM='wayland', GDK_BACKEND='wayland')
        for name in ('DISPLAY', 'SWAYSOCK'):
            os.environ.pop(name, None)
        self.folder.chmod(0o711)
        place = self.folder / 'sway'  # of a user of its own, while the runtime folder is the agent's
        place.mkdir(mode=0o700)
        width, height, _ = self.size.split('x')
        configuration = self.folder / 'sway-configuration'
        configuration.write_text(CONFIGURATION.format(size=f'{width}x{height}', folder=place), encoding='utf-8')
        if os.geteuid() == 0:
            os.chown(place, NOBODY, NOBODY)
        self.server = sway = self.start(self.as_sway(['sway', '-c', str(configuration)]),
                                        env={**os.environ, 'XDG_RUNTIME_DIR': str(place), 'WLR_BACKENDS': 'headless',
                                             'WLR_RENDERER': 'pixman', 'WLR_LIBINPUT_NO_DEVICES': '1'})

        def display():
            if sway.poll() is not None:
                raise DesktopError(f'sway ended with {sway.returncode}')
            written = place / 'display'
            return written.exists() and written.read_text(encoding='ascii').strip()

        os.environ['DISPLAY'] = self.display = until(display, 'sway to start')
        os.environ['SWAYSOCK'] = str(next(place.glob('sway-ipc.*.sock')))
        os.environ['WAYLAND_DISPLAY'] = str(next(path for path in place.glob('wayland-*') if path.is_socket()))
        self.sway = Sway(os.environ['SWAYSOCK'])
        self._start_bus()
        typist = self.start([str(self.typist)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.keyboard = WaylandKeyboard(typist, self.sway)
        self.set_layouts(self.layouts)

    @staticmethod
    def as_sway(command):
        """The command as the user who runs the compositor."""
        if os.geteuid() != 0:
            return command
        return ['setpriv', f'--reuid={NOBODY}', f'--regid={NOBODY}', '--clear-groups', *command]

    def let_in_to_xwayland(self):
        """Programs of the tests' own user may use the X display."""
        if os.geteuid() == 0:
            subprocess.run(self.as_sway(['xhost', '+si:localuser:root']), check=True, stdout=subprocess.DEVNULL,
                           timeout=DEADLINE_SECONDS)

    def set_layouts(self, layouts):
        self.keyboard.tell(f'keymap {layouts}')
        count = len(layouts.split(','))
        until(lambda: [len(entry['xkb_layout_names']) for entry in self.sway.keyboards()] == [count], 'the layouts')

    def active_process(self):
        front = self.sway.front()
        return front and front['pid']

    def start_in_front(self, command, **options):
        if self.keyboard.records is None:
            return super().start_in_front(command, **options)
        path = self.folder / f'told-{len(self.keyboard.records)}'
        with open(path, 'wb') as told:
            program = super().start_in_front(command, env={**os.environ, 'WAYLAND_DEBUG': 'client'}, stderr=told, **options)
        self.keyboard.records.append(KeyRecord(program, path))
        return program

    def active_title(self):
        return (self.sway.front() or {}).get('name') or ''

    def windows_titled(self, title):
        return [window['id'] for window in self.sway.windows() if title in (window['name'] or '')]

    def activate(self, window):
        try:
            self.sway.run(f'[con_id={window}] focus')
        except DesktopError:
            pass  # it has closed

    def close_front(self):
        self.sway.run('kill')

    def front_is_of_x11(self):
        return self.sway.front()['shell'] == 'xwayland'

    def screenshot(self, path):
        Path(path).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(['grim', str(path)], check=True, timeout=DEADLINE_SECONDS)
