# SPDX-License-Identifier: MIT
"""The faults, each a row: what is prepared, what happens, what must be left."""
import os
import signal
import subprocess
import time
from dataclasses import dataclass
from typing import Callable

from rig import GARBLED, KEPT, MEANT, Lost
from session import until

FAULTS = {}

# Milliseconds after the press of the hot key: while the focus is looked for, the text read and written, the clipboard
# kept, the copy awaited, the paste made, the clipboard given back.
STEPS = (0, 5, 10, 20, 35, 50, 70, 90, 120, 160, 250, 400, 600)
SHORT_STEPS = (20, 90)
PATHS = ('accessibility', 'clipboard')
PASTE_STEP = 35  # what is started now has its effect some ten milliseconds later


@dataclass(frozen=True)
class Fault:
    run: Callable
    short: bool = False
    breaks_the_desktop: bool = False
    inherent: str = ''  # why it cannot be better, where something is lost that nobody can keep
    not_on_sway: str = ''  # why there is no such fault


def fault(name, **options):
    def add(function):
        assert name not in FAULTS, name
        FAULTS[name] = Fault(function, **options)
        return function
    return add


# -- the application: stopped, killed, closed, left at each step of either path

def stop_application(path, editor, step, seconds):
    def run(rig):
        rig.prepare(path, editor)
        rig.fix_with(lambda: rig.stop(rig.editor, seconds), step)
        rig.expect()
    return run


def kill_application(path, editor, step):
    def run(rig):
        rig.prepare(path, editor)
        rig.fix_with(lambda: rig.kill(rig.editor), step)
        rig.expect(text=None)
    return run


def close_application(path, step):
    def run(rig):
        rig.prepare(path)
        rig.fix_with(rig.session.close_front, step)
        rig.close_editor()
        rig.expect(text=None)
    return run


LEFT_BEFORE = 'a fix is one of the window that has the keyboard when the selection is read'
LEFT_BEFORE_FETCH = 'a compositor gives the clipboard to nobody without the keyboard'


def leave_application(path, step):
    """Another window gets the keyboard: nothing of the editor may be written there."""
    def run(rig):
        rig.prepare(path)
        rig.show_other_window()
        other = rig.window_titled('gtk_field')
        rig.fix_with(lambda: rig.activate(other), step)
        time.sleep(0.8)
        rig.activate(other)  # while it has the keyboard its field can be found
        rig.expect_text(rig.other_field, ('nv', 'מה'), 'the other window')  # its own text, where the fix came to read that
        rig.kill(rig.other)
        rig.activate(rig.window_of_editor())
        until(rig.editor_is_active, 'the editor to have the keyboard again')
        if not rig.session.GIVES_CLIPBOARD_TO_ALL and rig.stage.field.text() == '':
            rig.keyboard.press('Control+z')  # it had deleted the selection, and got nothing to put in its place
            rig.expect_text(rig.stage.field, (GARBLED,), 'after undo the text')
            rig.close_editor()
            rig.expect(text=None)
        else:
            rig.expect()
    return run


for _path in PATHS:
    for _step in STEPS:
        _short = _step in SHORT_STEPS
        for _editor in ('mousepad', 'qt6_editor'):
            for _seconds in (0.4, 1.5):
                fault(f'application stopped for {_seconds} s: {_path}, {_editor}, {_step} ms',
                      short=_short and _editor == 'mousepad' and _seconds == 1.5)(stop_application(_path, _editor, _step, _seconds))
            fault(f'application killed: {_path}, {_editor}, {_step} ms',
                  short=_short and _editor == 'mousepad')(kill_application(_path, _editor, _step))
        fault(f'application closed: {_path}, {_step} ms')(close_application(_path, _step))
        fault(f'application left for another window: {_path}, {_step} ms', short=_short,
              inherent=LEFT_BEFORE if _step < PASTE_STEP else LEFT_BEFORE_FETCH if _path == 'clipboard' else '')(
            leave_application(_path, _step))
fault('application stopped for 6 s: clipboard, mousepad, after the paste')(stop_application('clipboard', 'mousepad', 125, 6))


def press_again_while_stopped(step):
    """The application has not come to the paste when the hot key is pressed again: its text is still selected."""
    def run(rig):
        rig.prepare('clipboard')
        rig.press()
        time.sleep(step / 1000)
        os.killpg(rig.editor.pid, signal.SIGSTOP)
        time.sleep(0.3)
        rig.keyboard.press('F2')
        time.sleep(0.7)
        os.killpg(rig.editor.pid, signal.SIGCONT)
        rig.wait_for_end()
        time.sleep(1.0)
        rig.expect()
    return run


