#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The checks of style.

    check_style.py format            clang-format agrees with every source
    check_style.py format-canary     clang-format refuses scripts/canaries/format.cpp
    check_style.py headers DATABASE  every header of the product compiles by itself
    check_style.py headers-canary    a header that leaves out what it needs is refused, a complete one is not
    check_style.py tidy DATABASE     clang-tidy accepts every source of the product in the compilation database, with its headers
    check_style.py tidy-deep DATABASE   the same, and the static analyser follows the paths of a function as far as it can
    check_style.py tidy-canary       clang-tidy refuses the lines of scripts/canaries/*.cpp that say "denied", no others

clang-tidy reads the sources of several folders as one unit, since most of its time goes into the headers. It remembers in
build/tidy-cache which units it has accepted, by a digest of everything that it reads, so that a second run looks at what
has changed only.
"""

import concurrent.futures
import dataclasses
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import time
from pathlib import Path

from sources import CANARIES, ROOT, sources

CLANG_FORMAT = "clang-format-14"
CLANG_TIDY = "clang-tidy-14"
CLANG = "clang++-14"
CACHE = ROOT / "build" / "tidy-cache"
UNITS = CACHE / "units"

# What the check looks at. Tests, benchmarks and fuzz targets are two thirds of the translation units and would take more
# time than all builds together; the preset `tidy` looks at them as well.
CHECKED = {"app", "core", "hotkey", "input", "platform", "support", "text", "tools"}

# How many states of a function the static analyser looks at; its own bound is 225,000. The paths of the few functions that
# have more took two thirds of the time of the whole check. tidy-deep keeps the analyser's bound.
STATES = ["-Xclang", "-analyzer-config", "-Xclang", "max-nodes=20000"]

# How many lines a unit gets, about. A larger one saves headers, a smaller one keeps more processors busy.
LINES = 2500
# A name that a source defines outside of every class and function: two of them in one unit do not compile.
DEFINED = re.compile(r"^(?:(?:struct|class|enum class|union) (\w+)(?! *;)|(?!using\b|namespace\b)\w[\w:<>,*& ]*[ *&](\w+)(?:\[\w*\])*(?: =|[({]))", re.M)

# Of what the sources include, this is reported.
REPORTED = f"^{re.escape(str(ROOT))}/({'|'.join(sorted(CHECKED))})/"


def run(command, folder=ROOT):
    return subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, encoding="utf-8", errors="replace")


def check_format():
    files = sources()
    if not files:
        print("format: there are no sources")
        return False
    result = run([CLANG_FORMAT, "--dry-run", "-Werror", *map(str, files)])
    print(result.stdout, end="")
    print(f"format: {len(files)} files")
    return result.returncode == 0


def check_format_canary():
    result = run([CLANG_FORMAT, "--dry-run", "-Werror", str(CANARIES / "format.cpp")])
    refused = result.returncode != 0 and "-Wclang-format-violations" in result.stdout
    print("format: the canary was " + ("refused" if refused else "accepted, so the check is switched off:\n" + result.stdout))
    return refused


def options_by_file(database):
    """What each checked source is compiled with."""
    options = {}
    for entry in json.loads((database / "compile_commands.json").read_text(encoding="utf-8")):
        for file in sources_in(Path(os.path.normpath(os.path.join(entry["directory"], entry["file"])))):
            if ROOT in file.parents and file.relative_to(ROOT).parts[0] in CHECKED:
                options.setdefault(file, options_of(entry["command"]))
    return options


def sources_in(file):
    """The sources that an entry of the compilation database stands for: several where CMake compiles them as one."""
    if file.parent.name != "Unity":
        return [file]
    return [Path(name) for name in re.findall(r'^#include "(.+)"$', file.read_text(encoding="utf-8"), re.M)]


def options_of(command):
    """What a command of the compilation database says except the compiler, its input, its output, precompiled headers, and
    what only g++ knows or needs."""
    words, options = iter(shlex.split(command)[1:]), []
    for word in words:
        if word in ("-o", "-MF", "-MT", "-c", "-Xclang", "-include"):  # the last two bring a precompiled header
            next(words)
        elif word == "-isystem":
            options.append(word + next(words))  # in one word, so that doubles can be left out
        elif word not in ("-MD", "-Winvalid-pch", "-Wno-restrict", "--coverage", "-fprofile-update=single"):
            options.append(word)
    return options


def compiles_alone(header, options):
    """What the compiler has against a file that includes this header and nothing else; empty when it has nothing."""
    result = subprocess.run([CLANG, *options, "-Wno-everything", "-fsyntax-only", "-"], cwd=ROOT, input=f'#include "{header}"\n',
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, encoding="utf-8", errors="replace")
    return "" if result.returncode == 0 else result.stdout or f"clang ended with {result.returncode}"


def check_headers(database):
    """A header is compiled as the sources of its folder are, those of macOS against the headers in tests/mac/sdk."""
    by_folder = {}
    for file, options in options_by_file(database).items():
        if file.suffix == ".cpp":
            by_folder.setdefault(file.parent, []).extend(options)
    mac = ROOT / "platform" / "mac"
    sdk = ROOT / "tests" / "mac" / "sdk"
    by_folder[mac] = ["-x", "objective-c++", "-std=c++20", "-fobjc-runtime=macosx-13.0", "-fblocks", "-fobjc-arc", f"-I{ROOT}",
                      "-isystem", str(sdk / "usr/include"), "-iframework", str(sdk / "System/Library/Frameworks")]
    headers = [file for file in sources() if file.suffix == ".h" and file.relative_to(ROOT).parts[0] in CHECKED]

    def check_header(header):
        options = by_folder.get(header.parent)
        if options is None:
            return header, f"{database} has no source in its folder\n"
        language = [] if header.parent == mac else ["-x", "c++"]
        return header, compiles_alone(header, [*language, *options])

    wrong = 0
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for header, said in pool.map(check_header, headers):
            if said:
                wrong += 1
                print(f"{header.relative_to(ROOT)} does not compile by itself:\n{said}", end="")
    print(f"headers: {len(headers)} files, {wrong} wrong")
    return wrong == 0 and len(headers) > 0


def check_headers_canary():
    options = ["-x", "c++", "-std=c++20"]
    incomplete = compiles_alone(CANARIES / "headers" / "incomplete.h", options)
    complete = compiles_alone(CANARIES / "headers" / "complete.h", options)
    if "std::string" not in incomplete and "'std'" not in incomplete:
        print("headers: incomplete.h was accepted, so the check is switched off:\n" + incomplete)
        return False
    print("headers: incomplete.h was refused, complete.h was " + ("accepted" if not complete else "refused as well:\n" + complete))
    return not complete


class Unit:
    """The sources of some folders, which clang-tidy reads as one: it looks through every header again for each unit. Their
    texts stand one after the other in a file, because it follows the paths of what is in the main file only."""

    def __init__(self, files, database, states=()):
        self.files, self.database, self.states = files, database, states
        folders = dict.fromkeys(str(file.parent.relative_to(ROOT)) for file in files)
        self.name = f"{' '.join(folders)} ({len(files)})" if len(files) > 1 else str(files[0].relative_to(ROOT))
        self.origins = []  # of each line: its file and its number there
        texts = []
        for file in files:
            lines = file.read_text(encoding="utf-8").split("\n")
            texts += lines
            self.origins += [(file, number) for number in range(1, len(lines) + 1)]
        text = "\n".join(texts)
        self.source = UNITS / f"{hashlib.sha256(str(files).encode()).hexdigest()[:16]}.cpp"
        self.source.write_text(text, encoding="utf-8")
        # What one of them is compiled with serves all: the commands differ in macros and in folders of headers only.
        self.options = [*dict.fromkeys(option for file in files for option in database[file]), *states]

    def halves(self):
        middle = len(self.files) // 2
        return [Unit(half, self.database, self.states) for half in (self.files[:middle], self.files[middle:])]

    def compiles(self):
        return run([CLANG, *self.options, "-w", "-fsyntax-only", str(self.source)]).returncode == 0

    def digest(self):
        """Of everything that decides what clang-tidy says; None when the sources do not even preprocess."""
        text = subprocess.run([CLANG, *self.options, "-E", "-C", str(self.source)], cwd=ROOT, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if text.returncode != 0:
            return None
        digest = hashlib.sha256()
        for part in (run([CLANG_TIDY, "--version"]).stdout, (ROOT / ".clang-tidy").read_text(encoding="utf-8"), *self.options):
            digest.update(part.encode() + b"\0")
        digest.update(text.stdout)
        return digest.hexdigest()

    def judged(self):
        """Whether clang-tidy accepts it, and what it says."""
        result = run([CLANG_TIDY, "--quiet", f"--config-file={ROOT / '.clang-tidy'}", f"--header-filter={REPORTED}", str(self.source),
                      "--", *self.options])
        lines = [line for line in result.stdout.split("\n") if not re.match(r"^\d+ warnings? (generated|treated)", line)]
        return result.returncode == 0, re.sub(rf"^{re.escape(str(self.source))}:(\d+):", self.origin, "\n".join(lines).strip(), flags=re.M)

    def origin(self, place):
        file, number = self.origins[int(place[1]) - 1]
        return f"{file}:{number}:"


def tidy(unit):
    """[(unit, accepted, what was said, seconds)]: more than one where names of the sources clash."""
    start = time.monotonic()
    digest = unit.digest()
    if digest and (CACHE / digest).exists():
        return [(unit, True, "", 0.0)]
    if len(unit.files) > 1 and not unit.compiles():
        return [result for half in unit.halves() for result in tidy(half)]
    good, said = unit.judged()
    if good and digest:
        (CACHE / digest).touch()
    return [(unit, good, said, time.monotonic() - start)]


@dataclasses.dataclass
class Group:
    """Sources that can be one unit, because no two of them define the same name."""
    files: list = dataclasses.field(default_factory=list)
    names: set = dataclasses.field(default_factory=set)
    lines: int = 0

    @staticmethod
    def of(file):
        text = file.read_text(encoding="utf-8")
        return Group([file], {name for names in DEFINED.findall(text) for name in names if name}, text.count("\n"))

    def add(self, other):
        self.files, self.names, self.lines = self.files + other.files, self.names | other.names, self.lines + other.lines


def put(group, groups):
    """Adds it to the smallest of the groups that it can be in."""
    free = [each for each in groups if each.names.isdisjoint(group.names)]
    if not free:
        free = [Group()]
        groups += free
    min(free, key=lambda each: each.lines).add(group)


def units_of(database, states):
    """The sources that are to be checked: folders together, the largest first. What clashes all the same is taken apart
    later."""
    options, folders = options_by_file(database), {}
    for file in sorted(options):
        put(Group.of(file), folders.setdefault(file.parent, []))
    parts = sorted((part for folder in folders.values() for part in folder), key=lambda part: -part.lines)
    groups = [Group() for _ in range(max(1, round(sum(part.lines for part in parts) / LINES)))]
    for part in parts:
        put(part, groups)
    UNITS.mkdir(parents=True, exist_ok=True)
    return [Unit(group.files, options, states) for group in sorted(groups, key=lambda group: -group.lines) if group.files]


def check_tidy(database, states):
    units = units_of(database, states)
    if not units:
        print(f"tidy: {database} names no source of the tree")
        return False
    start, files, wrong, seconds = time.monotonic(), 0, 0, []
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for done in concurrent.futures.as_completed([pool.submit(tidy, unit) for unit in units]):
            for unit, good, said, took in done.result():
                files += len(unit.files)
                seconds.append((took, unit.name))
                print(f"  {unit.name}  " + (f"{took:.1f} s" if took else "unchanged"), flush=True)
                if not good:
                    wrong += 1
                    print(said)
    slowest = ", ".join(f"{name} {took:.1f} s" for took, name in sorted(seconds, reverse=True)[:3])
    print(f"tidy: {files} files in {len(seconds)} units, {wrong} wrong, {time.monotonic() - start:.0f} s; slowest: {slowest}")
    return wrong == 0


def check_tidy_canaries():
    """Read as one unit, as the sources of a folder are: the lines that say "denied" must be refused by the check that
    their file stands for, and no others."""
    rules = {"analysis.cpp": "clang-analyzer-core.NullDereference", "braces.cpp": "readability-braces-around-statements",
             "naming.cpp": "readability-identifier-naming", "swappable.cpp": "bugprone-easily-swappable-parameters"}
    UNITS.mkdir(parents=True, exist_ok=True)
    good, said = Unit([CANARIES / name for name in rules], {CANARIES / name: ["-std=c++20"] for name in rules}, STATES).judged()
    if good:
        print("tidy: the canaries were accepted, so the check is switched off")
    return all([check_tidy_canary(name, rule, said) for name, rule in rules.items()]) and not good


def check_tidy_canary(name, rule, said):
    lines = (CANARIES / name).read_text(encoding="utf-8").split("\n")
    expected = {n for n, line in enumerate(lines, start=1) if line.endswith("// denied")}
    refused = {int(n) for n in re.findall(rf"{re.escape(name)}:(\d+):\d+: error: .*\[{rule}", said)}
    for number in sorted(expected - refused):
        print(f"scripts/canaries/{name}:{number}: should be refused and was accepted")
    for number in sorted(refused - expected):
        print(f"scripts/canaries/{name}:{number}: should be accepted and was refused")
    good = refused == expected and expected
    if not good:
        print(said)
    print(f"tidy: {len(expected)} lines of {name} break {rule}, {len(expected & refused)} of them refused")
    return bool(good)


def main(arguments):
    if arguments == ["format"]:
        return check_format()
    if arguments == ["format-canary"]:
        return check_format_canary()
    if arguments == ["tidy-canary"]:
        return check_tidy_canaries()
    if arguments == ["headers-canary"]:
        return check_headers_canary()
    if len(arguments) == 2 and arguments[0] in ("headers", "tidy", "tidy-deep"):
        database = (ROOT / arguments[1]).resolve()
        if arguments[0] == "headers":
            return check_headers(database)
        return check_tidy(database, [] if arguments[0] == "tidy-deep" else STATES)
    sys.exit(__doc__)


if __name__ == "__main__":
    sys.exit(0 if main(sys.argv[1:]) else 1)
