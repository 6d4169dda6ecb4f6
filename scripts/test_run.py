#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The test run that ./test starts once everything is installed: builds, tests and checks, and one closing line.

Every build and every check counts as one, every test of ctest counts as one in each build that runs it. Nothing is run
again after a failure, and a failed build does not hide the steps after it. A skipped test is a failed one when CI=true.
"""

import argparse
import collections
import os
import platform
import subprocess
import sys
import threading
import time
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LINES_OF_FAILURE = 20
SECONDS_FOR_THE_REST = 5
STARTED = time.monotonic()
BOLD, RED, GREEN = 1, 31, 32
# How many wrong changes are tried in which rooms. Those of core and platform/linux have slow tests.
SHARED_ROOMS = ["support", "input", "text", "hotkey", "app"]
CHANGES = [["20", "platform/mac", *SHARED_ROOMS]]
CHANGES_OF_ALL = [["300", "platform/mac"], ["20", "platform/mac/cf_ref.h", "platform/mac/callback.h"],
                  ["60", "core", "platform/fake", *SHARED_ROOMS], ["12", "platform/linux"]]
SKIPPED = ("SKIP_REGULAR_EXPRESSION_MATCHED", "SKIP_RETURN_CODE")


def coloured(text, code):
    """Colour on a terminal only, and never where NO_COLOR is set."""
    if not sys.stdout.isatty() or os.environ.get("NO_COLOR"):
        return text
    return f"\033[{code}m{text}\033[0m"


def headline(name):
    """The start of a step; a person who waits also sees how long the run has taken so far."""
    minutes, seconds = divmod(int(time.monotonic() - STARTED), 60)
    print("\n" + coloured(f"== {name}", BOLD) + (f"  ({minutes}:{seconds:02} so far)" if sys.stdout.isatty() else ""), flush=True)


class Tally:
    """What has passed, failed and been skipped so far, and the table at the end."""

    def __init__(self):
        self.passed, self.failed, self.skipped = 0, 0, 0
        self.rows, self.wrong = [], []  # what went wrong by its name and with the end of what it said
        self.spent = 0.0  # processor seconds of the steps so far

    def note(self, name, said=""):
        self.wrong.append((name, said or ""))

    def add(self, name, seconds, passed, failed, skipped=0):
        self.passed += passed
        self.failed += failed
        self.skipped += skipped
        times = os.times()
        spent = times.children_user + times.children_system
        self.rows.append((name, seconds, spent - self.spent, passed, failed, skipped))
        self.spent = spent

    def close(self):
        headline("summary")
        for name, seconds, spent, passed, failed, skipped in self.rows:
            verdict = coloured("FAILED", RED) if failed else coloured("ok    ", GREEN)
            print(f"  {verdict}  {seconds:5.0f} s  {spent:5.0f} s of a processor  {name}: {passed} passed, {failed} failed, {skipped} skipped")
        for name, said in self.wrong:
            print("  " + coloured(f"failed: {name}", RED))
            for line in said.splitlines()[-LINES_OF_FAILURE:]:
                print(f"    {line}")
        failed, skipped = self.failed, self.skipped
        if skipped and os.environ.get("CI") == "true":
            print(f"  {skipped} skipped tests count as failures here, because CI=true")
            failed, skipped = failed + skipped, 0
        good = failed == 0 and self.passed > 0
        closing = f"{self.passed} passed, {failed} failed" + (f", {skipped} skipped" if skipped else "")
        print("\n" + coloured(closing, GREEN if good else RED))
        return 0 if good else 1


def run(*command):
    """The exit status, and the end of what the command said, which is shown as it comes."""
    print("$ " + " ".join(map(str, command)), flush=True)
    command = list(map(str, command))
    if sys.stdout.isatty():  # the tools count in one line there, and a person can scroll back
        return subprocess.run(command, cwd=ROOT, stdin=subprocess.DEVNULL).returncode, ""
    last = collections.deque(maxlen=LINES_OF_FAILURE)

    def show(lines):
        for line in lines:
            print(line, end="", flush=True)
            last.append(line)

    process = subprocess.Popen(command, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, errors="replace")
    reader = threading.Thread(target=show, args=(process.stdout,), daemon=True)
    reader.start()
    status = process.wait()
    reader.join(SECONDS_FOR_THE_REST)  # a program that the command left behind may hold the pipe for ever
    return status, "".join(last)


def check(tally, name, *commands):
    """Commands that pass or fail as a whole; the first that fails is the last."""
    headline(name)
    start = time.monotonic()
    for command in commands:
        status, said = run(*command)
        if status != 0:
            tally.note(name, said)
            break
    tally.add(name, time.monotonic() - start, 1 if status == 0 else 0, 0 if status == 0 else 1)
    return status == 0


def build(tally, preset, *options):
    return check(tally, f"build {preset}", ["cmake", "--preset", preset, *options], ["cmake", "--build", "--preset", preset])


def outcomes(report):
    """(name, outcome, output) for each test in ctest's report; a test that could not be started has failed."""
    for case in ElementTree.parse(report).getroot().iter("testcase"):
        name, status, skip, said = case.get("name"), case.get("status"), case.find("skipped"), case.findtext("system-out")
        if status == "run":
            yield name, "passed", said
        elif status == "disabled":
            yield name, "skipped", said
        elif status == "notrun" and skip is not None and (skip.get("message") or "").startswith(SKIPPED):
            yield name, "skipped", said
        else:
            yield name, "failed", said


