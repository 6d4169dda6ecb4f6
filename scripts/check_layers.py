#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Denies includes that point the wrong way through the house.

    app -> hotkey, text, input -> support -> core
    core -> core/simd
    everything but core -> platform/*.h
    platform/fake, platform/linux, platform/mac -> platform/*.h and their own folder
    tools -> hotkey, text, input -> support -> core
    in platform/linux: the arrows of LINUX_ROOMS, which only the files of the folder itself may cross

The rooms see the C++ standard library and ICU, core/simd the standard library and Highway, the contracts in platform/ the
standard library alone; the host in memory, which is made for tests, may speak to GoogleTest. Only platform/linux and
platform/mac see system headers (the tools those few that every POSIX system has), only platform/linux sees Qt, and nobody
else asks which operating system it is compiled for. tests/, bench/ and fuzz/ are free. Every function of Host is pure.

With --canaries the script checks itself: in scripts/canaries/layers the lines that say "denied" must be denied, and no
other line.
"""

import re
import sys
from pathlib import Path

from sources import CANARIES, ROOT, sources

ROOMS = {
    "core/simd": {"core/simd"},
    "core": {"core", "core/simd"},
    "support": {"support", "core"},
    "input": {"input", "support", "core"},
    "text": {"text", "support", "core"},
    "hotkey": {"hotkey", "support", "core"},
    "app": {"app", "hotkey", "text", "input", "support", "core"},
    "tools": {"tools", "hotkey", "text", "input", "support", "core"},
}
# The rooms of the Linux host and what each may use beside itself.
LINUX = "platform/linux"
LINUX_ROOMS = {
    "display": set(),
    "session": set(),
    "instance": {"session"},
    "keymap": {"session"},
    "keyboard": {"display", "session", "keymap"},
    "selection": {"display"},
    "pipes": {"selection"},
    "clipboard": {"selection", "display"},
    "wayland": {"selection", "pipes", "display", "session", "keymap"},
    "sway": {"display", "session", "keymap"},
    "kwin": {"wayland", "display", "session", "keymap"},
    "gnome": {"selection", "pipes", "wayland", "display", "session", "keymap"},
    "keeper": {"gnome", "selection", "session"},
    "server": {"keyboard", "sway", "kwin", "gnome", "keeper", "selection", "wayland", "display", "session", "keymap"},
    "accessibility": {"session"},
    "tray": {"display", "session"},
    "windows": {"tray", "wayland", "keymap", "display", "session"},
    "diagnosis": {"display", "session"},
}
POSIX = {"dlfcn.h", "fcntl.h", "poll.h", "spawn.h", "sys/stat.h", "sys/wait.h", "unistd.h"}
ICU_ROOMS = {"core", "support", "input", "text", "hotkey", "app"}
# A host that passes on to another one (platform/linux/load_host.cpp) is made to name every function by the compiler, if all are pure.
PURE = "platform/host.h"
IMPURE = re.compile(r"\bvirtual\s+(?!~)(?!.*= 0;\s*$)")
HOSTS = {"platform/fake", "platform/linux", "platform/mac"}
SYSTEM_HOSTS = {"platform/linux", "platform/mac"}
FREE = {"tests", "bench", "fuzz"}
FOLDERS = set(ROOMS) | FREE | {"platform"}

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem forward_list fstream functional
future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
mutex new numbers numeric optional ostream queue random ratio regex scoped_allocator semaphore set shared_mutex span
sstream stack stdexcept stop_token streambuf string string_view syncstream system_error thread tuple type_traits
typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
""".split())

INCLUDE = re.compile(r"""^\s*#\s*(?:include|import|include_next)\s*(?:"(?P<quoted>[^"]+)"|<(?P<angle>[^>]+)>|(?P<other>\S+))""")
HAS_INCLUDE = re.compile(r"""__has_include\s*\(\s*(?:"(?P<quoted>[^"]+)"|<(?P<angle>[^>]+)>)""")
SYSTEM_QUESTION = re.compile(
    r"\b(__APPLE__|__MACH__|TARGET_OS_\w+|__linux__|__linux|linux|__gnu_linux__|__unix__|__unix|unix|__FreeBSD__|_WIN32|_WIN64)\b")
DIRECTIVE = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif|elifdef|elifndef|define)\b")
QT = re.compile(r"^(Q[A-Z]\w*|Qt\w*/.*|qt[a-z]*\.h|qt6/.*)$")
APPLE = re.compile(r"^(AppKit|ApplicationServices|Carbon|Cocoa|Core[A-Z]\w+|Foundation|IOKit|ServiceManagement|objc|mach)/")


def without_comments(text):
    """The text with comments blanked, strings kept and every line in its place."""
    pattern = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.S)
    return pattern.sub(lambda m: m.group() if m.group()[0] == '"' else re.sub(r"[^\n]", " ", m.group()), text)


def room_of(path):
    """Where a file stands: a room, "platform" for the contracts themselves, or a host such as "platform/linux"."""
    parts = Path(path).parts
    if parts[0] == "platform" and len(parts) > 2 or parts[:2] == ("core", "simd"):
        return "/".join(parts[:2])
    return parts[0]


def linux_room_of(path):
    """The room of the Linux host in which a file stands; None for the files of the host's own folder and all others."""
    parts = Path(path).parts
    return parts[2] if "/".join(parts[:2]) == LINUX and len(parts) > 3 else None