for _step in (40, 60, 80, 100, 120):
    fault(f'application stopped and the hot key pressed again: {_step} ms', short=_step == 80)(press_again_while_stopped(_step))


# -- the owner of the clipboard

def own(*arguments, target='UTF8_STRING', clipboard=KEPT, may_be_refused=True, may_be_pasted=()):
    """A fix by the clipboard while somebody owns it who behaves like that."""
    def run(rig):
        rig.prepare('clipboard', clipboard=arguments)
        rig.press()
        rig.wait_for_end()
        if clipboard is not None:
            rig.expect_clipboard(clipboard, target)
        rig.expect_text(rig.stage.field, ((GARBLED, MEANT) if may_be_refused else (MEANT,)) + may_be_pasted, 'the text')
        rig.own_clipboard('--target', 'UTF8_STRING', KEPT)  # a sound one, for the next fix
        rig.expect()
    return run


TEXT = ('--target', 'UTF8_STRING', KEPT)
ANNOUNCED = 'a compositor announces the types; nobody is asked for them'
NOBODY_HOLDS = 'between the paste shortcut and the fetch nobody can hold the clipboard'
fault('owner offers nothing but text', short=True)(own(*TEXT, may_be_refused=False))
fault('owner offers an empty text')(own('--target', 'UTF8_STRING', '', clipboard=None, may_be_refused=False))
fault('owner offers no type at all')(own(clipboard=None))
fault('owner does not answer what it offers', short=True, not_on_sway=ANNOUNCED)(own(*TEXT, '--silent', 'TARGETS'))
fault('owner does not answer for its text')(own(*TEXT, '--target', 'text/html', 'x', '--silent', 'UTF8_STRING', clipboard='x', target='text/html'))
fault('owner does not answer for a second type')(own(*TEXT, '--target', 'text/html', 'x', '--silent', 'text/html'))
fault('owner refuses what it offers')(own(*TEXT, '--target', 'text/html', 'x', '--refused', 'text/html'))
fault('owner refuses everything')(own(*TEXT, '--refused', 'UTF8_STRING', clipboard=None))
fault('owner does not know TARGETS', not_on_sway=ANNOUNCED)(own(*TEXT, '--no-targets'))
for _delay in (30, 150, 450, 900, 3000):
    fault(f'owner answers {_delay} ms late', short=_delay == 150)(own(*TEXT, '--delay', _delay))
    fault(f'owner of twelve types answers each {_delay} ms late')(own(*TEXT, '--numbered', 12, '--delay', _delay))
for _name in ('TARGETS', 'UTF8_STRING'):
    fault(f'owner dies when asked for {_name}', inherent='a clipboard dies with its owner',
          not_on_sway=ANNOUNCED if _name == 'TARGETS' else '')(
        own(*TEXT, '--deadly', _name, clipboard=None))
for _piece in (0, 1, 7):
    fault(f'owner dies at piece {_piece} of a megabyte', short=_piece == 1, inherent='a clipboard dies with its owner')(
        own('--sized', 'image/png', 1 << 20, '--deadly-piece', _piece, clipboard=None))
    fault(f'owner falls silent at piece {_piece} of a megabyte')(
        own(*TEXT, '--sized', 'image/png', 1 << 20, '--last-piece', _piece))
for _count in (100, 300, 1000):
    fault(f'owner offers {_count} types')(own(*TEXT, '--numbered', _count))
for _count in (1000, 100_000, 1_000_000):
    fault(f'owner tells {_count} numbers for types', short=_count == 100_000, not_on_sway=ANNOUNCED)(own(*TEXT, '--targets-bytes', _count))
for _megabytes in (1, 16, 64, 256):
    fault(f'owner offers {_megabytes} MB', short=_megabytes == 16)(own(*TEXT, '--sized', 'image/png', _megabytes << 20))
for _every in (5, 20, 100, 300):
    fault(f'owner copies again every {_every} ms', short=_every == 20, inherent=NOBODY_HOLDS)(
        own(*TEXT, '--again', _every, may_be_pasted=(KEPT,)))
