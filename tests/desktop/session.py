# SPDX-License-Identifier: MIT
"""A private desktop for tests: virtual display, session bus, window manager, keyboard layouts, nothing of the user's.

Everything lives in a temporary folder and ends with the session. Nothing sleeps for a guess: `until` polls a condition
against a deadline and says what it waited for. One session per process, because the accessibility library binds to the
first bus that it sees. LEXWEND_DESKTOP_VERBOSE shows what the programs say, LEXWEND_DESKTOP_PICTURES names a folder for a
picture of the screen as a failure left it, LEXWEND_DESKTOP_HOLD keeps the desktop open at its end until Return is pressed.
"""
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

POLL_SECONDS = 0.01
DEADLINE_SECONDS = 20.0

# Key codes of an evdev keyboard under X: the kernel's code plus 8.
KEYS = {
    'Escape': 9, '1': 10, '2': 11, 'BackSpace': 22, 'Tab': 23, 'q': 24, 'w': 25, 'e': 26, 'r': 27, 't': 28, 'y': 29,
    'u': 30, 'i': 31, 'o': 32, 'p': 33, 'Return': 36, 'Control': 37, 'a': 38, 's': 39, 'd': 40, 'f': 41, 'g': 42,
    'h': 43, 'j': 44, 'k': 45, 'l': 46, 'Shift': 50, 'z': 52, 'x': 53, 'c': 54, 'v': 55, 'b': 56, 'n': 57, 'm': 58,
    'Alt': 64, 'space': 65, 'CapsLock': 66, 'F1': 67, 'F2': 68, 'F3': 69, 'F4': 70, 'F5': 71, 'F6': 72, 'F7': 73,
    'F8': 74, 'F9': 75, 'F10': 76, 'NumLock': 77, 'F11': 95, 'F12': 96, 'Home': 110, 'Up': 111, 'Left': 113,
    'Right': 114, 'End': 115, 'Down': 116, 'Insert': 118, 'Delete': 119, 'Super': 133,
}


class DesktopError(Exception):
    """Something did not happen in time, or a program of the desktop ended when it should not."""


