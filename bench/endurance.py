#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Many fixes with random texts, directions, paths and pauses, on private desktops beside each other.

usage: endurance.py AGENT CONVERT QT6_EDITOR [--fixes N] [--desktops N] [--seed N]

CONVERT is the conversion as a filter, which tells what each text has to become. Exits 1 when a text is wrong, when the
clipboard is not what it was, or when an agent's memory or descriptors grow. With more desktops than cores the machine is busy.
"""
import argparse
import os
import random
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / 'tests' / 'desktop'))

from session import DesktopError, Session, until  # noqa: E402
from stage import Stage  # noqa: E402

FIXES_PER_DOCUMENT = 20
FIXES_PER_LINE = 500  # of what this prints
FIXES_PER_AGENT = 400  # then another is started, for the other path
WARM_UP = 100  # fixes after which caches and allocators have settled
GROWTH_KILOBYTES = 4096
RESTORE_SECONDS = 5.0
EDITORS = ('mousepad', 'featherpad', 'qt6_editor')

LATIN = 'abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ'
HEBREW = 'אבגדהוזחטיךכלםמןנסעףפץצקרשת'
OTHERS = ['0', '7', '.', ',', ';', "'", '/', '-', '(', ')', '!', '?', 'é', 'ß', 'שׁ', 'שָׁ', '€', '😀', '👨\u200d👩\u200d👧', 'e\u0301', '\t', '\n']


def random_text(dice):
    """Words of either script, of both, and of neither."""
    words = []
    for _ in range(dice.randint(1, 30)):
        kind = dice.random()
        letters = LATIN if kind < 0.45 else HEBREW if kind < 0.9 else LATIN + HEBREW
        word = ''.join(dice.choice(letters) for _ in range(dice.randint(1, 9)))
        words.append(word + (dice.choice(OTHERS) if dice.random() < 0.25 else ''))
    return ' '.join(words).strip()


class Worker:
    """One desktop: fixes texts until its share is done, and compares after each."""

    def __init__(self, session, arguments, number):
        self.session, self.arguments, self.number = session, arguments, number
        self.dice = random.Random(arguments.seed * 1000 + number)
        self.stage = Stage(session, arguments.agent, arguments.editor)
        self.wrong = []
        self.done = 0
        self.baseline = None

    def expected(self, text):
        layout = 'he' if self.stage.keyboard.group() == 1 else 'en'
        return subprocess.run([str(self.arguments.convert), '--map', 'system', '--layout', layout], input=text.encode(),
                              capture_output=True, check=True).stdout.decode()

    def run(self, share):
        while self.done < share:
            if not hasattr(self.stage, 'agent'):
                self.start(self.dice.random() < 0.5)
            elif self.since_start > FIXES_PER_AGENT:
                self.look_at_memory()
                self.session.end(self.stage.agent)
                self.start(not self.compatible)
            self.look_at_memory()
            before = self.done
            self.document(min(FIXES_PER_DOCUMENT, share - self.done))
            if self.done // FIXES_PER_LINE > before // FIXES_PER_LINE:
                print(f'desktop {self.number}: {self.done} fixes so far, {len(self.wrong)} wrong', flush=True)
        self.look_at_memory()

    def start(self, compatible):
        self.compatible = compatible
        self.baseline = None
        self.since_start = 0
        self.clipboard_fixes_before = self.clipboard_fixes()
        self.stage.start_agent(compatMode=compatible)

    def clipboard_fixes(self):
        return self.session.log().count('clipboard: pasted')

    def document(self, fixes):
        text = random_text(self.dice)
        editor = self.dice.choice(EDITORS)
        program = self.stage.open(editor, text)
        kept = f'kept {self.dice.random()}'
        self.stage.put_on_clipboard(kept)
        for _ in range(fixes):
            wanted = self.expected(text)
            if wanted == text:
                break
            self.stage.select_all()
            self.stage.fix_ends()
            try:
                self.stage.expect_text(wanted)
            except DesktopError:
                held = self.stage.field.text()
                self.wrong.append(f'{editor}: {text!r} should have become {wanted!r}, the field holds {held!r}')
                break
            text = wanted
            self.done += 1
            self.since_start += 1
            time.sleep(self.dice.choice((0, 0, 0.05, 0.2, 0.6)))
        try:
            until(lambda: self.stage.clipboard() == kept, 'the clipboard', RESTORE_SECONDS)
        except DesktopError:
            self.wrong.append(f'{editor}: the clipboard holds {self.stage.clipboard()!r}')
        self.session.end(program)

    def look_at_memory(self):
        """Resident kilobytes and open descriptors, against what they were once the agent had settled. What the clipboard needs
        is opened for the first fix by it, which on a busy machine may come late."""
        process = Path(f'/proc/{self.stage.agent.pid}')
        resident = next(int(line.split()[1]) for line in (process / 'status').read_text().splitlines() if line.startswith('VmRSS:'))
        now = (resident, len(list((process / 'fd').iterdir())))
        if self.since_start < WARM_UP:
            return
        uses_clipboard = self.clipboard_fixes() > self.clipboard_fixes_before
        if self.baseline is None or uses_clipboard != self.baseline_uses_clipboard:
            self.baseline, self.baseline_uses_clipboard = now, uses_clipboard
        if self.arguments.any_memory:
            return
        if now[0] > self.baseline[0] + GROWTH_KILOBYTES:
            self.wrong.append(f'memory grew from {self.baseline[0]} kB to {now[0]} kB in {self.since_start} fixes')
            self.baseline = now
        if now[1] > self.baseline[1] + 2:
            self.wrong.append(f'descriptors grew from {self.baseline[1]} to {now[1]} in {self.since_start} fixes')
            self.baseline = now


def work(arguments, number, share):
    """One desktop in a process of its own; 0 when everything was right."""
    with Session() as session:
        worker = Worker(session, arguments, number)
        try:
            worker.run(share)
        except (DesktopError, AssertionError, OSError, subprocess.SubprocessError) as error:
            worker.wrong.append(f'{type(error).__name__}: {error}')
        for line in worker.wrong:
            print(f'wrong  desktop {number}: {line}', flush=True)
        print(f'desktop {number}: {worker.done} fixes, {len(worker.wrong)} wrong', flush=True)
        return 1 if worker.wrong or worker.done < share else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('agent', type=Path)
    parser.add_argument('convert', type=Path)
    parser.add_argument('editor', type=Path)
    parser.add_argument('--fixes', type=int, default=10_000)
    parser.add_argument('--desktops', type=int, default=2 * (os.cpu_count() or 2))
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--any-memory', action='store_true', help='an instrumented agent, whose memory grows')
    arguments = parser.parse_args()
    for name in ('agent', 'convert', 'editor'):
        setattr(arguments, name, getattr(arguments, name).resolve())
    shares = [arguments.fixes // arguments.desktops + (i < arguments.fixes % arguments.desktops) for i in range(arguments.desktops)]
    began, children = time.monotonic(), []
    for number, share in enumerate(shares):
        child = os.fork()
        if child == 0:
            os._exit(work(arguments, number, share))
        children.append(child)
    statuses = [os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) for child in children]
    bad = sum(status != 0 for status in statuses)
    print(f'endurance: {arguments.fixes} fixes on {arguments.desktops} desktops in {time.monotonic() - began:.0f} s, '
          f'{"0 wrong" if not bad else f"{bad} desktops with faults"}; load {os.getloadavg()[0]:.1f}')
    return 1 if bad else 0


if __name__ == '__main__':
    sys.exit(main())