for _bytes, _name in (('\x1b]0;x\x07\x00', 'control characters'), ('\u202e\u2066\ufffe', 'signs of direction'), ('\U0001f468\u200d', 'half a cluster')):
    fault(f'owner offers {_name}')(own('--target', 'UTF8_STRING', _bytes.replace('\x00', ''), clipboard=_bytes.replace('\x00', '')))


def owner_copies_at(step, text):
    """Somebody else copies during the fix: that is never taken for the selection, where the display tells who it is. From the paste shortcut on it may be
    pasted, because the application asks whoever owns the clipboard by then."""
    def run(rig):
        rig.prepare('clipboard')
        rig.fix_with(lambda: rig.own_clipboard('--target', 'UTF8_STRING', text), step)
        # Where nobody tells who copies, the application may have copied last and paste that by itself. Nobody fetches then, and for
        # two seconds the agent waits for the fetch and lets no other fix copy.
        time.sleep(0.8 if rig.session.TELLS_WHO_COPIES else 2.2)
        taken = () if rig.session.TELLS_WHO_COPIES else ('עלים',)
        rig.expect(text=(GARBLED, MEANT, *taken, text) if step >= PASTE_STEP else (GARBLED, MEANT, *taken), clipboard=None)
    return run


def user_copies_after(step):
    def run(rig):
        rig.prepare('clipboard')
        rig.fix_with(lambda: None)
        left = step / 1000
        time.sleep(left)
        rig.stage.put_on_clipboard('copied after the fix')
        rig.owner = rig.stage.owner
        time.sleep(1.0)
        rig.expect(clipboard='copied after the fix')
    return run


for _step in STEPS[:-2]:
    fault(f'another program copies: {_step} ms', short=_step == 5,
          inherent=NOBODY_HOLDS if _step >= PASTE_STEP else 'a compositor does not tell who has copied')(
        owner_copies_at(_step, 'gkho'))
for _step in (0, 30, 100, 200, 300, 450, 550):
    fault(f'the user copies {_step} ms after the fix', short=_step == 100)(user_copies_after(_step))


# -- the keyboard

MODIFIERS = ('Shift', 'Control', 'Alt', 'Super')


def hold(keys, seconds):
    def run(rig):
        rig.prepare('clipboard')
        before = rig.fixes()
        rig.keyboard.press('F2')
        for key in keys:
            rig.keyboard.down(key)
        time.sleep(seconds)
        for key in reversed(keys):
            rig.keyboard.up(key)
        rig.fixes_before = before
        rig.wait_for_end()
        if rig.keyboard.locks():
            rig.keyboard.press('CapsLock')
        rig.keyboard.press('Escape')  # a menu that the modifier has opened
        rig.expect()
    return run


for _modifier in MODIFIERS:
    for _seconds in (0.02, 0.1, 0.5, 1.2):
        fault(f'{_modifier} held for {_seconds} s', short=_seconds == 0.1)(hold((_modifier,), _seconds))
fault('Control and Shift held for 0.3 s')(hold(('Control', 'Shift'), 0.3))


def lock(key, path):
    def run(rig):
        rig.prepare(path)
        rig.keyboard.press(key)
        try:
            rig.fix_with(lambda: None)
        finally:
            rig.keyboard.press(key)
        rig.expect()
    return run


for _path in PATHS:
    for _key in ('CapsLock', 'NumLock'):
        fault(f'{_key} on: {_path}', short=_path == 'clipboard')(lock(_key, _path))


def remap(expression):
    """A key that the agent plays types something else."""
    def run(rig):
        rig.prepare('clipboard')
        subprocess.run(['xmodmap', '-e', expression], check=True)
        try:
            rig.fix_with(lambda: None)
            rig.expect(agent='')
        finally:
            rig.session.set_layouts('us,il')
        rig.expect()
    return run


for _expression in ('keycode 118 = Delete', 'keycode 118 = BackSpace', 'keycode 118 = Return', 'keycode 118 = NoSymbol',
                    'keycode 118 = a', 'keycode 118 = F13', 'keycode 119 = Insert', 'keycode 37 = a', 'keycode 50 = a'):
    fault(f'remapped: {_expression}', short='Delete' in _expression,
          not_on_sway='the keys that the agent plays have a keymap of its own')(remap(_expression))


def change_layouts(layouts, path, step):
    def run(rig):
        rig.prepare(path)
        rig.fix_with(lambda: rig.session.set_layouts(layouts), step)
        rig.session.set_layouts('us,il')
        rig.expect()
    return run