def until(condition, what, seconds=DEADLINE_SECONDS):
    """Polls until the condition gives something true, and returns that."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise DesktopError(f'waited {seconds:g} s in vain for: {what}')
        time.sleep(POLL_SECONDS)


class XkbState(ctypes.Structure):
    _fields_ = [('group', ctypes.c_ubyte), ('locked_group', ctypes.c_ubyte), ('base_group', ctypes.c_ushort),
                ('latched_group', ctypes.c_ushort), ('mods', ctypes.c_ubyte), ('base_mods', ctypes.c_ubyte),
                ('latched_mods', ctypes.c_ubyte), ('locked_mods', ctypes.c_ubyte), ('compat_state', ctypes.c_ubyte),
                ('grab_mods', ctypes.c_ubyte), ('compat_grab_mods', ctypes.c_ubyte),
                ('lookup_mods', ctypes.c_ubyte), ('compat_lookup_mods', ctypes.c_ubyte),
                ('ptr_buttons', ctypes.c_ushort)]


class XiEventMask(ctypes.Structure):
    _fields_ = [('device', ctypes.c_int), ('mask_length', ctypes.c_int), ('mask', ctypes.POINTER(ctypes.c_ubyte))]


class XiEvent(ctypes.Structure):
    """The head of an event of XInput 2, with room for the longest event of the core protocol."""
    _fields_ = [('type', ctypes.c_int), ('serial', ctypes.c_ulong), ('send_event', ctypes.c_int),
                ('display', ctypes.c_void_p), ('extension', ctypes.c_int), ('event_type', ctypes.c_int),
                ('rest', ctypes.c_long * 24)]


class XiDeviceInfo(ctypes.Structure):
    _fields_ = [('id', ctypes.c_int), ('name', ctypes.c_char_p), ('use', ctypes.c_int), ('attachment', ctypes.c_int),
                ('enabled', ctypes.c_int), ('class_count', ctypes.c_int), ('classes', ctypes.c_void_p)]


class PressCounter:
    """Sees keys go down while another program has grabbed them, each repetition of a held key as well."""
    ALL_DEVICES = 0
    KEY_PRESS = 2  # XI_KeyPress
    GENERIC_EVENT = 35

    def __init__(self, display_name):
        self.x11 = ctypes.CDLL('libX11.so.6')
        xi = ctypes.CDLL('libXi.so.6')
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display_name.encode()))
        xi.XIQueryVersion(self.display, ctypes.byref(ctypes.c_int(2)), ctypes.byref(ctypes.c_int(2)))
        mask = (ctypes.c_ubyte * 1)(1 << self.KEY_PRESS)
        selection = XiEventMask(self.ALL_DEVICES, 1, mask)
        root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))
        xi.XISelectEvents(self.display, root, ctypes.byref(selection), 1)
        self.x11.XSync(self.display, 0)
        self.count = 0

    def presses(self):
        event = XiEvent()
        while self.x11.XPending(self.display):
            self.x11.XNextEvent(self.display, ctypes.byref(event))
            self.count += event.type == self.GENERIC_EVENT and event.event_type == self.KEY_PRESS
        return self.count


class Keyboard:
    """Raw key events and keyboard groups of one display."""
    CORE_KEYBOARD = 0x100  # XkbUseCoreKbd

    def __init__(self, display_name):
        self.x11 = ctypes.CDLL('libX11.so.6')
        self.xtst = ctypes.CDLL('libXtst.so.6')
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display_name.encode()))
        if not self.display:
            raise DesktopError(f'cannot open display {display_name}')
        self.device = None

    def _event(self, key, is_down):
        code, down, delay = ctypes.c_uint(KEYS[key]), ctypes.c_int(is_down), ctypes.c_ulong(0)
        if self.device:
            self.xtst.XTestFakeDeviceKeyEvent(self.display, self.device, code, down, None, 0, delay)
        else:
            self.xtst.XTestFakeKeyEvent(self.display, code, down, delay)
        self.x11.XSync(self.display, 0)

    def type_on_the_servers_own(self, simulated_layouts, own_layouts):
        """From now on keys are pressed where a person presses them, and the keyboard of simulated keys has other layouts,
        as on a machine whose layouts come from the system's configuration."""
        xi = ctypes.CDLL('libXi.so.6')
        xi.XIQueryDevice.restype = ctypes.POINTER(XiDeviceInfo)
        xi.XOpenDevice.restype = ctypes.c_void_p
        count, all_devices, slave_keyboard = ctypes.c_int(), 0, 4
        found = xi.XIQueryDevice(self.display, all_devices, ctypes.byref(count))
        keyboards = [found[i] for i in range(count.value) if found[i].use == slave_keyboard]
        simulated = next(device.id for device in keyboards if b'XTEST' in device.name)
        own = next(device.id for device in keyboards if b'XTEST' not in device.name)
        # setxkbmap notes the layouts that it set last for the whole server: the user's come last.
        for device, layouts in ((simulated, simulated_layouts), (own, own_layouts)):
            subprocess.run(['setxkbmap', '-device', str(device), '-layout', layouts], check=True)
        self.device = ctypes.c_void_p(xi.XOpenDevice(self.display, ctypes.c_ulong(own)))

    def down(self, key):
        self._event(key, 1)

    def up(self, key):
        self._event(key, 0)

    def press(self, combination):
        """Presses and releases one combination, for example 'Control+a' or 'F2'."""
        keys = combination.split('+')
        for key in keys:
            self.down(key)
        for key in reversed(keys):
            self.up(key)

    def record(self):
        """Asked for before programs start whose keys are to be known; this display knows at any time."""

    def pressed(self):
        """The key codes that are down."""
        keys = (ctypes.c_ubyte * 32)()  # a bit for each
        self.x11.XQueryKeymap(self.display, keys)
        return [code for code in range(256) if keys[code // 8] & 1 << code % 8]

    def point(self, x, y):
        """Moves the mouse there, in pixels of the screen."""
        self.xtst.XTestFakeMotionEvent(self.display, -1, x, y, ctypes.c_ulong(0))
        self.x11.XSync(self.display, 0)

    def click(self, x, y, button=1):
        """Moves the mouse there, and presses and releases one of its buttons."""
        self.point(x, y)
        for is_down in (1, 0):
            self.xtst.XTestFakeButtonEvent(self.display, button, is_down, ctypes.c_ulong(0))
        self.x11.XSync(self.display, 0)

    def take(self, key, modifiers):
        """Takes a combination for this program, as another one would; the modifiers are the bits of the core protocol."""
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))
        grab_async = 1
        self.x11.XGrabKey(self.display, KEYS[key], ctypes.c_uint(modifiers), root, 0, grab_async, grab_async)
        self.x11.XSync(self.display, 0)

    def _state(self):
        state = XkbState()
        self.x11.XkbGetState(self.display, ctypes.c_uint(self.CORE_KEYBOARD), ctypes.byref(state))
        return state

    def group(self):
        """The active keyboard group, 0 for the first layout."""
        return self._state().group

    def locks(self):
        """The locked modifiers, the bits of the core protocol; 0 while Caps Lock and Num Lock are off."""
        return self._state().locked_mods

    def lock_group(self, group):
        self.x11.XkbLockGroup(self.display, ctypes.c_uint(self.CORE_KEYBOARD), ctypes.c_uint(group))
        self.x11.XSync(self.display, 0)
        until(lambda: self.group() == group, f'keyboard group {group}')


