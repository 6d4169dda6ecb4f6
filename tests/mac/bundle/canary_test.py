#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Proves that the two checks of the bundle can fail: canary_test.py SOURCE BUILD, after make_bundle.py BUILD.

One small program compiles and links. Then each of its mistakes must be refused by the compiler or the linker, and each
damage to the bundle must be named by check_bundle.py.
"""
import os
import plistlib
import subprocess
import sys
import tempfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
GOOD = """
#import <AppKit/AppKit.h>
#import <Carbon/Carbon.h>
#import <ServiceManagement/ServiceManagement.h>
int main() {
  @autoreleasepool {
    NSPasteboard* board = NSPasteboard.generalPasteboard;
    [board clearContents];
    CFTypeRef source = TISCopyCurrentKeyboardLayoutInputSource();
    if (source != nullptr) CFRelease(source);
    CGEventPost(kCGHIDEventTap, nullptr);
    return (int)SMAppService.mainAppService.status;
  }
}
"""
MISTAKES = {
    "a selector is misspelt": ("clearContents", "clearContent"),
    "a property is misspelt": ("generalPasteboard", "generalPasteBoard"),
    "a function is misspelt": ("TISCopyCurrentKeyboardLayoutInputSource", "TISCopyCurrentKeyboardLayoutSource"),
    "a function is declared by no header": ("CFRelease(source)", "CFReleaseLater(source)"),
    "a class is declared by no header": ("NSPasteboard* board = NSPasteboard", "NSPasteboard* board = NSClipboard"),
    "an argument has a wrong type": ("CGEventPost(kCGHIDEventTap", 'CGEventPost("tap"'),
    "an argument is missing": ("CGEventPost(kCGHIDEventTap, nullptr)", "CGEventPost(kCGHIDEventTap)"),
    "a bridge is missing": ("CFTypeRef source =", "id source = "),
    "a declared function is in no library": (
        "int main() {", "extern \"C\" void CGEventPostTwice(void);\nint main() {\n  CGEventPostTwice();"),
    "a declared class is in no library": (
        "int main() {", "@interface NSClipboard : NSObject\n@end\nint main() {\n  (void)[NSClipboard new];"),
}
FRAMEWORKS = ("AppKit", "Foundation", "CoreFoundation", "CoreGraphics", "Carbon", "ServiceManagement")


def links(sysroot, folder, text):
    source = f"{folder}/canary.mm"
    with open(source, "w") as out:
        out.write(text)
    command = ["clang++-14", "--target=arm64-apple-macos13", "-isysroot", sysroot, "-std=c++20", "-fobjc-arc", "-fblocks",
               "-Werror", "-nostdinc++", "-nostdlibinc", "-isystem", f"{sysroot}/shim", "-isystem",
               "/usr/lib/llvm-14/include/c++/v1", "-isystem", f"{sysroot}/usr/include", "-isystem",
               "/usr/include/x86_64-linux-musl", "-D_GNU_SOURCE", "-iframework",
               f"{sysroot}/System/Library/Frameworks", source, "-o", f"{folder}/canary", "-fuse-ld=/usr/bin/ld64.lld-14",
               "-mlinker-version=609", "-stdlib=libc++"]
    for framework in FRAMEWORKS:
        command += ["-framework", framework]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def passes(source, archive, version):
    command = [sys.executable, f"{HERE}/check_bundle.py", source, archive, version]
    return subprocess.run(command, capture_output=True, text=True, check=False)


def damaged(archive, copy, name, change, mode=None):
    """A copy of the archive in which one member is changed; a change of None leaves it out."""
    with zipfile.ZipFile(archive) as old, zipfile.ZipFile(copy, "w") as new:
        for entry in old.infolist():
            data = old.read(entry)
            if entry.filename == f"Lexwend.app/Contents/{name}":
                if change is None:
                    continue
                data = change(data)
                if mode is not None:
                    entry.external_attr = (0o100000 | mode) << 16
            new.writestr(entry, data)
    return copy


def main(source, build):
    wrong = []
    archive, sysroot = f"{build}/Lexwend.zip", f"{build}/sysroot"
    with zipfile.ZipFile(archive) as bundle:
        version = plistlib.loads(bundle.read("Lexwend.app/Contents/Info.plist"))["CFBundleVersion"]
    with tempfile.TemporaryDirectory() as folder:
        good = links(sysroot, folder, GOOD)
        if good.returncode != 0:
            wrong.append("the program without a mistake is refused:\n" + good.stderr)
        for name, (old, new) in MISTAKES.items():
            assert old in GOOD, name
            if links(sysroot, folder, GOOD.replace(old, new)).returncode == 0:
                wrong.append(f"accepted although {name}")

        damages = {
            "the program cannot be run": ("MacOS/Lexwend", lambda data: data, 0o644),
            "one byte of the code is another": (
                "MacOS/Lexwend", lambda data: data[:0x8100] + bytes([data[0x8100] ^ 1]) + data[0x8101:], None),
            "the dock shows it": ("Info.plist", lambda data: data.replace(b"LSUIElement", b"LSUIElemenT"), None),
            "the identifier is another": ("Info.plist", lambda data: data.replace(b"org.lexwend", b"com.lexwend"), None),
            "the icon set is missing": ("Resources/lexwend.icns", None, None),
            "the icon set is cut": ("Resources/lexwend.icns", lambda data: data[:-1], None),
        }
        for name, (member, change, mode) in damages.items():
            copy = damaged(archive, f"{folder}/Lexwend.zip", member, change, mode)
            if passes(source, copy, version).returncode == 0:
                wrong.append(f"accepted although {name}")
        if passes(source, archive, "9.9.9").returncode == 0:
            wrong.append("accepted although the version is another")
        with open(f"{build}/arm64/app/Lexwend.app/Contents/MacOS/Lexwend", "rb") as program:
            one = program.read()
        if passes(source, damaged(archive, f"{folder}/thin.zip", "MacOS/Lexwend", lambda _: one),
                  version).returncode == 0:
            wrong.append("accepted although it is built for one processor only")
    for each in wrong:
        print(each)
    return 1 if wrong else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