for _path in PATHS:
    for _layouts in ('il,us', 'us', 'il', 'ru,us'):
        for _step in (0, 50, 120):
            fault(f'layouts become {_layouts}: {_path}, {_step} ms', short=_layouts == 'il,us' and _step == 50)(
                change_layouts(_layouts, _path, _step))


def presses(count, seconds, path):
    """Only the first press and those after its fix may convert; the text ends as one of the two."""
    def run(rig):
        rig.prepare(path)
        rig.fixes_before = rig.fixes()
        for _ in range(count):
            rig.keyboard.press('F2')
            time.sleep(seconds / count)
        rig.wait_for_end()
        began = time.monotonic()
        done = -1
        while done != rig.fixes():
            done = rig.fixes()
            time.sleep(1.0)
            if time.monotonic() - began > 8:
                raise Lost(f'the presses are still worked off after 8 s, {done - rig.fixes_before} fixes so far')
        rig.expect()
    return run


for _path in PATHS:
    for _count, _seconds in ((2, 0.0), (10, 0.5), (30, 0.3)):
        fault(f'{_count} presses in {_seconds} s: {_path}', short=_count == 10)(presses(_count, _seconds, _path))


def undo_to_the_text(rig):
    """Where the fix had inserted its text before it saw that the old one was gone, and had taken it out again, these are two
    steps of the editor's undo before the letter's."""
    for _ in range(3):
        before = rig.stage.field.text()
        if before == GARBLED:
            break
        rig.keyboard.press('Control+z')
        until(lambda: rig.stage.field.text() != before, 'undo to change the text')
    rig.expect_text(rig.stage.field, (GARBLED,), 'after undo the text')


def type_after(milliseconds, path):
    """What is typed right after the hot key lands beside the text. As long as the text is still selected it takes its
    place, as it would without the agent: then undo brings the text back."""
    def run(rig):
        rig.prepare(path)
        rig.press()
        time.sleep(milliseconds / 1000)
        rig.keyboard.press('1')
        rig.wait_for_end()
        text = rig.stage.field.text()
        if text == '1':
            undo_to_the_text(rig)
        elif text not in [where for whole in (MEANT, GARBLED) for where in (whole + '1', '1' + whole)]:
            raise Lost(f'the text is {text!r}')
        rig.close_editor()
        rig.expect(text=None)
    return run


for _path in PATHS:
    for _ms in (0, 20, 60, 120, 200):
        fault(f'a letter is typed {_ms} ms after the hot key: {_path}',
              inherent='a letter takes the place of what is selected' if _ms <= 60 else '')(type_after(_ms, _path))


# -- the services of the desktop

def process_of(name):
    """The newest process by that name on this display's bus; each desktop's have its address in their environment."""
    address = os.environ['DBUS_SESSION_BUS_ADDRESS']
    for number in sorted((int(n) for n in os.listdir('/proc') if n.isdigit()), reverse=True):
        try:
            with open(f'/proc/{number}/comm', encoding='utf-8') as comm, open(f'/proc/{number}/environ', 'rb') as environ:
                if comm.read().strip() == name[:15] and address.encode() in environ.read():
                    return number
        except OSError:
            continue
    raise Lost(f'there is no {name}')


def accessibility_bus():
    """The bus daemon that the launcher has started."""
    launcher = process_of('at-spi-bus-launcher')
    children = subprocess.run(['pgrep', '-P', str(launcher)], capture_output=True, text=True, check=True).stdout.split()
    return int(children[0])


def session_bus(rig):
    return next(p.pid for p in rig.session.processes if p.args[0] == 'dbus-daemon')


MANAGES = 'the compositor manages the windows; see the faults of the display'
SERVICES = {
    'session bus': session_bus,
    'accessibility bus': lambda rig: accessibility_bus(),
    'registry': lambda rig: process_of('at-spi2-registryd'),
    'window manager': lambda rig: next(p.pid for p in rig.session.processes if p.args[0] == 'openbox'),
}


def stop_service(service, path, step, seconds):
    def run(rig):
        rig.prepare(path)
        number = SERVICES[service](rig)

        def stop():
            os.kill(number, signal.SIGSTOP)
            time.sleep(seconds)
            os.kill(number, signal.SIGCONT)
        rig.fix_with(stop, step)
        rig.expect()
    return run