def tests(tally, preset, *options):
    headline(f"tests {preset}")
    start = time.monotonic()
    folder = ROOT / "build" / preset
    report = folder / "tests.xml"
    report.unlink(missing_ok=True)
    # Most tests wait for a display, a bus or a program most of the time.
    status, _ = run("ctest", "--test-dir", folder, "-j", max(4, os.cpu_count() or 2), "--output-on-failure", "--no-tests=error",
                 "--output-junit", report, *options)
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    if report.exists():
        for name, outcome, said in outcomes(report):
            counts[outcome] += 1
            if outcome != "passed":
                tally.note(f"{preset}: {name}" + (" (skipped)" if outcome == "skipped" else ""), said)
    if (status != 0) and counts["failed"] == 0:
        counts["failed"] = 1
        tally.note(f"{preset}: ctest itself ended with {status}")
    tally.add(f"tests {preset}", time.monotonic() - start, counts["passed"], counts["failed"], counts["skipped"])


def build_and_test(tally, preset, build_options=(), test_options=()):
    if build(tally, preset, *build_options):
        tests(tally, preset, *test_options)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--fast", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--all", action="store_true")
    wanted = parser.parse_args()
    linux, macos = platform.system() == "Linux", platform.system() == "Darwin"
    if linux:
        os.environ["LC_ALL"] = "C.UTF-8"
    if macos:
        # Homebrew's libraries are not instrumented; a container that crosses into them looks as if it had overflowed.
        os.environ.setdefault("ASAN_OPTIONS", "detect_container_overflow=0")
    tally = Tally()
    python = sys.executable

    # Without the tools that execute and link the macOS host here, its tests would be gone without a word.
    mac_host = ["-DLEXWEND_REQUIRE_MAC=ON"] if linux and platform.machine() == "x86_64" else []
    # The benchmarks are only compiled. Their library is no package there.
    bench = ["-DLEXWEND_BENCH=ON"] if linux else []
    # The preset names the clang of Debian 12; macOS has one of its own.
    clang = ["-DCMAKE_C_COMPILER=clang", "-DCMAKE_CXX_COMPILER=clang++"] if macos else []

    if wanted.fast:
        build_and_test(tally, "fake")
        return tally.close()
    if linux:
        # The desktop tests drive real applications; one build of them is enough. The same build counts the lines that
        # the other tests reach: instrumented code runs a little slower, a build of its own would take minutes.
        large = f"-DLEXWEND_LARGE_APPS={'ON' if wanted.all else 'OFF'}"
        # Half of the compiler's work on these folders. With --all the sources of the Linux host are changed one by one.
        unity = f"-DLEXWEND_UNITY={'OFF' if wanted.all else 'ON'}"
        if build(tally, "dev", large, unity, "-DLEXWEND_COVERAGE=ON", *mac_host, *bench):
            check(tally, "coverage counters at zero", ["scripts/coverage.sh", "--reset", "build/dev"])
            tests(tally, "dev", "-LE", "desktop")
            check(tally, "coverage", ["scripts/coverage.sh", "--report", "build/dev"])
            tests(tally, "dev", "-L", "desktop")
            if not wanted.quick:
                for count, *rooms in CHANGES_OF_ALL if wanted.all else CHANGES:
                    rooms = [room for room in rooms if mac_host or not room.startswith("platform/mac")]
                    if rooms:
                        check(tally, f"changes are noticed: {', '.join(rooms)}", [python, "-u", "scripts/mutate.py", "--count", count, *rooms])
    else:
        build_and_test(tally, "dev")
    if not wanted.quick:
        # The second compiler and the sanitizers in one build: each finds what it finds without the other too.
        build_and_test(tally, "asan", [*mac_host, *clang, *bench], ["-LE", "desktop"])
        if linux:
            check(tally, "fuzzing, 20 s a target", [python, "-u", "fuzz/run.py", "--seed", "1"])
        check(tally, "layers", [python, "scripts/check_layers.py"])
        check(tally, "canary of the layers", [python, "scripts/check_layers.py", "--canaries"])
        # Style is judged by one version of the tools, the one that Debian 12 has.
        if linux:
            check(tally, "format", [python, "scripts/check_style.py", "format"])
            check(tally, "canary of the format", [python, "scripts/check_style.py", "format-canary"])
            check(tally, "headers", [python, "scripts/check_style.py", "headers", "build/dev"])
            check(tally, "canary of the headers", [python, "scripts/check_style.py", "headers-canary"])
            check(tally, "canaries of clang-tidy", [python, "scripts/check_style.py", "tidy-canary"])
            check(tally, "clang-tidy", [python, "-u", "scripts/check_style.py", "tidy-deep" if wanted.all else "tidy", "build/dev"])
            check(tally, "package in a fresh root", [python, "-u", "packaging/try_package.py"])
    return tally.close()


if __name__ == "__main__":
    sys.exit(main())
