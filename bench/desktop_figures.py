#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Figures of the agent on a private desktop: latency, wake-ups, memory, time to the tray, and many fixes in a row.

usage: desktop_figures.py AGENT [--display x11|sway|kwin|gnome] [--qt6-editor PROGRAM] [--only NAME]... [--samples N] [--fixes N]
                          [--idle SECONDS] [--no-install]

sway needs the target wayland_typist of the agent's build. KWin and GNOME have the figures taken in roots of their own:
`tests/desktops/kwin figures` and `tests/desktops/gnome figures`, with options as here.

Each figure is printed with its goal and the verdict, and with the machine's load average at that moment. Exits 1 when one
misses its goal. On a machine that does other work too, `chrt -r 5` in front of the command keeps that out. What the figures
need beyond ./run is installed first (scripts/setup.sh desktop figures). The figure `applications` has no goals, needs
`scripts/setup.sh test large`, and is taken only when it is named.
"""
import argparse
import os
import select
import shutil
import statistics
import subprocess
import sys
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / 'tests' / 'desktop'))

from displays import DISPLAYS, make_session  # noqa: E402
from large_apps import APPLICATIONS, open_application  # noqa: E402
from panel import WATCHER, Panel  # noqa: E402
from session import DEADLINE_SECONDS, DesktopError, call, run_scene, until  # noqa: E402
from stage import Stage  # noqa: E402

LATIN, HEBREW = 'akuo nv akunl', 'שלום מה שלומך'
WARM_UP = 20  # fixes after which caches and allocators have settled
MEGABYTE_IN_KILOBYTES = 1024
QUIET_SECONDS = 20.0  # longer than the threads of a start are kept for more work
FIXED_PAUSES = 50  # milliseconds that a fix through the clipboard waits whatever the application does
missed = []


def figure(name, value, unit, limit, detail=''):
    """A row of a table."""
    good = value <= limit
    if not good:
        missed.append(name)
    print(f'| {name} | <= {limit:g} {unit} | {value:.1f} {unit} (load {os.getloadavg()[0]:.0f}{detail}) | {"reached" if good else "missed"} |',
          flush=True)


def spread(values):
    ordered = sorted(values)
    return f'; {len(ordered)} samples, fastest {ordered[0]:.1f}, 90 % within {ordered[int(len(ordered) * 0.9) - 1]:.1f}, slowest {ordered[-1]:.1f}'


def hear(condition, what):
    """Listens until the condition holds, which is asked at each event and not now and then."""
    from gi.repository import GLib
    late = []
    deadline = GLib.timeout_add_seconds(int(DEADLINE_SECONDS), lambda: late.append(True) or True)
    while not condition() and not late:
        GLib.MainContext.default().iteration(True)
    GLib.source_remove(deadline)
    if late:
        raise DesktopError(f'waited in vain for {what}')


class Changes:
    """Hears when a text was inserted and when one was deleted, as the editor announces it."""

    def __init__(self):
        import gi
        gi.require_version('Atspi', '2.0')
        from gi.repository import Atspi, GLib
        self.context = GLib.MainContext.default()
        self.listener = Atspi.EventListener.new(self._heard)
        for kind in ('insert', 'delete'):
            self.listener.register(f'object:text-changed:{kind}')
        self.forget()

    def forget(self):
        while self.context.iteration(False):
            pass
        self.seen = {}

    def _heard(self, event):
        kind = 'insert' if ':insert' in event.type else 'delete'
        self.seen[kind] = time.time()

    def both(self):
        """Waits for an insertion and a deletion; the time of the later one."""
        hear(lambda: len(self.seen) == 2, 'the editor to announce the change')
        return max(self.seen.values())


class Calls:
    """What the agent asks of the editor, and when it is answered, as the accessibility bus carries it."""
    EDITING = b'org.a11y.atspi.EditableText'

    def __init__(self, session):
        address = call('org.a11y.Bus', '/org/a11y/bus', 'org.a11y.Bus', 'GetAddress')[0]
        command = ['stdbuf', '-oL', 'dbus-monitor', '--address', address, '--profile', "type='method_call'", "type='method_return'"]
        self.output = session.start(command, stdout=subprocess.PIPE).stdout.fileno()
        os.read(self.output, 65536)  # it hears from now on
        self.heard = b''

    def _heard_since(self, since):
        """Calls and answers until one that edits is among them, and then all that there are; (time, kind, fields)."""
        while True:
            fields = [line.split(b'\t') for line in self.heard.split(b'\n')[:-1]]
            messages = [(float(f[1]), f[0], f[2:]) for f in fields if f[0] in (b'mc', b'mr') and float(f[1]) >= since]
            edits = any(kind == b'mc' and f[4] == self.EDITING for _, kind, f in messages)
            if not select.select([self.output], [], [], 0 if edits else DEADLINE_SECONDS)[0]:
                break
            self.heard += os.read(self.output, 65536)
        self.heard = b''
        if not edits:
            raise DesktopError('waited in vain for the agent to write')
        return messages

    def last_write(self, since):
        """The time of the last call that edits, and how many seconds before it some call had no answer yet."""
        messages = self._heard_since(since)
        written, agent = max((moment, f[1]) for moment, kind, f in messages if kind == b'mc' and f[4] == self.EDITING)
        unanswered, waited, begun = set(), 0, 0
        for moment, kind, f in messages:
            if moment > written:
                break
            if kind == b'mc' and f[1] == agent:  # serial, sender, destination, path, interface, member
                begun = begun if unanswered else moment
                unanswered.add(f[0])
            elif kind == b'mr' and f[2] == agent and f[3] in unanswered:  # serial, sender, destination, serial of the call
                unanswered.remove(f[3])
                waited += 0 if unanswered else moment - begun
        return written, waited


class Editor:
    """An application with one line of text, and fixes in it in alternating directions."""

    def __init__(self, session, arguments, compat):
        self.stage = Stage(session, arguments.agent, arguments.qt6_editor)
        self.stage.start_agent(compatMode=compat)
        self.compat = compat
        self.text = LATIN

    def open(self, application='mousepad'):
        if application in APPLICATIONS:
            open_application(self.stage, application, self.text)
            until(lambda: self.stage.field.text() == self.text, f'{application} to show the text')
        else:
            self.stage.open(application, self.text)

    def fix(self, changes=None):
        """The times of the press and, when changes are listened to, of the replaced text."""
        meant = HEBREW if self.text == LATIN else LATIN
        self.stage.select_all()
        if changes:
            changes.forget()
        # Some keyboards pause between two events; what the editor announces meanwhile is heard at once.
        press = threading.Thread(target=self.stage.keyboard.press, args=('F2',))
        pressed = time.time()
        press.start()
        replaced = changes.both() if changes else pressed
        press.join()
        until(lambda: self.stage.field.text() == meant, f'the field to hold "{meant}"')
        self.stage.expect_group(1 if meant == HEBREW else 0)
        self.text = meant
        return pressed, replaced


def milliseconds(times):
    begin, end = times
    return (end - begin) * 1000


def memory(process, kind='VmRSS'):
    """Resident kilobytes; those of no file are `RssAnon`."""
    for line in Path(f'/proc/{process.pid}/status').read_text().splitlines():
        if line.startswith(f'{kind}:'):
            return int(line.split()[1])
    raise AssertionError('the agent has ended')


def switches(process):
    """By thread, how often it gave up the processor by itself, which is once for each time it was woken."""
    counts = {}
    for status in Path(f'/proc/{process.pid}/task').glob('*/status'):
        for line in status.read_text().splitlines():
            if line.startswith('voluntary_ctxt_switches:'):
                counts[status.parent.name] = int(line.split()[1])
    return counts


def wakeups(before, after):
    """A thread that has ended was woken for it."""
    return sum(count - before.get(thread, 0) for thread, count in after.items()) + len(before.keys() - after.keys())


class Picture:
    """On the clipboard, of which nothing can be lost unseen."""
    TYPE = 'image/png'

    def __init__(self, session, size):
        self.session, self.contents = session, os.urandom(size)
        path = session.folder / 'picture'
        path.write_bytes(self.contents)
        with open(path, 'rb') as file:
            session.start(session.copy(self.TYPE), stdin=file)
        self.expect()

    def is_there(self):
        found = subprocess.run(self.session.paste(self.TYPE), capture_output=True, check=False, timeout=DEADLINE_SECONDS)
        return found.stdout == self.contents

    def expect(self):
        until(self.is_there, 'the clipboard to hold the picture, byte for byte')


def measured(name, values, limit):
    """The first one meets programs that have just started."""
    figure(f'{name}, median', statistics.median(values[1:]), 'ms', limit, f'{spread(values[1:])}; the first {values[0]:.1f}')


def accessibility_in(arguments, application):
    if not shutil.which(application):  # the roots of the desktops have not every one
        print(f'| {application} by accessibility | none | not taken: it is not installed here | |', flush=True)
        return
    with make_session(arguments.display, arguments.agent) as session:
        changes = Changes()
        editor = Editor(session, arguments, False)
        editor.open(application)
        calls = Calls(session)
        shares, answers, wholes = [], [], []
        for _ in range(arguments.samples + 1):
            pressed, replaced = editor.fix(changes)
            written, waited = calls.last_write(pressed)
            shares.append(milliseconds((pressed, written)))
            answers.append(waited * 1000)
            wholes.append(milliseconds((pressed, replaced)))
        # What the application takes is the rest, until its announcement is heard.
        measured(f'{application} by accessibility, key to last write', shares, 4)
        print(f'| of that, waiting for answers, median | none | {statistics.median(answers[1:]):.1f} ms | |', flush=True)
        measured(f'{application} by accessibility, key to text', wholes, 8)


def accessibility(arguments):
    accessibility_in(arguments, 'mousepad')


def accessibility_in_featherpad(arguments):
    accessibility_in(arguments, 'featherpad')


def clipboard(arguments):
    with make_session(arguments.display, arguments.agent) as session:
        changes = Changes()
        editor = Editor(session, arguments, True)
        picture = Picture(session, 10000)
        editor.open()
        values = []
        for _ in range(arguments.samples + 1):
            values.append(milliseconds(editor.fix(changes)) - FIXED_PAUSES)
            picture.expect()
        measured(f'mousepad by clipboard, key to text beyond {FIXED_PAUSES} ms of pauses', values, 10)


def applications(arguments):
    """No targets: what each application takes, by the path that serves it."""
    if not arguments.application:
        names = list(APPLICATIONS) + [name for name in Stage.EDITORS if name != 'qt6_editor' or arguments.qt6_editor]
        failed = [name for name in names if run_alone(arguments, 'applications', '--application', name) != 0]
        assert not failed, f'these could not be measured: {", ".join(failed)}'
        return
    with make_session(arguments.display, arguments.agent) as session:
        changes = Changes()
        editor = Editor(session, arguments, False)
        picture = Picture(session, 10000)
        editor.open(arguments.application)
        values = []
        for _ in range(arguments.samples // 5 + 1):
            values.append(milliseconds(editor.fix(changes)))
            picture.expect()
        paths = {line.partition(' AX path: ')[2] for line in session.log().splitlines() if ' AX path: ' in line}
        print(f'{arguments.application}: {statistics.median(values[1:]):.1f} ms, median (load {os.getloadavg()[0]:.1f}'
              f'{spread(values[1:])}); Accessibility: {", ".join(sorted(paths))}', flush=True)


def idle(arguments):
    with make_session(arguments.display, arguments.agent) as session:
        # A desktop has a system bus, and where it is missing the agent looks for it now and then.
        bus = session.start(['dbus-daemon', '--session', '--nofork', '--print-address=1'], stdout=subprocess.PIPE, text=True)
        os.environ['DBUS_SYSTEM_BUS_ADDRESS'] = bus.stdout.readline().strip()
        panel = Panel(session)
        panel.start_where_there_is_none()
        agent = session.start_agent(arguments.agent)
        panel.expect_item()

        def quiet():
            before = switches(agent)
            time.sleep(QUIET_SECONDS)
            return switches(agent) == before
        until(quiet, 'the start to be over', 10 * QUIET_SECONDS)
        before = switches(agent)
        time.sleep(arguments.idle)
        figure('wake-ups of the idle agent in a minute', wakeups(before, switches(agent)) * 60 / arguments.idle, '', 0)
        figure('resident memory of the idle agent', memory(agent) / MEGABYTE_IN_KILOBYTES, 'MB', 32,
               f'; {memory(agent, "RssAnon") / MEGABYTE_IN_KILOBYTES:.1f} MB its own, the rest files, most of them shared')


class Arrivals:
    """Hears when an item comes into the panel, whoever draws it."""

    def __init__(self):
        from gi.repository import Gio
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.bus.signal_subscribe(WATCHER, WATCHER, 'StatusNotifierItemRegistered', None, None, Gio.DBusSignalFlags.NONE, self._heard)
        self.last = None

    def _heard(self, *_):
        self.last = time.monotonic()

    def next(self):
        """Its monotonic time."""
        self.last = None
        hear(lambda: self.last, 'an item in the panel')
        return self.last


def start(arguments):
    with make_session(arguments.display, arguments.agent) as session:
        panel = Panel(session)
        panel.start_where_there_is_none()
        session.end(session.start_agent(arguments.agent))  # by now it has what it is granted there
        arrivals = Arrivals()
        times = []
        for _ in range(11):
            until(lambda: not panel.items(), 'the item to go')
            begun = time.monotonic()
            agent = session.start([str(arguments.agent)])
            times.append((arrivals.next() - begun) * 1000)
            until(lambda: len(panel.items()) == 1, 'the item in the panel')
            session.end(agent)
        figure('start to the item in the panel, median', statistics.median(times), 'ms', 40, spread(times))


def many(arguments, name, compat):
    with make_session(arguments.display, arguments.agent) as session:
        editor = Editor(session, arguments, compat)
        picture = Picture(session, 300000)
        editor.open()
        for number in range(arguments.fixes + WARM_UP):
            editor.fix()
            if compat:
                picture.expect()
            if number + 1 == WARM_UP:
                before = memory(editor.stage.agent)
        assert picture.is_there(), 'the clipboard is another one'
        log = session.log()
        assert log.count('fix: success') == arguments.fixes + WARM_UP and 'fix: failed' not in log, log[-2000:]
        growth = (memory(editor.stage.agent) - before) / MEGABYTE_IN_KILOBYTES
        figure(f'memory grown in {arguments.fixes} fixes {name}, nothing lost', growth, 'MB', 1,
               f'; {memory(editor.stage.agent) / MEGABYTE_IN_KILOBYTES:.1f} MB resident at the end')


def many_by_accessibility(arguments):
    many(arguments, 'by Accessibility', False)


def many_through_the_clipboard(arguments):
    many(arguments, 'through the clipboard', True)


FIGURES = [accessibility, accessibility_in_featherpad, clipboard, idle, start, many_by_accessibility, many_through_the_clipboard]


def run_alone(arguments, name, *more):
    """In a process of its own, because the accessibility library binds to the first bus that it sees."""
    command = [sys.executable, '-B', __file__, str(arguments.agent), '--display', arguments.display, '--no-install', '--only', name,
               '--samples', str(arguments.samples), '--fixes', str(arguments.fixes), '--idle', str(arguments.idle), *more]
    if arguments.qt6_editor:
        command += ['--qt6-editor', str(arguments.qt6_editor)]
    return subprocess.run(command, check=False).returncode


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('agent', type=lambda path: Path(path).resolve())
    parser.add_argument('--display', choices=DISPLAYS, default='x11')
    parser.add_argument('--only', action='append', choices=[f.__name__ for f in [*FIGURES, applications]])
    parser.add_argument('--no-install', action='store_true')
    parser.add_argument('--samples', type=int, default=50)
    parser.add_argument('--fixes', type=int, default=500)
    parser.add_argument('--idle', type=float, default=60, metavar='SECONDS')
    parser.add_argument('--qt6-editor', type=lambda path: Path(path).resolve())
    parser.add_argument('--application', help='only this one of the applications')
    arguments = parser.parse_args()
    if not arguments.no_install:
        subprocess.run([ROOT / 'scripts/setup.sh', 'desktop', 'figures'], check=True)
    chosen = arguments.only or [f.__name__ for f in FIGURES]
    if len(chosen) > 1:
        print('| what | goal | figure | verdict |\n|---|---|---|---|', flush=True)
        sys.exit(1 if [name for name in chosen if run_alone(arguments, name) != 0] else 0)
    globals()[chosen[0]](arguments)
    if missed:
        sys.exit(1)


if __name__ == '__main__':
    run_scene(main)