for _service in SERVICES:
    for _path in PATHS:
        for _step, _seconds in ((0, 0.3), (0, 2.0), (60, 2.0)):
            _short = _step == 60 and _path == 'clipboard' and _service in ('session bus', 'window manager')
            fault(f'{_service} stopped for {_seconds} s: {_path}, {_step} ms', short=_short,
                  not_on_sway=MANAGES if _service == 'window manager' else '')(
                stop_service(_service, _path, _step, _seconds))


def kill_service(service, path, step, breaks):
    def run(rig):
        rig.prepare(path)
        number = SERVICES[service](rig)
        rig.fix_with(lambda: os.kill(number, signal.SIGKILL), step)
        if breaks:  # the fields can't be looked at any more; the agent lives and has let go of every key
            rig.expect(text=None, agent='')
            if not rig.agent_lives():
                raise Lost('the agent has ended')
        else:
            rig.expect()
    return run


for _service, _breaks in (('registry', True), ('accessibility bus', True), ('session bus', True)):
    for _path in PATHS:
        for _step in (0, 60):
            fault(f'{_service} killed: {_path}, {_step} ms', breaks_the_desktop=True, short=_step == 60 and _path == 'clipboard')(
                kill_service(_service, _path, _step, _breaks))


def restart_window_manager(path, step):
    def run(rig):
        rig.prepare(path)
        manager = next(p for p in rig.session.processes if p.args[0] == 'openbox')

        def restart():
            rig.kill(manager)
            rig.session.processes.remove(manager)
            rig.session.start(['openbox'])
        rig.fix_with(restart, step)
        until(rig.session.window_manager_runs, 'the window manager')
        rig.close_editor()
        rig.expect(text=None)
    return run


for _path in PATHS:
    for _step in (0, 60, 120):
        fault(f'window manager restarted: {_path}, {_step} ms', not_on_sway=MANAGES)(restart_window_manager(_path, _step))


def server(action, path, step, seconds=0.0):
    def run(rig):
        rig.prepare(path)
        display = rig.session.server
        if action == 'kill':
            rig.keyboard.press('F2')
            time.sleep(step / 1000)
            display.kill()
            rig.expect_end()
            return

        def stop():
            display.send_signal(signal.SIGSTOP)
            time.sleep(seconds)
            display.send_signal(signal.SIGCONT)
        rig.fix_with(stop, step)
        rig.expect()
    return run


for _path in PATHS:
    for _step in (0, 60, 120):
        fault(f'display stopped for 2.0 s: {_path}, {_step} ms', short=_step == 60 and _path == 'clipboard')(
            server('stop', _path, _step, 2.0))
        fault(f'display killed: {_path}, {_step} ms', breaks_the_desktop=True, short=_step == 60 and _path == 'clipboard')(
            server('kill', _path, _step))


# -- signals

def signalled(number, path, step):
    """The agent ends within a second of its work's end, and what the user has copied can still be pasted."""
    def run(rig):
        rig.prepare(path)
        rig.press()
        time.sleep(step / 1000)
        rig.stage.agent.send_signal(number)
        sent = time.monotonic()
        rig.expect_clipboard(KEPT, 'UTF8_STRING')
        rig.expect_soon(lambda: not rig.agent_lives(), lambda: 'the agent has not ended', 6.0)
        if rig.stage.agent.returncode != 0:
            raise Lost(f'the agent ended with {rig.stage.agent.returncode} after {time.monotonic() - sent:.1f} s')
        rig.expect_text(rig.stage.field, (GARBLED, MEANT), 'the text')
        rig.expect_soon(lambda: not rig.keyboard.pressed(), lambda: f'keys are down: {rig.keyboard.pressed()}')
        rig.settings = None
        rig.prepare(path)
        rig.expect()
    return run


def killed(path, step):
    def run(rig):
        rig.prepare(path)
        rig.press()
        time.sleep(step / 1000)
        rig.stage.agent.kill()
        rig.stage.agent.wait()
        both = (GARBLED + MEANT,) if path == 'accessibility' else ()  # the old text goes once the new one is seen to stand
        rig.expect_text(rig.stage.field, (GARBLED, MEANT, *both), 'the text')
        for key in ('Control', 'Shift'):  # what a killed program has pressed nobody lets go but the next one who presses it
            rig.keyboard.press(key)
        rig.settings = None
        rig.prepare(path)
        rig.expect()
    return run


for _path in PATHS:
    for _step in STEPS[::2]:
        for _signal in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            fault(f'{_signal.name}: {_path}, {_step} ms', short=_signal == signal.SIGTERM and _step == 90)(
                signalled(_signal, _path, _step))
        fault(f'SIGKILL: {_path}, {_step} ms',
              inherent='a clipboard dies with its owner' if _path == 'clipboard' else
              'killed between its two steps the agent leaves both texts')(killed(_path, _step))


