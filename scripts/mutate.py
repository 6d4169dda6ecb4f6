#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes small wrong changes in the sources, one at a time, and shows which of them no test notices.

usage: mutate.py [--build FOLDER] [--count N] [--seed TEXT] [-j N] [ROOM or FILE ...]     (tests/mutation/README.md tells more)

What is compiled how, and which test programs link it, is asked of the build (ninja) and of ctest. A changed copy is
compiled outside of the tree and linked in place of the object of the build, so neither the tree nor the build is touched,
even when this is killed. The outcome is 0 when every change was noticed or is explained, 1 when one was not, and 2 when
nothing can be said: a program fails without a change, or an explanation no longer fits the sources.
"""

import argparse
import concurrent.futures
import filecmp
import hashlib
import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from dataclasses import dataclass, field
from pathlib import Path

import changes

ROOT = Path(__file__).resolve().parent.parent
NOTES = ROOT / "tests" / "mutation"
ROOMS = ["core", "support", "input", "text", "hotkey", "app", "platform/fake", "platform/linux", "platform/mac"]
MEMORY = 8 << 30  # bytes for one test program; a change may make one ask for all there is
FIRST_RUN = 300  # seconds that a program may take without a change
TEXT_OF_A_PROGRAM = 256 << 20  # bytes that one may write into a file


@dataclass
class Compiled:
    """One object of the build: where it is, what it is made of, and how."""
    source: Path
    object: Path
    folder: Path
    words: list


@dataclass
class Program:
    """A test program: how it is linked, how it is run, which objects are in it, and how long it takes."""
    path: Path
    link: list
    runs: list = field(default_factory=list)  # (words, folder, environment)
    objects: set = field(default_factory=set)
    seconds: float = 0


class Build:
    """What ninja and ctest know of a build folder."""

    def __init__(self, folder):
        self.folder = folder.resolve()
        listed = json.loads(self._ask("ninja", "-C", self.folder, "-t", "compdb"))
        self.compiled, self.archives, self.links = {}, {}, {}
        for edge in listed:
            words = self._words(edge["command"])
            output = (self.folder / edge["output"]).resolve()
            if output.suffix == ".o" and "-c" in words:
                source = Path(words[words.index("-c") + 1])
                cd = re.match(r"cd (\S+) && ", edge["command"])
                self.compiled[output] = Compiled((self.folder / source).resolve(), output,
                                                 Path(cd.group(1)) if cd else self.folder, words)
            elif output.suffix == ".a" and " qc " in edge["command"]:
                self.archives[output] = [(self.folder / w).resolve() for w in shlex.split(edge["command"]) if w.endswith(".o")]
            elif "-o" in words and "-c" not in words and any(w.endswith((".o", ".a")) for w in words):
                self.links[output] = words

    @staticmethod
    def _ask(*command):
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit(f"{' '.join(map(str, command))}: {done.stderr.strip() or done.stdout.strip()}")
        return done.stdout

    @staticmethod
    def _words(command):
        """The words of the compiler or the linker, out of a line that may do more before and after."""
        part = next((p for p in command.split(" && ") if " -o " in p), "")
        return [word for word in shlex.split(part) if Path(word).name != "ccache"] if part else []

    def including(self, header):
        """What is compiled with that header in it."""
        known = {header: True}

        def includes_it(file):
            if file not in known:
                known[file] = False
                text = file.read_text(encoding="utf-8", errors="replace") if file.is_file() and ROOT in file.parents else ""
                names = re.findall(r'^\s*#\s*(?:include|import)\s+"([^"]+)"', text, re.M)
                known[file] = any(includes_it((base / name).resolve()) for name in names for base in (ROOT, file.parent))
            return known[file]

        return [compiled for compiled in self.compiled.values() if includes_it(compiled.source)]

    def objects_of(self, link):
        for word in link:
            path = (self.folder / word).resolve() if word.endswith((".o", ".a")) else None
            if path in self.compiled:
                yield path
            yield from self.archives.get(path, ())

    def make(self, wanted, jobs):
        """Builds every program that could have one of the wanted objects in it."""
        targets = [p.relative_to(self.folder) for p, link in self.links.items() if not wanted.isdisjoint(self.objects_of(link))]
        if not targets:
            sys.exit("no program of the build has these sources in it")
        if subprocess.run(["ninja", "-C", str(self.folder), "-j", str(jobs), *map(str, targets)], stdout=subprocess.DEVNULL).returncode != 0:
            sys.exit("the build fails without any change")

    def programs(self, without):
        """The programs that ctest runs, except the tests with one of the labels; all tests of one program are one run."""
        found = {}
        for test in json.loads(self._ask("ctest", "--test-dir", self.folder, "--show-only=json-v1"))["tests"]:
            words = test.get("command") or [""]
            path = Path(words[0]).resolve()
            properties = {p["name"]: p["value"] for p in test.get("properties", ())}
            if path not in self.links or without.intersection(properties.get("LABELS", ())):
                continue
            program = found.setdefault(path, Program(path, self.links[path]))
            environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", ()))
            if any(word.startswith("--gtest_filter=") for word in words):
                words = [w for w in words if not w.startswith(("--gtest_filter=", "--gtest_also_run_disabled"))]
                words += ["--gtest_brief=1", "--gtest_fail_fast"]
            run = (tuple(words[1:]), properties.get("WORKING_DIRECTORY", str(self.folder)), tuple(environment.items()))
            if run not in program.runs:
                program.runs.append(run)
        return sorted(found.values(), key=lambda program: program.path)


class Bench:
    """Where changed copies are compiled, linked and run; everything in it is gone afterwards."""

    def __init__(self, build, programs, folder):
        self.build, self.programs, self.folder = build, programs, folder
        self.linker = ["-fuse-ld=lld"] if shutil.which("ld.lld") else []
        self.originals, self.lock = {}, threading.Lock()

    def prepare(self, jobs, wanted):
        """Links and runs every program without a change, and keeps those that have a wanted object in them."""
        self.programs = [p for p in self.programs if not wanted.isdisjoint(self.build.objects_of(p.link))]
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            failed = [said for said in pool.map(self._first_run, self.programs) if said]
        if failed:
            print("\n".join(failed))
            sys.exit("a program fails without any change")
        self.programs = [program for program in self.programs if not wanted.isdisjoint(program.objects)]
        # The quickest is asked first. Rounded, so that a little noise does not change the order.
        self.programs.sort(key=lambda program: (int(program.seconds * 2).bit_length(), program.path))

    def _place(self):
        """A new folder. Open to all: a test may give up its rights and still go through it."""
        place = Path(tempfile.mkdtemp(dir=self.folder))
        place.chmod(0o755)
        return place

    def _first_run(self, program):
        place = self._place()
        try:
            linked = self._link(program, {}, place / "program", ["-Wl,-t,-t"])
            if linked.returncode != 0:
                return f"{program.path.name} cannot be linked: {linked.stderr[-2000:]}"
            program.objects = self._members(linked.stdout + linked.stderr)
            start = time.monotonic()
            said = self._run(program, place / "program", place, FIRST_RUN)
            program.seconds = time.monotonic() - start
            lines = (place / "said").read_text(encoding="utf-8", errors="replace").splitlines()
            # After the first failure the rest is skipped, each with a line of its own.
            last = "\n".join(line for line in lines if line.strip() and not line.endswith("Skipped"))[-3000:]
            return f"{program.path.name}: {said}\n{last}" if said else None
        finally:
            shutil.rmtree(place, ignore_errors=True)

    def _members(self, trace):
        """The objects that the linker says it took; of an archive these are not all."""
        found = set()
        for line in trace.splitlines():
            member = re.fullmatch(r"(.+\.a)\((.+\.o)\)|\((.+\.a)\)(.+\.o)", line.strip())
            if member:
                archive = (self.build.folder / (member.group(1) or member.group(3))).resolve()
                name = Path(member.group(2) or member.group(4)).name
                found.update(o for o in self.build.archives.get(archive, ()) if o.name == name)
            elif line.strip().endswith(".o"):
                found.add((self.build.folder / line.strip()).resolve())
        return found

    def compile(self, compiled, text, place, name):
        """The object of a changed text, or None when it is no program. Headers that lie in the place go first."""
        source, output = place / compiled.source.name, place / name
        source.write_text(text, encoding="utf-8")
        words, skip = [], False
        for word in compiled.words:
            # Without what is only for debuggers: two objects that do the same are then the same.
            if skip or word in ("-MD", "-MMD", "--coverage", "-Werror", "-c") or re.fullmatch("-g[0-9]?", word):
                skip = False
                continue
            if word in ("-o", "-MF", "-MT"):
                skip = True
                continue
            if not word.startswith("-") and (compiled.folder / word).resolve() == compiled.source:
                continue
            words.append(word)
        # What a change leaves unused is not the question here. Its neighbours are found where the file stands.
        words += ["-w", "-iquote", str(place), "-iquote", str(compiled.source.parent), "-c", source.name, "-o", str(output)]
        words = [w if not w.startswith("-I") or Path(w[2:]).is_absolute() else f"-I{(compiled.folder / w[2:]).resolve()}" for w in words]
        done = subprocess.run(words, cwd=place, capture_output=True)
        return output if done.returncode == 0 else None

    def original(self, compiled):
        """The object of the unchanged text, made the same way, to know a change that changes nothing."""
        with self.lock:
            known = self.originals.setdefault(compiled.object, [threading.Lock(), None])
        with known[0]:
            if known[1] is None:
                place = self._place()
                known[1] = self.compile(compiled, compiled.source.read_text(encoding="utf-8"), place, "original.o")
                if known[1] is None:
                    sys.exit(f"{compiled.source} cannot be compiled as it is")
            return known[1]

    def _link(self, program, changed, output, options=()):
        """The link of the build; a changed object stands in the place of its old one, or before the archive that has it."""
        left, words = {old: new for old, new in changed.items() if old in program.objects}, []
        for word in program.link:
            new = left.pop((self.build.folder / word).resolve(), None) if word.endswith(".o") else None
            words.append(str(new or word))
        at = words.index("-o")
        words[at + 1] = str(output)
        words[at:at] = map(str, left.values())
        return subprocess.run([*words, *self.linker, *options], cwd=self.build.folder, capture_output=True, text=True,
                              errors="replace")

    def _run(self, program, path, place, seconds):
        """What went wrong, in a word, or None."""
        for words, folder, environment in program.runs:
            home = place / "home"
            home.mkdir(exist_ok=True)
            variables = {**os.environ, **dict(environment), "HOME": str(home), "TMPDIR": str(home), "LC_ALL": "C.UTF-8",
                         "GCOV_PREFIX": str(home)}
            for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"):
                variables.pop(name, None)
            with open(place / "said", "wb") as said:
                process = subprocess.Popen([str(path), *words], cwd=folder, env=variables, start_new_session=True,
                                           stdin=subprocess.DEVNULL, stdout=said, stderr=said, preexec_fn=restrain)
            try:
                status = process.wait(timeout=seconds)
            except subprocess.TimeoutExpired:
                status = "time"
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)  # and whatever it has started
                except ProcessLookupError:
                    pass
                process.wait()
            if status != 0:
                return "time limit" if status == "time" else f"status {status}"
        return None

    def try_change(self, every, change):
        """(outcome, by what): 'not a change', 'noticed' or 'unnoticed'. Tried in all that has the changed file in it."""
        place = self._place()
        try:
            file, objects = ROOT / change.file, {}
            applied = change.applied(file.read_text(encoding="utf-8"))
            if file.suffix == ".h":
                (place / change.file).parent.mkdir(parents=True)
                (place / change.file).write_text(applied, encoding="utf-8")
            for number, compiled in enumerate(every):
                text = applied if compiled.source == file else compiled.source.read_text(encoding="utf-8")
                (place / str(number)).mkdir()
                changed = self.compile(compiled, text, place, f"{number}/original.o")
                if changed is None:
                    return "not a change", "does not compile"
                if not filecmp.cmp(self.original(compiled), changed, shallow=False):
                    objects[compiled.object] = changed
            if not objects:
                return "not a change", "the same object"
            asked = [p for p in self.programs if not p.objects.isdisjoint(objects)]
            for program in asked:
                linked = self._link(program, objects, place / "program")
                if linked.returncode != 0:
                    return "not a change", "does not link"
                said = self._run(program, place / "program", place, max(20, 4 * program.seconds))
                if said:
                    return "noticed", f"{program.path.name} ({said})"
            return "unnoticed", f"{len(asked)} programs"
        finally:
            shutil.rmtree(place, ignore_errors=True)


def restrain():
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM):
        signal.signal(number, signal.SIG_DFL)  # whoever starts this may ignore them, and a test sends them to itself
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (TEXT_OF_A_PROGRAM, TEXT_OF_A_PROGRAM))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


class Notes:
    """tests/mutation/*.txt: paragraphs of `word: text` lines. A text goes on in the next lines that are set in."""

    @staticmethod
    def read(path):
        if not path.exists():
            return []
        entries = []
        for paragraph in path.read_text(encoding="utf-8").split("\n\n"):
            entry, word = {}, None
            for line in paragraph.split("\n"):
                start = re.match(r"(file|line|change|why|text|becomes):\s?(.*)", line)
                if start:
                    word = start.group(1)
                    entry[word] = start.group(2)
                elif word and line.startswith("  "):
                    entry[word] += "\n" + line[2:]
            if entry:
                entries.append(entry)
        return entries

    @staticmethod
    def paragraph(change):
        line = "\n  ".join(change.key.split("\n"))
        return f"file: {change.file}\nline: {line}\nchange: {change.title}\nwhy: "


def by_hand(path):
    """The changes that a person wrote down, and what of them no longer fits."""
    found, unfit = [], []
    for entry in Notes.read(path):
        source = ROOT / entry["file"]
        text = source.read_text(encoding="utf-8") if source.exists() else ""
        at = text.find(entry["text"])
        if at < 0:
            unfit.append(f"{path.name}: {entry['file']} no longer has: {changes.one_line(entry['text'])}")
            continue
        line = text.count("\n", 0, at) + 1
        title = f"by hand: {changes.one_line(entry['text'])} -> {changes.one_line(entry['becomes'])}"
        found.append(changes.Change(entry["file"], "by hand", at, at + len(entry["text"]), entry["becomes"], line,
                                    text.split("\n")[line - 1].strip(), title))
    return found, unfit


def mixed(found, seed):
    """Every sort of change in turn, each in an order that the seed gives and that other changes do not disturb."""
    piles = {}
    for change in found:
        piles.setdefault(change.sort, []).append(change)
    for pile in piles.values():
        pile.sort(key=lambda c: hashlib.sha256(f"{seed}|{c.file}|{c.key}|{c.title}".encode()).digest())
    order = sorted(piles, key=lambda sort: hashlib.sha256(f"{seed}|{sort}".encode()).digest())
    while any(piles.values()):
        for sort in order:
            if piles[sort]:
                yield piles[sort].pop(0)


def vocabulary():
    folders = [ROOT / room for room in ROOMS] + [ROOT / "platform", ROOT / "tests" / "mac" / "sdk"]
    files = sorted({f for folder in folders for f in folder.rglob("*") if f.suffix in (".h", ".cpp", ".mm")})
    return changes.Vocabulary([f.read_text(encoding="utf-8") for f in files])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("rooms", nargs="*", default=ROOMS, metavar="ROOM or FILE")
    parser.add_argument("--build", type=Path, default=ROOT / "build" / "dev", help="a build folder with tests (build/dev)")
    parser.add_argument("--count", type=int, help="so many changes, spread over the rooms; without it: all that can be made")
    parser.add_argument("--seed", default="1", help="which of them; the same seed takes the same changes")
    parser.add_argument("-j", type=int, dest="jobs", default=os.cpu_count() or 2, help="changes tried at once")
    parser.add_argument("--without-label", action="append", default=["desktop", "bundle"], help="tests that are not asked")
    parser.add_argument("--list", action="store_true", help="print the changes and try none")
    wanted = parser.parse_args()
    build = Build(wanted.build)

    rooms = [(ROOT / room).resolve() for room in wanted.rooms]
    by_source = {}
    for compiled in build.compiled.values():
        if any(compiled.source == room or room in compiled.source.parents for room in rooms):
            by_source.setdefault(compiled.source, []).append(compiled)
    for header in rooms:
        if header.suffix == ".h":
            by_source[header] = build.including(header)
    written, unfit = by_hand(NOTES / "by_hand.txt")
    words = vocabulary()
    found = {room: [] for room in rooms}
    for source in sorted(by_source):
        name = str(source.relative_to(ROOT))
        room = next(r for r in rooms if source == r or r in source.parents)
        found[room] += changes.Source(name, source.read_text(encoding="utf-8"), words).changes()
        found[room] += [c for c in written if c.file == name]
    empty = [str(room) for room in rooms if not found[room]]
    if empty:
        sys.exit(f"no change can be made in {', '.join(empty)}")

    explained = {}
    possible = {(c.file, c.key, c.title) for each in found.values() for c in each}
    for entry in Notes.read(NOTES / "explained.txt"):
        key = (entry["file"], entry["line"], entry["change"])
        explained[key] = entry.get("why", "")
        if not explained[key] or (ROOT / entry["file"]) in by_source and key not in possible:
            unfit.append(f"explained.txt: {entry['file']}: {changes.one_line(entry['line'])}: {entry['change']}")

    total = sum(map(len, found.values()))
    if wanted.list:
        for queue in queued(found, wanted):
            for change in queue:
                print(f"{change.file}:{change.line}: {change.title}")
        print(f"{total} changes can be made")
        return 0

    objects = {c.object for each in by_source.values() for c in each}
    build.make(objects, wanted.jobs)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(2))  # so that the folder goes then, too
    scratch = Path(tempfile.mkdtemp(prefix="mutate."))  # a short name: the programs make sockets in it
    scratch.chmod(0o755)
    try:
        bench = Bench(build, build.programs(set(wanted.without_label)), scratch)
        bench.prepare(wanted.jobs, objects)
        names = ", ".join(f"{p.path.name} {p.seconds:.1f} s" for p in bench.programs)
        print(f"{total} changes can be made; asked are {names}", flush=True)
        linked = {o for program in bench.programs for o in program.objects}
        for source in sorted(by_source):
            by_source[source] = [c for c in by_source[source] if c.object in linked]
            if not by_source[source]:
                print(f"not judged: {source.relative_to(ROOT)}, which no test program has in it")
        for room in rooms:
            found[room] = [c for c in found[room] if by_source[ROOT / c.file]]
        return judge(bench, by_source, queued(found, wanted), wanted, explained, unfit)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def queued(found, wanted):
    """For each room its changes, in the order in which they are tried."""
    if wanted.count is None:
        return [iter(sorted(each, key=lambda c: (c.file, c.start))) for each in found.values()]
    return [mixed(each, wanted.seed) for each in found.values()]


def judge(bench, by_source, queues, wanted, explained, unfit):
    def attempt(change):
        return bench.try_change(by_source[ROOT / change.file], change)

    tally, survivors, reasons = {"noticed": 0, "explained": 0, "unnoticed": 0, "not a change": 0}, [], {}
    start = time.monotonic()
    rooms = len(queues)
    shares = [None if wanted.count is None else wanted.count // rooms + (i < wanted.count % rooms) for i in range(rooms)]
    # A little more than needed is under way: what is no change does not count, and what comes too late is not reported.
    with concurrent.futures.ThreadPoolExecutor(wanted.jobs) as pool:
        for queue, share in zip(queues, shares):
            counted, pending = 0, []
            for change in queue:
                pending.append((change, pool.submit(attempt, change)))
                if len(pending) < 3 * wanted.jobs:
                    continue
                counted += report(*pending.pop(0), explained, tally, survivors, reasons)
                if share is not None and counted >= share:
                    break
            for change, future in pending:
                if share is not None and counted >= share:
                    future.cancel()
                else:
                    counted += report(change, future, explained, tally, survivors, reasons)
    print(f"\n{sum(tally.values()) - tally['not a change']} changes: {tally['noticed']} noticed, {tally['unnoticed']} unnoticed, "
          f"{tally['explained']} unnoticed and explained; {tally['not a change']} more were none "
          f"({', '.join(f'{count} {why}' for why, count in sorted(reasons.items()))}); {time.monotonic() - start:.0f} s")
    for change in survivors:
        print(f"\n{change.file}:{change.line}\n{Notes.paragraph(change)}")
    for line in unfit:
        print(f"NO LONGER FITS {line}")
    return 1 if survivors else 2 if unfit else 0


def report(change, future, explained, tally, survivors, reasons):
    """Prints one line; 1 when it counts."""
    outcome, by = future.result()
    if outcome == "unnoticed" and (change.file, change.key, change.title) in explained:
        outcome = "explained"
    tally[outcome] += 1
    if outcome == "not a change":
        reasons[by] = reasons.get(by, 0) + 1
        return 0
    if outcome == "unnoticed":
        survivors.append(change)
    shown = "UNNOTICED" if outcome == "unnoticed" else outcome
    print(f"{shown:10} {change.file}:{change.line}: {change.title}   [{by}]", flush=True)
    return 1


if __name__ == "__main__":
    sys.exit(main())