def active_window_says(*arguments):
    """What xprop tells about the window that has the keyboard."""
    window = subprocess.run(['xprop', '-root', '_NET_ACTIVE_WINDOW'], capture_output=True, text=True, check=False)
    # Some window managers write a second value, which is nothing.
    name = window.stdout.partition('# ')[2].split(',')[0].strip() if window.returncode == 0 else ''
    if not name.startswith('0x') or name == '0x0':
        return ''
    return subprocess.run(['xprop', '-id', name, *arguments], capture_output=True, text=True, check=False).stdout


def active_process():
    """The process of the window that has the keyboard; nothing where there is none or it does not tell."""
    number = active_window_says('-notype', '_NET_WM_PID').partition(' = ')[2].strip()
    return int(number) if number else None


def _session_of(process):
    """The first process of its session; every program of a desktop has a session of its own."""
    try:
        return process and os.getsid(process)
    except ProcessLookupError:
        return None


def call(destination, path, interface, method, signature=None, *arguments, bus=None):
    """What the method returns, as a tuple; on the session bus, if no other is given."""
    from gi.repository import Gio, GLib
    bus = bus or Gio.bus_get_sync(Gio.BusType.SESSION)
    parameters = GLib.Variant(signature, arguments) if signature else None
    return bus.call_sync(destination, path, interface, method, parameters, None, Gio.DBusCallFlags.NONE, -1, None).unpack()


class AccessibilityBus:
    """Who is on the desktop's accessibility bus, which starts when it is first asked for."""

    def __init__(self):
        from gi.repository import Gio
        address = call('org.a11y.Bus', '/org/a11y/bus', 'org.a11y.Bus', 'GetAddress')[0]
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self.focused = None
        self.bus.signal_subscribe(None, 'org.a11y.atspi.Event.Object', 'StateChanged', None, 'focused', Gio.DBusSignalFlags.NONE,
                                  self._focus_changes)

    def _focus_changes(self, _bus, sender, path, _interface, _signal, arguments):
        if arguments[1]:
            self.focused = (sender, path)

    def text_has_said_that_it_is_focused(self):
        """Whether the last object that told everybody that it got the focus has text."""
        from gi.repository import GLib
        while GLib.MainContext.default().iteration(False):
            pass
        if not self.focused:
            return False
        try:
            interfaces = call(*self.focused, 'org.a11y.atspi.Accessible', 'GetInterfaces', bus=self.bus)[0]
            return 'org.a11y.atspi.Text' in interfaces
        except GLib.Error:
            return False  # told before it is there

    def focused_text_answers_at_once(self):
        """Whether it does so a few times: an application that draws many things at its start is busy for a while."""
        begin = time.monotonic()
        return all(self.text_has_said_that_it_is_focused() for _ in range(5)) and time.monotonic() - begin < 0.1

    def _call(self, destination, path, method, *arguments):
        return call(destination, path, destination, method, *arguments, bus=self.bus)[0]

    def hears_focus(self, process):
        """Whether that process is registered for the events of the focus."""
        from gi.repository import GLib
        try:
            events = self._call('org.a11y.atspi.Registry', '/org/a11y/atspi/registry', 'GetRegisteredEvents')
            listeners = {listener for listener, event in events if 'focused' in event.lower()}
            return process in [self._call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'GetConnectionUnixProcessID',
                                          '(s)', listener) for listener in listeners]
        except GLib.Error:
            return False  # one that went while it was asked about