# -- files

def with_file(kind, which):
    """The log or the settings are something else than a file."""
    def run(rig):
        home = rig.session.home
        place = home / 'Library' / 'Logs' / 'Lexwend.log' if which == 'log' else home / '.config' / 'lexwend' / 'settings'
        if rig.agent_lives():
            rig.session.end(rig.stage.agent)
        rig.settings = None
        kept = place.read_bytes() if place.exists() else b''
        place.parent.mkdir(parents=True, exist_ok=True)
        place.unlink(missing_ok=True)
        make(kind, place)
        agent = rig.session.start([str(rig.stage.agent_path)], stderr=subprocess.PIPE)
        try:
            rig.stage.agent, rig.settings = agent, {}
            # Its hot key shows that it runs: a press changes the text, whatever the log can tell.
            if rig.editor is None or rig.editor.poll() is not None:
                rig.reopen()
            rig.stage.select_all()
            deadline = time.monotonic() + 10
            while rig.stage.field.text() != MEANT:
                if agent.poll() is not None:
                    raise Lost(f'the agent ended with {agent.returncode}')
                if time.monotonic() > deadline:
                    raise Lost('no fix came about')
                rig.keyboard.press('F2')
                try:
                    until(lambda: rig.stage.field.text() == MEANT, '', 1.5)
                except Exception:  # the key may not have been registered yet
                    rig.stage.select_all()
        finally:
            rig.session.end(agent)
            rig.settings = None
            remove(place)
            place.parent.chmod(0o700)
            if kept:
                place.write_bytes(kept)
            rig.close_editor()
        rig.prepare()
        rig.expect()
    return run


def make(kind, place):
    if kind == 'a pipe':
        os.mkfifo(place)
    elif kind == 'a folder':
        place.mkdir()
    elif kind == 'a device that never ends':
        place.symlink_to('/dev/zero')
    elif kind == 'a device that is full':
        place.symlink_to('/dev/full')
    elif kind == 'a terminal':
        place.symlink_to('/dev/tty')
    elif kind == 'a link to itself':
        place.symlink_to(place)
    elif kind == 'a link to nothing':
        place.symlink_to('/nonexistent/file')
    elif kind == 'a socket':
        import socket
        socket.socket(socket.AF_UNIX).bind(str(place))
    elif kind == '64 MB of zeros':
        with open(place, 'wb') as file:
            file.truncate(64 << 20)
    elif kind == 'random bytes':
        place.write_bytes(os.urandom(4096))
    elif kind == 'empty':
        place.write_bytes(b'')
    else:
        raise Lost(f'unknown kind {kind}')


def remove(place):
    if place.is_dir() and not place.is_symlink():
        place.rmdir()
    else:
        place.unlink(missing_ok=True)


for _which in ('log', 'settings'):
    for _kind in ('a pipe', 'a folder', 'a device that never ends', 'a device that is full', 'a terminal', 'a link to itself',
                  'a link to nothing', 'a socket', '64 MB of zeros', 'random bytes', 'empty'):
        fault(f'the {_which}: {_kind}', short=_kind == 'a pipe')(with_file(_kind, _which))


def hostile_title(title):
    """Another program's words neither forge a line of the log nor carry escape sequences."""
    def run(rig):
        rig.prepare()
        rig.show_window_named(title)
        before = rig.session.log()
        rig.fix_with(lambda: None)
        said = rig.session.log()[len(before):]
        for line in said.splitlines():
            if not (line[:4].isdigit() and line[4] == '-') or any(ord(c) < 32 or 127 <= ord(c) < 160 for c in line) or len(line) > 400:
                raise Lost(f'the log holds {line!r}')
        rig.kill(rig.other)
        rig.close_editor()
        rig.expect(text=None)
    return run


for _name, _title in (('a line of the log', 'x\n2026-01-01 00:00:00.000 fix: success target=he'), ('escape sequences', 'x\x1b]0;y\x07\x1b[2J'),
                      ('ten thousand letters', 'x' * 10_000), ('control characters of the second kind', 'x\u0085\u009b')):
    fault(f'a window is named by {_name}', short=_name == 'a line of the log',
          not_on_sway='a name has 4 kB at most' if len(_title) > 4000 else '')(hostile_title(_title))
