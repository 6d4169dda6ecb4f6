#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Builds the fuzz targets and runs each for some time from its corpus, as many at once as there are processors.

usage: fuzz/run.py [--seconds N] [--seed N] [--jobs N] [--no-build] [TARGET ...]

Inputs are made at random, from another seed each time unless one is given. A finding is kept in build/fuzz/findings, its
report is printed, and the exit status is 1. `fuzz/run.py --seconds 600` is ten minutes for each. What a run has found worth keeping lies in build/fuzz/found; corpus/ is a small choice of it.
"""
import argparse
import os
import re
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

HERE = Path(__file__).resolve().parent
BUILD = HERE.parent / 'build' / 'fuzz'
TARGETS = [path.name.removesuffix('_fuzz.cpp') for path in sorted(HERE.glob('*_fuzz.cpp'))]
SLACK_SECONDS = 60
# Files that are written a thousand times.
IN_MEMORY = {'TMPDIR': '/dev/shm'} if os.access('/dev/shm', os.W_OK) else {}
LINES_OF_REPORT = 60
# What is wrong, where in our code, and the input: printed once more at the end.
TELLING = re.compile(r'not so|terminat|  what|.*(ERROR: |runtime error: )|\s+#\d+ .*(lexwend|LLVMFuzzer)|Base64: ')
LETTERS_OF_LINE = 400


class Run:
    """The targets that are still to be run."""

    def __init__(self, seconds, seed, names):
        self.seconds, self.seed, self.left, self.lock = seconds, seed, list(names), threading.Lock()
        self.bad, self.tellings = [], []

    def work(self):
        while True:
            with self.lock:
                if not self.left:
                    return
                name = self.left.pop(0)
            good, said = self.fuzz(name)
            with self.lock:
                done = next((line for line in reversed(said) if line.startswith('Done ')), 'ended without a count')
                print(f'{"ok     " if good else "FINDING"}  {name}: {done}', flush=True)
                if not good:
                    self.bad.append(name)
                    self.tellings += [f'{name}: {line[:LETTERS_OF_LINE]}' for line in said if TELLING.match(line)]
                    print('\n'.join(said[-LINES_OF_REPORT:]), flush=True)

    def fuzz(self, name):
        found, findings = BUILD / 'found' / name, BUILD / 'findings'
        for folder in (found, findings):
            folder.mkdir(parents=True, exist_ok=True)
        corpus = HERE / 'corpus' / name
        command = [str(BUILD / 'fuzz' / f'fuzz_{name}'), f'-max_total_time={self.seconds}', f'-seed={self.seed}', '-max_len=2048',
                   '-timeout=20', '-rss_limit_mb=2048', '-close_fd_mask=1', f'-artifact_prefix={findings}/{name}-', str(found),
                   *([str(corpus)] if corpus.is_dir() else [])]
        with tempfile.TemporaryFile('w+', errors='replace') as output:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True,
                                       env={**os.environ, **IN_MEMORY})
            try:
                process.wait(self.seconds + SLACK_SECONDS)
                good = process.returncode == 0
            except subprocess.TimeoutExpired:
                good = False
            try:
                os.killpg(process.pid, signal.SIGKILL)  # a server of its own, where it has not ended by itself
            except ProcessLookupError:
                pass
            process.wait()
            output.seek(0)
            return good, output.read().splitlines()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('targets', nargs='*', metavar='TARGET', help=', '.join(TARGETS))
    parser.add_argument('--seconds', type=int, default=20)
    parser.add_argument('--seed', type=int, default=0, help='0: another one each time')
    parser.add_argument('--jobs', type=int, default=os.cpu_count() or 2)
    parser.add_argument('--no-build', action='store_true')
    arguments = parser.parse_args()
    names = arguments.targets or TARGETS
    if unknown := [name for name in names if name not in TARGETS]:
        parser.error(f'there is no target {unknown[0]}')
    if not arguments.no_build:
        for command in (['cmake', '--preset', 'fuzz'], ['cmake', '--build', '--preset', 'fuzz']):
            if subprocess.run(command, cwd=HERE.parent, stdout=subprocess.DEVNULL, check=False).returncode != 0:
                print(f'fuzz: {" ".join(command)} failed')
                return 1
    run = Run(arguments.seconds, arguments.seed, names)
    workers = [threading.Thread(target=run.work) for _ in range(arguments.jobs)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    for line in run.tellings:
        print(line)
    print(f'fuzz: {len(names)} targets, {arguments.seconds} s each, {len(run.bad)} with findings')
    return 1 if run.bad else 0


if __name__ == '__main__':
    sys.exit(main())