class Session:
    """A desktop from __enter__ to __exit__. Changes this process's environment to it."""
    GIVES_CLIPBOARD_TO_ALL = True  # and not only to the window with the keyboard
    TELLS_WHO_COPIES = True
    KEEPER = None  # the name of the program that keeps the clipboard after the agent's end, where that is another one

    def __init__(self, layouts='us,il', size='1280x800x24', panel=None, window_manager='openbox',
                 server_options=()):
        self.layouts = layouts
        self.size = size
        self.panel = panel
        self.window_manager = window_manager
        self.server_options = tuple(server_options)
        self.processes = []
        self.folder = None
        self.display = None
        self.server = None  # the process that everything is drawn by

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix='lexwend-desktop-'))
        self.home = self.folder / 'home'
        # What this process catches its programs take as usual. Ignored signals, those of a run in the background, they inherit.
        signal.signal(signal.SIGINT, signal.default_int_handler)
        signal.signal(signal.SIGHUP, signal.SIG_DFL)
        try:
            self._start()
        except BaseException:
            self.__exit__(*sys.exc_info())
            raise
        return self

    def _tell(self):
        """What a failed scene has left behind, on standard error."""
        ended = [f'{process.args[0]} with {process.poll()}' for process in self.processes if process.poll() is not None]
        print(f'programs that had ended: {", ".join(ended) or "none"}\nlog of the agent:\n{self.log()}', file=sys.stderr)
        folder = os.environ.get('LEXWEND_DESKTOP_PICTURES')
        if folder and self.display:
            os.environ['DISPLAY'] = self.display
            self.screenshot(Path(folder) / f'failure-{os.getpid()}.png')

    def __exit__(self, kind, error, _):
        try:
            if error is not None:
                self._tell()
        except (OSError, subprocess.SubprocessError) as trouble:
            print(f'no more can be told: {trouble}', file=sys.stderr)
        if os.environ.get('LEXWEND_DESKTOP_HOLD') and self.display:
            self._hold()
        for process in reversed(self.processes):
            self.end(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def _hold(self):
        """Leaves everything running and says how another terminal reaches it."""
        for name in ('DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'XDG_RUNTIME_DIR', 'HOME'):
            print(f"export {name}='{os.environ.get(name, '')}'")
        print('The desktop is still there. Return ends it.', flush=True)
        sys.stdin.readline()

    def _enter_home(self, **variables):
        """The environment of a fresh user; gives the folder of what runs.

        GTK 4 draws without Mesa. Mesa holds a program up while it compiles what is drawn for the first time, and keeps the result
        in the home of the real user.
        """
        runtime = self.folder / 'run'
        (self.home / 'Library' / 'Logs').mkdir(parents=True)
        runtime.mkdir(mode=0o700)
        for name in [n for n in os.environ if n.startswith(('XDG_', 'DBUS_', 'WAYLAND_', 'GTK_', 'QT_', 'SWAY'))]:
            del os.environ[name]
        os.environ.update(HOME=str(self.home), XDG_RUNTIME_DIR=str(runtime), GSETTINGS_BACKEND='memory', LANG='C.UTF-8',
                          LC_ALL='C.UTF-8', NO_AT_BRIDGE='0', LIBGL_ALWAYS_SOFTWARE='1', GSK_RENDERER='cairo', **variables)
        return runtime

    def _start_bus(self):
        bus = self.start(['dbus-daemon', '--session', '--nofork', '--print-address=1'], stdout=subprocess.PIPE, text=True)
        os.environ['DBUS_SESSION_BUS_ADDRESS'] = bus.stdout.readline().strip()

    def _start(self):
        self._enter_home(XDG_SESSION_TYPE='x11', GDK_BACKEND='x11')

        read_end, write_end = os.pipe()
        self.server = self.start(['Xvfb', '-displayfd', str(write_end), '-screen', '0', self.size, '-nolisten', 'tcp', '-noreset',
                                  *self.server_options],
                                 pass_fds=(write_end,))
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise DesktopError('Xvfb did not start')
        self.display = os.environ['DISPLAY'] = f':{number}'

        self._start_bus()
        self.set_layouts(self.layouts)
        self.keyboard = Keyboard(os.environ['DISPLAY'])
        if self.window_manager:
            self.start([self.window_manager])
            until(self.window_manager_runs, 'the window manager')
        if self.panel:
            self.start(self.panel)

    def window_manager_runs(self):
        found = subprocess.run(['xprop', '-root', '_NET_SUPPORTING_WM_CHECK'], capture_output=True, text=True, check=False)
        return 'window id' in found.stdout

    def start(self, command, **options):
        """Starts a program of this desktop; it ends with the session."""
        options.setdefault('stdout', subprocess.DEVNULL)
        options.setdefault('stderr', None if os.environ.get('LEXWEND_DESKTOP_VERBOSE') else subprocess.DEVNULL)
        options.setdefault('stdin', subprocess.DEVNULL)
        process = subprocess.Popen(command, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def start_in_front(self, command, **options):
        """The same, and waits until a window of the program has the keyboard: keys pressed before that go astray."""
        program = self.start(command, **options)
        until(lambda: _session_of(self.active_process()) == program.pid, f'a window of {command[0]} to have the keyboard')
        return program

    def active_process(self):
        return active_process()

    def active_title(self):
        """The title of the window that has the keyboard."""
        return active_window_says('-f', '_NET_WM_NAME', '8u', '_NET_WM_NAME').partition(' = ')[2].strip().strip('"')

    def windows_titled(self, title):
        """Those whose title holds that; what stands for them is for the two below."""
        search = ['xdotool', 'search', '--onlyvisible', '--name', title]
        return subprocess.run(search, capture_output=True, text=True, check=False).stdout.split()

    def activate(self, window):
        subprocess.run(['xdotool', 'windowactivate', window], check=False, stderr=subprocess.DEVNULL)

    def close_front(self):
        """As the user does, whose window manager asks the window to close."""
        self.keyboard.press('Alt+F4')

    def copy(self, target):
        """The program that copies its standard input as that type and stays until another one copies; `paste` and the two
        below are the programs that write what is there to their standard output."""
        return ['xclip', '-quiet', '-selection', 'clipboard', '-t', target]

    def paste(self, target):
        return ['xclip', '-o', '-selection', 'clipboard', '-t', target]

    def paste_primary(self):
        return ['xclip', '-o', '-selection', 'primary', '-t', 'UTF8_STRING']

    def paste_targets(self):
        return self.paste('TARGETS')

    def end(self, process, seconds=5.0):
        """Asks a program to end and returns its exit status; insists when it does not."""
        if process.poll() is None:
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(seconds)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        if process in self.processes:
            self.processes.remove(process)
        return process.returncode

    def set_layouts(self, layouts):
        """Layouts in the order given; a variant stands in parentheses: 'us(dvorak),il'."""
        names = [entry.partition('(') for entry in layouts.split(',')]
        subprocess.run(['setxkbmap', '-model', 'pc105', '-layout', ','.join(name[0] for name in names),
                        '-variant', ','.join(name[2].rstrip(')') for name in names)], check=True)

    def start_agent(self, program):
        """Starts the agent and waits until it has registered its hot key; the log may hold the lines of an earlier one."""
        registrations = self._registrations()
        agent = self.start([str(program)], stderr=subprocess.PIPE)

        def registered():
            if agent.poll() is not None:
                raise DesktopError(f'the agent ended with {agent.returncode}: {agent.stderr.read().decode().strip()}')
            return self._registrations() > registrations

        until(registered, 'the hot key to be registered')
        return agent

    def _registrations(self):
        return self.log().count('hotkey: register')

    def log(self):
        path = self.home / 'Library' / 'Logs' / 'Lexwend.log'
        return path.read_text(encoding='utf-8') if path.exists() else ''

    def screenshot(self, path):
        Path(path).parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(['import', '-window', 'root', str(path)], check=True, timeout=DEADLINE_SECONDS)


class FocusedText:
    """The text field that has the keyboard, seen through the desktop's accessibility interface."""

    def __init__(self, application):
        import gi
        gi.require_version('Atspi', '2.0')
        from gi.repository import Atspi, GLib
        self.atspi = Atspi
        self.error = GLib.Error
        self.application = application

    def _children(self, node):
        return [child for child in (node.get_child_at_index(i) for i in range(node.get_child_count())) if child]

    def _find(self, node, depth=0):
        if node.get_state_set().contains(self.atspi.StateType.FOCUSED) and node.get_text_iface():
            return node
        if depth > 25:
            return None
        for child in self._children(node):
            found = self._find(child, depth + 1)
            if found:
                return found
        return None

    def find(self):
        try:
            for application in self._children(self.atspi.get_desktop(0)):
                if self.application in (application.get_name() or '').lower():
                    found = self._find(application)
                    if found:
                        return found
        except self.error:
            pass  # a window that goes while it is looked at
        return None

    def _asked(self, question):
        """What the field answers; nothing while there is none or it does not answer."""
        node = self.find()
        try:
            return None if node is None else question(node)
        except self.error:
            return None

    def text(self):
        # Not -1 for the end, which an entry of GTK 4 does not know.
        return self._asked(lambda node: self.atspi.Text.get_text(node, 0, self.atspi.Text.get_character_count(node)))

    def selection_length(self):
        def length(node):
            if self.atspi.Text.get_n_selections(node) == 0:
                return 0
            selected = self.atspi.Text.get_selection(node, 0)
            return abs(selected.end_offset - selected.start_offset)
        return self._asked(length) or 0


def run_scene(scene):
    """Runs a scene's function; a failure is one sentence on standard error and a non-zero exit."""
    try:
        scene()
    except (DesktopError, AssertionError, subprocess.SubprocessError, OSError) as error:
        print(f'failed: {error}', file=sys.stderr)
        sys.exit(1)
