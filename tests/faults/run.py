#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Tries faults on private desktops: one line a fault, and a last line with the counts.

usage: run.py AGENT QT6_EDITOR OWNER [--display x11|sway] [--in-memory PROGRAM] [--short] [--only TEXT] [--jobs N] [--list]

A fault that is inherent to the system is tried as well; its line tells the reason. Each desktop is a process of its own,
which goes through its share of the faults; a fault that breaks the desktop, or is lost, is the last one there.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile
import threading
import traceback
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
sys.path.insert(0, str(HERE.parent / 'desktop'))

from table import FAULTS  # noqa: E402

SECONDS_PER_FAULT = 90


def work(arguments):
    """Tries the named faults on one desktop; a line of JSON for each."""
    from displays import make_session
    from rig import Lost, Rig
    names = json.loads(arguments.work)
    agent = Path(arguments.agent).resolve()
    with make_session(arguments.display, agent) as session:
        rig = Rig(session, agent, Path(arguments.editor).resolve(), Path(arguments.owner).resolve())
        for name in names:
            fault = FAULTS[name]
            print(json.dumps({'begins': name}), flush=True)
            lost = None
            try:
                fault.run(rig)
            except Lost as error:
                lost = str(error)
            except Exception as error:  # the suite's own trouble counts as well: nothing was proven
                lost = f'{type(error).__name__}: {error}\n{traceback.format_exc(limit=-3)}'
            print(json.dumps({'name': name, 'lost': lost, 'log': rig.log_end() if lost else None}), flush=True)
            if lost or fault.breaks_the_desktop:
                return


class Run:
    """The faults that are still to be tried, shared by the desktops."""

    def __init__(self, arguments, names):
        self.arguments, self.left = arguments, list(names)
        self.lock = threading.Lock()
        self.lost = []
        self.tried = 0

    def share(self):
        """The next faults for one desktop: those that need the same setting stand together in the table."""
        with self.lock:
            taken, self.left = self.left[:12], self.left[12:]
            return taken

    def tell(self, name, lost, log=None):
        fault = FAULTS[name]
        with self.lock:
            self.tried += 1
            if lost:
                self.lost.append(name)
            reason = f'  (inherent: {fault.inherent})' if fault.inherent and not lost else ''
            print(f'{"LOST    " if lost else "survived"}  {name}{reason}', flush=True)
            if lost:
                for line in (lost + (f'\nlog:\n{log}' if log else '')).splitlines():
                    print(f'            {line}', flush=True)

    def desktop(self):
        while True:
            names = self.share()
            if not names:
                return
            while names:
                names = self._session(names)

    def _session(self, names):
        """Tries them on one desktop; returns those that it did not come to."""
        a = self.arguments
        with tempfile.TemporaryFile('w+') as errors:
            process = subprocess.Popen([sys.executable, '-B', __file__, a.agent, a.editor, a.owner, '--display', a.display,
                                        '--work', json.dumps(names)],
                                       stdout=subprocess.PIPE, stderr=errors, text=True, start_new_session=True)
            current = [names[0]]
            watch = [None]

            def expire():
                os.killpg(process.pid, 9)

            def wind():
                if watch[0]:
                    watch[0].cancel()
                watch[0] = threading.Timer(SECONDS_PER_FAULT, expire)
                watch[0].start()

            wind()
            left = list(names)
            for line in process.stdout:
                told = json.loads(line)
                if 'begins' in told:
                    current[0] = told['begins']
                    wind()
                else:
                    self.tell(told['name'], told['lost'], told['log'])
                    left.remove(told['name'])
                    current[0] = None
            watch[0].cancel()
            process.wait()
            if left and current[0] in left and (process.returncode != 0):
                errors.seek(0)
                self.tell(current[0], f'the desktop ended with {process.returncode}:\n{errors.read()[-1500:]}')
                left.remove(current[0])
            return left


def try_in_memory(run, arguments):
    """Passes the program's lines on, all except its count; returns how many faults it tried."""
    lines = subprocess.run([arguments.in_memory], capture_output=True, text=True, check=False).stdout.splitlines()
    told = [line for line in lines if line.startswith(('survived', 'LOST'))]
    print('\n'.join(line for line in lines if not line.startswith('faults:')), flush=True)
    run.tried += len(told)
    run.lost += [line for line in told if line.startswith('LOST')]
    assert told and lines[-1].startswith(f'faults: {len(told)} tried'), 'the faults in memory were not tried to their end'
    return len(told)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('agent')
    parser.add_argument('editor')
    parser.add_argument('owner')
    parser.add_argument('--display', choices=('x11', 'sway'), default='x11')
    parser.add_argument('--in-memory', help='a program that tries faults in memory and prints lines like these')
    parser.add_argument('--short', action='store_true', help='those of the short form')
    parser.add_argument('--only', default='', help='those whose line holds this text')
    parser.add_argument('--jobs', type=int, default=2, help='desktops at once')
    parser.add_argument('--list', action='store_true')
    parser.add_argument('--work', help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if arguments.work:
        work(arguments)
        return 0
    named = {name: fault for name, fault in FAULTS.items() if arguments.only in name and (fault.short or not arguments.short)}
    elsewhere = {name: fault.not_on_sway for name, fault in named.items() if arguments.display == 'sway' and fault.not_on_sway}
    names = [name for name in named if name not in elsewhere]
    if arguments.list:
        print('\n'.join(names))
        return 0
    for name, reason in elsewhere.items():
        print(f'not here  {name}  ({reason})')
    run = Run(arguments, names)
    in_memory = try_in_memory(run, arguments) if arguments.in_memory else 0
    desktops = [threading.Thread(target=run.desktop) for _ in range(arguments.jobs)]
    for desktop in desktops:
        desktop.start()
    for desktop in desktops:
        desktop.join()
    survived = run.tried - len(run.lost)
    print(f'faults: {run.tried} tried, {survived} survived, {len(run.lost)} lost')
    return 0 if names and run.tried == len(names) + in_memory and not run.lost else 1


if __name__ == '__main__':
    sys.exit(main())