def linux_room_error(path, name):
    """Why the file at path in the Linux host may not include the host's header name; None when it may."""
    room, target = linux_room_of(path), linux_room_of(name)
    if room is None or target == room:
        return None
    if room not in LINUX_ROOMS:
        return f"{LINUX}/{room} is no room of the Linux host; give it a rule in scripts/check_layers.py"
    if target is None:
        return f"{room} is a room of the host and may not know the whole of it, {name}"
    return None if target in LINUX_ROOMS[room] else f"the arrows in {LINUX} do not lead from {room} to {target}"


def project_include_error(path, room, name):
    """Why the file at path in room may not include the project's header name; None when it may."""
    target = room_of(name)
    if room == LINUX and target == LINUX:
        return linux_room_error(path, name)
    if target in FREE:
        return f"{room} includes from {target}/, which only tests may"
    if room in HOSTS:
        allowed = target in ("platform", room)
        return None if allowed else f"a host includes platform/*.h and its own folder only, not {target}/"
    if room == "platform":
        return None if target == "platform" else f"a contract in platform/ includes contracts only, not {target}/"
    if target in HOSTS:
        return f"{room} reaches into the host {target}/; it may know the contracts in platform/*.h only"
    if target == "platform":
        if room == "core":
            return "core knows no platform"
        return None
    return None if target in ROOMS[room] else f"the arrows do not lead from {room} to {target}"


def system_include_error(room, name):
    """Why a file in room may not include <name>; None when it may."""
    if name in STANDARD:
        return None
    if room in ICU_ROOMS and name.startswith("unicode/"):
        return None
    if room == "platform/fake" and name.split("/")[0] in ("gtest", "gmock"):
        return None
    if room == "core/simd" and name.startswith("hwy/"):
        return None
    if room == "tools" and name in POSIX:
        return None
    if room == "platform/linux":
        return f"the Linux host includes Apple's <{name}>" if APPLE.match(name) else None
    if room == "platform/mac":
        return f"only the Linux host knows Qt, not <{name}>" if QT.match(name) else None
    library = "the C++ standard library and ICU" if room in ICU_ROOMS else "the C++ standard library"
    return f"{room} includes {library} only, not <{name}>"


def include_error(path, room, quoted, angle):
    name = quoted or angle
    if name.split("/")[0] in FOLDERS and "/" in name:
        if ".." in name.split("/"):
            return f'"{name}" walks upwards; name the file from the root of the tree'
        return project_include_error(path, room, name)
    if quoted and room not in HOSTS:
        return f'"{name}" does not start at the root of the tree'
    if quoted and ".." in name.split("/"):
        return f'"{name}" walks upwards; name the file from the root of the tree'
    return system_include_error(room, name)


def errors_of(path, text):
    """(line number, reason) for every line of the file at path, relative to its root, that breaks a rule."""
    room = room_of(path)
    if room in FREE:
        return []
    if room not in ROOMS and room not in HOSTS and room != "platform":
        return [(1, f"{path} stands in no room of the house; give its folder a rule in scripts/check_layers.py")]
    errors = []
    for number, line in enumerate(without_comments(text).split("\n"), start=1):
        if path == PURE and IMPURE.search(line):
            errors.append((number, "a function of Host with an answer of its own is one that a host in front of another may forget"))
        match = INCLUDE.match(line)
        if match and match["other"]:
            errors.append((number, "an include must name its file, not a macro"))
        elif match:
            reason = include_error(path, room, match["quoted"], match["angle"])
            if reason:
                errors.append((number, reason))
        elif DIRECTIVE.match(line):
            for asked in HAS_INCLUDE.finditer(line):
                reason = include_error(path, room, asked["quoted"], asked["angle"])
                if reason:
                    errors.append((number, reason))
            question = SYSTEM_QUESTION.search(line)
            if question and room not in SYSTEM_HOSTS:
                errors.append((number, f"{room} asks for the operating system ({question.group()}); a host answers that by a value"))
    return errors


def check(root, files):
    wrong = 0
    for file in files:
        path = file.relative_to(root)
        for number, reason in errors_of(path.as_posix(), file.read_text(encoding="utf-8")):
            print(f"{path}:{number}: {reason}")
            wrong += 1
    print(f"layers: {len(files)} files, {wrong} wrong")
    return wrong == 0 and len(files) > 0


def check_canaries():
    """The lines of the canaries that say so must be denied, the others must not be."""
    root = CANARIES / "layers"
    expected, denied = set(), set()
    for file in sources(root):
        path = file.relative_to(root).as_posix()
        text = file.read_text(encoding="utf-8")
        expected |= {(path, n) for n, line in enumerate(text.split("\n"), start=1) if re.search(r"//\s*denied\b", line)}
        denied |= {(path, n) for n, _ in errors_of(path, text)}
    for path, number in sorted(expected - denied):
        print(f"scripts/canaries/layers/{path}:{number}: should be denied and was accepted")
    for path, number in sorted(denied - expected):
        print(f"scripts/canaries/layers/{path}:{number}: should be accepted and was denied")
    print(f"layers: {len(expected)} wrong lines in the canaries, {len(expected & denied)} of them denied")
    return expected == denied and len(expected) > 0


if __name__ == "__main__":
    good = check_canaries() if sys.argv[1:] == ["--canaries"] else check(ROOT, sources())
    sys.exit(0 if good else 1)
