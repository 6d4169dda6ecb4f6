#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the zipped bundle: check_bundle.py SOURCE Lexwend.zip VERSION

The program is read byte by byte: load commands, oldest system, libraries, what it refers to, signature. Then the
property list, the icon set and the modes in the archive. Prints each thing that is wrong and fails if there is any.
"""
import hashlib
import os
import plistlib
import re
import struct
import subprocess
import sys
import tempfile
import zipfile
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import make_stub_libraries as stubs  # noqa: E402  (the lists of what may be referred to)

FAT_MAGIC, MACHO_64 = 0xCAFEBABE, 0xFEEDFACF
CPU_X86_64, CPU_ARM64 = 0x01000007, 0x0100000C
EXECUTE_FILE = 2
FLAG_TWO_LEVEL, FLAG_PIE = 0x80, 0x200000
LC_SYMTAB, LC_LOAD_DYLIB, LC_CODE_SIGNATURE, LC_BUILD_VERSION, LC_SEGMENT_64 = 0x2, 0xC, 0x1D, 0x32, 0x19
LC_MAIN, LC_RPATH, LC_LOAD_DYLINKER, LC_UUID = 0x80000028, 0x8000001C, 0xE, 0x1B
PLATFORM_MACOS = 1
MACOS_13 = 13 << 16
SIGNATURE_MAGIC, DIRECTORY_MAGIC, ADHOC = 0xFADE0CC0, 0xFADE0C02, 0x2
ICON_SIZES = {16, 32, 64, 128, 256, 512, 1024}
REDRAWN_SIZES = {16, 32, 64, 128}  # drawing the larger ones takes half a minute

problems = []


def expect(condition, text):
    if not condition:
        problems.append(text)


def string_at(data, offset):
    return data[offset:data.index(b"\0", offset)].decode()


class Slice:
    def __init__(self, data):
        self.data = data
        magic, self.cpu, _, self.type, count, _, self.flags, _ = struct.unpack_from("<8I", data)
        assert magic == MACHO_64
        self.commands = []
        offset = 32
        for _ in range(count):
            kind, size = struct.unpack_from("<2I", data, offset)
            self.commands.append((kind, offset))
            offset += size

    def of(self, kind):
        return [offset for each, offset in self.commands if each == kind]

    def libraries(self):
        return [string_at(self.data, at + struct.unpack_from("<I", self.data, at + 8)[0]) for at in self.of(LC_LOAD_DYLIB)]

    def undefined(self):
        symbols, count, strings, _ = struct.unpack_from("<4I", self.data, self.of(LC_SYMTAB)[0] + 8)
        found = {}
        for i in range(count):
            name, kind, _, description, _ = struct.unpack_from("<IBBHQ", self.data, symbols + 16 * i)
            if kind & 0xE0 == 0 and kind & 0x0E == 0 and kind & 1:
                found[string_at(self.data, strings + name)] = description >> 8
        return found


def expected_symbols():
    """Which library each symbol must come from, by the end of its install name."""
    owner = {symbol: "libSystem.B.dylib" for symbol in stubs.SYSTEM + stubs.BORROWED}
    owner.update({symbol: "libobjc.A.dylib" for symbol in stubs.OBJC})
    classes = {"NSObject": "libobjc.A.dylib"}
    for name, (symbols, names) in stubs.FRAMEWORKS.items():
        owner.update({symbol: name for symbol in symbols.split()})
        classes.update({each: name for each in names.split()})
    for name, library in classes.items():
        owner[f"_OBJC_CLASS_$_{name}"] = owner[f"_OBJC_METACLASS_$_{name}"] = library
    return owner


def check_slice(part, architecture):
    where = f"{architecture}: "
    expect(part.type == EXECUTE_FILE, where + "not an executable file")
    expect(part.flags & FLAG_PIE and part.flags & FLAG_TWO_LEVEL, where + "not position-independent or not two-level")
    for kind, name in ((LC_MAIN, "LC_MAIN"), (LC_LOAD_DYLINKER, "LC_LOAD_DYLINKER"), (LC_UUID, "LC_UUID"),
                       (LC_CODE_SIGNATURE, "LC_CODE_SIGNATURE"), (LC_BUILD_VERSION, "LC_BUILD_VERSION")):
        expect(len(part.of(kind)) == 1, where + f"{len(part.of(kind))} load commands {name}")
    platform, oldest, _ = struct.unpack_from("<3I", part.data, part.of(LC_BUILD_VERSION)[0] + 8)
    expect(platform == PLATFORM_MACOS, where + f"for platform {platform}")
    expect(oldest == MACOS_13, where + f"oldest system is {oldest >> 16}.{oldest >> 8 & 255}")

    libraries = part.libraries()
    allowed = {"libSystem.B.dylib", "libobjc.A.dylib", "libc++.1.dylib", "libicuuc.dylib",
               "libicudata.dylib"} | set(stubs.FRAMEWORKS)
    for library in libraries:
        expect(os.path.basename(library) in allowed, where + f"loads {library}")
        expect(library.startswith(("/usr/lib/", "/System/Library/Frameworks/", "@rpath/libicu")),
               where + f"loads {library}")
    for needed in ("AppKit", "Carbon", "ServiceManagement", "ApplicationServices", "libobjc.A.dylib"):
        expect(needed in [os.path.basename(library) for library in libraries], where + f"does not load {needed}")

    owner = expected_symbols()
    undefined = part.undefined()
    expect(len(undefined) > 0, where + "refers to nothing")
    for symbol, ordinal in sorted(undefined.items()):
        source = os.path.basename(libraries[ordinal - 1]) if 0 < ordinal <= len(libraries) else f"ordinal {ordinal}"
        # Which functions of these two are called changes with the compiler; what they look like does not.
        if source == "libc++.1.dylib":
            expect(symbol.startswith(("__Z", "___cxa", "___gxx")), where + f"{symbol} from {source}")
        elif source == "libicuuc.dylib":
            expect(re.search(r"_7\d", symbol), where + f"{symbol} from {source}")
        else:
            expect(owner.get(symbol) == source, where + f"{symbol} from {source}")
    check_signature(part, where)


def check_signature(part, where):
    offset, size = struct.unpack_from("<2I", part.data, part.of(LC_CODE_SIGNATURE)[0] + 8)
    magic, length, count = struct.unpack_from(">3I", part.data, offset)
    expect(magic == SIGNATURE_MAGIC and length <= size and count >= 1, where + "no signature")
    at = offset + struct.unpack_from(">2I", part.data, offset + 12)[1]
    magic, _, _, flags, hashes, _, _, slots, limit = struct.unpack_from(">9I", part.data, at)
    expect(magic == DIRECTORY_MAGIC, where + "no code directory")
    expect(flags & ADHOC, where + "not signed ad hoc")
    hash_size, hash_type, _, page_bits = struct.unpack_from("4B", part.data, at + 36)
    expect((hash_size, hash_type) == (32, 2), where + "not hashed with SHA-256")
    page = 1 << page_bits
    for i in range(slots):
        code = part.data[i * page:min((i + 1) * page, limit)]
        stored = part.data[at + hashes + 32 * i:at + hashes + 32 * (i + 1)]
        expect(hashlib.sha256(code).digest() == stored, where + f"page {i} does not match its signature")
    expect(limit == offset, where + "the signature does not cover the whole file")


def check_program(data):
    magic, count = struct.unpack_from(">2I", data)
    expect(magic == FAT_MAGIC and count == 2, "not a universal program of two")
    if problems:
        return
    seen = set()
    for i in range(count):
        cpu, _, offset, size, _ = struct.unpack_from(">5I", data, 8 + 20 * i)
        part = Slice(data[offset:offset + size])
        expect(part.cpu == cpu, "a slice of another processor than announced")
        architecture = {CPU_X86_64: "x86_64", CPU_ARM64: "arm64"}.get(cpu, hex(cpu))
        seen.add(architecture)
        check_slice(part, architecture)
    expect(seen == {"arm64", "x86_64"}, f"built for {sorted(seen)}")


def check_property_list(data, version):
    info = plistlib.loads(data)
    for key, value in {"CFBundleIdentifier": "org.lexwend.Lexwend", "CFBundleExecutable": "Lexwend",
                       "CFBundleName": "Lexwend", "CFBundlePackageType": "APPL", "CFBundleDevelopmentRegion": "he",
                       "CFBundleShortVersionString": version, "CFBundleVersion": version,
                       "CFBundleIconFile": "lexwend.icns", "LSMinimumSystemVersion": "13.0",
                       "LSUIElement": True, "NSPrincipalClass": "NSApplication"}.items():
        expect(info.get(key) == value, f"Info.plist: {key} is {info.get(key)!r}")
    expect(not any("${" in str(value) for value in info.values()), "Info.plist: a variable was not replaced")


def rows(png):
    """What make_icon.py has drawn, whatever the compression made of it: the one IDAT of the picture."""
    return zlib.decompress(png[41:-16])


def check_icon(data, make_icon):
    kind, size = data[:4], struct.unpack_from(">I", data, 4)[0]
    expect(kind == b"icns" and size == len(data), "the icon set is damaged")
    sizes, offset = set(), 8
    while offset < len(data):
        _, length = struct.unpack_from(">4sI", data, offset)
        image = data[offset + 8:offset + length]
        expect(image[:8] == b"\x89PNG\r\n\x1a\n", "a member of the icon set is no PNG")
        width, height = struct.unpack_from(">2I", image, 16)
        expect(width == height, "a member of the icon set is not square")
        sizes.add(width)
        if width in REDRAWN_SIZES:
            expect(rows(image) == rows(make_icon.png(width)), f"make_icon.py draws the icon of size {width} otherwise")
        offset += length
    expect(sizes == ICON_SIZES, f"the icon set has the sizes {sorted(sizes)}")
    # An independent reader takes the set too.
    with tempfile.NamedTemporaryFile(suffix=".icns") as copy:
        copy.write(data)
        copy.flush()
        out = subprocess.run(["icns2png", "-l", copy.name], capture_output=True, text=True, check=False).stdout
    expect("7 elements total found" in out, "icns2png does not read the icon set")


def main(source, archive, version):
    sys.path.insert(0, f"{source}/packaging/mac")
    import make_icon
    with zipfile.ZipFile(archive) as bundle:
        names = bundle.namelist()
        files = {f"Lexwend.app/Contents/{name}" for name in ("Info.plist", "MacOS/Lexwend", "Resources/lexwend.icns")}
        for name in files ^ {name for name in names if not name.endswith("/")}:
            expect(False, f"{name} is " + ("missing" if name in files else "not expected"))
        if problems:
            return
        for entry in bundle.infolist():
            mode = entry.external_attr >> 16
            if entry.filename.endswith("MacOS/Lexwend"):
                expect(mode & 0o777 == 0o755, f"the program's mode is {mode & 0o777:o}")
            elif not entry.is_dir():
                expect(mode & 0o111 == 0, f"{entry.filename} can be run")
        read = lambda name: bundle.read(f"Lexwend.app/Contents/{name}")  # noqa: E731
        check_program(read("MacOS/Lexwend"))
        check_property_list(read("Info.plist"), version)
        check_icon(read("Resources/lexwend.icns"), make_icon)
        with open(f"{source}/packaging/mac/lexwend.icns", "rb") as icon:
            expect(icon.read() == read("Resources/lexwend.icns"), "the icon is not the project's")


if __name__ == "__main__":
    if len(sys.argv) != 4 or not re.fullmatch(r"\d+\.\d+\.\d+", sys.argv[3]):
        sys.exit(__doc__)
    main(*sys.argv[1:])
    for problem in problems:
        print(problem)
    sys.exit(1 if problems else print("the bundle is as it must be"))
