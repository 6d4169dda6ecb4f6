#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What ./run, ./test and the test run do on macOS, with the system's programs played by stubs: scripts_test.py"""
import contextlib
import io
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
import test_run  # noqa: E402

AGENT = "build/release/app/Lexwend.app/Contents/MacOS/Lexwend"
BUILDING = f'[ "$1" != --build ] || {{ mkdir -p {os.path.dirname(AGENT)}; echo new >{AGENT}; chmod +x {AGENT}; }}'


class Scripts(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree, self.programs, self.home = (pathlib.Path(folder.name, name) for name in ("tree", "bin", "home"))
        for each in (self.tree, self.programs, self.home):
            each.mkdir()
        for name in ("run", "test", "Brewfile"):
            shutil.copy(ROOT / name, self.tree)
        shutil.copytree(ROOT / "scripts", self.tree / "scripts")
        shutil.copytree(ROOT / "packaging/mac", self.tree / "packaging/mac")
        # Nothing of this system but what macOS has under the same name.
        for name in ("bash", "env", "dirname", "mkdir", "rm", "cp", "chmod", "sort", "cat"):
            (self.programs / name).symlink_to(shutil.which(name))
        self.calls = pathlib.Path(folder.name, "calls")
        self.stub("uname", "echo Darwin")
        self.stub("xcode-select")
        self.stub("brew", '[ "$1" != --prefix ] || echo /opt/homebrew/opt/icu4c')
        self.stub("cmake", BUILDING)
        self.stub("open")
        self.stub("pgrep", "exit 1")
        self.stub("python3")

    def stub(self, name, body=""):
        path = self.programs / name
        path.write_text(f'#!/bin/bash\necho "{name} $* ICU_ROOT=${{ICU_ROOT:-}}" >>"{self.calls}"\n{body}\n')
        path.chmod(0o755)

    def script(self, name, *options, **environment):
        return subprocess.run([self.tree / name, *options], cwd=self.home, capture_output=True, text=True, check=False,
                              env={"PATH": str(self.programs), "HOME": str(self.home), **environment})

    def called(self, start):
        return [line for line in self.calls.read_text().splitlines() if line.startswith(start)]

    def test_run_installs_the_new_build_and_opens_that(self):
        installed = self.home / "Applications/Lexwend.app"
        (installed / "Contents/Old").mkdir(parents=True)
        done = self.script("run")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual((installed / "Contents/MacOS/Lexwend").read_text(), "new\n")
        self.assertFalse((installed / "Contents/Old").exists())
        self.assertEqual(len(self.called(f"open {installed} ")), 1)
        self.assertTrue(all(call.endswith("ICU_ROOT=/opt/homebrew/opt/icu4c") for call in self.called("cmake")))
        self.assertIn("never run on macOS", done.stdout)

    def test_run_leaves_a_running_agent_alone(self):
        self.stub("pgrep")
        done = self.script("run")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("the agent runs already", done.stdout)
        self.assertEqual(self.called("pgrep"), ["pgrep -x Lexwend ICU_ROOT=/opt/homebrew/opt/icu4c"])
        self.assertEqual(self.called("open"), [])
        self.assertFalse((self.home / "Applications").exists())

    def test_an_icu_of_the_users_own_needs_no_homebrew(self):
        (self.programs / "brew").unlink()
        done = self.script("run", "--no-install", ICU_ROOT="/my/icu")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(all(call.endswith("ICU_ROOT=/my/icu") for call in self.called("cmake")))

    def test_what_is_missing_is_named(self):
        self.stub("brew", "exit 1")
        self.assertIn("Homebrew could not install", self.script("run").stderr)
        self.assertIn("Homebrew does not know where its ICU is", self.script("run", "--no-install").stderr)
        (self.programs / "brew").unlink()
        self.assertIn("Homebrew is missing", self.script("run").stderr)
        self.stub("xcode-select", "exit 2")
        self.assertIn("xcode-select --install", self.script("test").stderr)
        self.assertIn("--demo opens a private X display", self.script("run", "--demo").stderr)

    def test_test_installs_the_brewfile_and_hands_over(self):
        self.stub("brew", '[ "$2" != check ]')
        done = self.script("test", "--quick")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(self.called("brew bundle install")), 1)
        self.assertEqual(len(self.called("python3 -u scripts/test_run.py --quick")), 1)

    def prepare_packing(self, architectures="arm64", libraries="/usr/lib/libSystem.B.dylib", runtime="flags=0x10002(adhoc,runtime)",
                        said="ALL PASSED"):
        """The programs that packing asks, with the answers of a good build; returns the archive."""
        for name in ("sed", "tr", "paste", "grep", "mktemp"):
            if not (self.programs / name).exists():
                (self.programs / name).symlink_to(shutil.which(name))
        self.stub("uname", '[ "$1" = -m ] && echo arm64 || echo Darwin')
        program = "build/package-mac/app/Lexwend.app/Contents/MacOS/Lexwend"
        self.stub("cmake", f'[ "$1" != --build ] || {{ mkdir -p {os.path.dirname(program)}; '
                           f"printf '#!/bin/bash\\necho {said}\\n' >{program}; chmod +x {program}; }}")
        self.stub("plutil", 'case "$2" in CFBundleIdentifier) echo org.lexwend.Lexwend ;; LSUIElement) echo true ;; '
                            'CFBundleShortVersionString) echo 1.2.3 ;; esac')
        self.stub("lipo", f"echo {architectures}")
        self.stub("otool", f"echo Lexwend:; echo '\t{libraries} (compatibility version 1.0.0, current version 1.0.0)'")
        self.stub("codesign", f'[ "$1" != --display ] || echo "{runtime}"')
        self.stub("ditto", 'case "$1" in -c) cp -R "$4" "$5" ;; -x) cp -R "$3" "$4/Lexwend.app" ;; esac')
        self.stub("shasum", f"echo {'ab' * 32} archive")
        self.stub("xcrun")
        self.stub("spctl")
        return self.tree / "build/packages/Lexwend-1.2.3-macos-arm64.zip"

    def pack(self, *options):
        return self.script("packaging/mac/package.sh", "--no-install", *options)

    def test_packing_signs_checks_and_runs_the_self_test_out_of_the_archive(self):
        archive = self.prepare_packing()
        done = self.pack()
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(archive.exists())
        signed, = self.called("codesign --force")
        for word in ("--options runtime", "--timestamp=none", "--entitlements packaging/mac/Lexwend.entitlements", "--sign - "):
            self.assertIn(word, signed)
        self.assertEqual(len(self.called("codesign --verify --strict")), 2, "before and after it was packed")
        self.assertEqual(self.called("xcrun"), [])
        self.assertFalse((self.tree / "build/packages/lexwend.rb").exists())

    def test_packing_refuses_what_other_macs_could_not_start(self):
        for wrong, sentence in (({"libraries": "/opt/homebrew/lib/libicuuc.74.dylib"}, "which other Macs do not have"),
                                ({"architectures": "x86_64"}, "the program is for 'x86_64'"),
                                ({"runtime": "flags=0x2(adhoc)"}, "lacks the hardened runtime"),
                                ({"said": "FAILED"}, "the self-test")):
            self.prepare_packing(**wrong)
            done = self.pack()
            self.assertEqual(done.returncode, 1, done.stdout)
            self.assertIn(sentence, done.stderr)
        self.stub("codesign", '[ "$1" != --verify ]')
        self.assertIn("does not hold", self.pack().stderr)
        self.stub("uname", "echo Linux")
        self.assertIn("packed on a Mac", self.pack().stderr)

    def test_packing_for_both_processors_notarises_and_writes_the_cask(self):
        self.prepare_packing(architectures="x86_64 arm64")
        icu = self.home / "icu"
        (icu / "lib").mkdir(parents=True)
        self.assertIn("there is no static ICU", self.pack("--universal", str(icu)).stderr)
        (icu / "lib/libicuuc.a").touch()
        self.assertIn("no ad-hoc signature", self.pack("--notarise", "store").stderr)
        done = self.pack("--universal", str(icu), "--identity", "Developer ID Application: X", "--notarise", "store",
                         "--url", "https://example.org/Lexwend.zip")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("-DCMAKE_OSX_ARCHITECTURES=arm64;x86_64", self.called("cmake --preset")[-1])
        self.assertIn(f"-DICU_ROOT={icu}", self.called("cmake --preset")[-1])
        self.assertIn("--timestamp ", self.called("codesign --force")[-1])
        self.assertEqual([call.split()[1] for call in self.called("xcrun")], ["notarytool", "stapler"])
        cask = (self.tree / "build/packages/lexwend.rb").read_text()
        for line in ('version "1.2.3"', f'sha256 "{"ab" * 32}"', 'url "https://example.org/Lexwend.zip"'):
            self.assertIn(line, cask)
        self.assertNotIn("@", cask)

    def commands_of_the_test_run(self, system, machine):
        commands = []
        with contextlib.redirect_stdout(io.StringIO()), mock.patch.object(test_run, "ROOT", self.tree), \
                mock.patch.object(test_run.platform, "system", lambda: system), \
                mock.patch.object(test_run.platform, "machine", lambda: machine), \
                mock.patch.object(test_run, "run", lambda *words: (commands.append(" ".join(map(str, words))) or 0, "")), \
                mock.patch.object(sys, "argv", ["test_run.py"]), mock.patch.dict(os.environ, clear=True):
            self.assertEqual(test_run.main(), 0)
            self.assertEqual(os.environ.get("ASAN_OPTIONS"), "detect_container_overflow=0" if system == "Darwin" else None)
        return commands

    def test_the_test_run_asks_for_nothing_that_macos_lacks(self):
        commands = self.commands_of_the_test_run("Darwin", "arm64")
        self.assertEqual([command for command in commands if command.startswith("cmake --preset")],
                         ["cmake --preset dev", "cmake --preset asan -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++"])
        for missing in ("coverage", "clang-", "check_style"):
            self.assertEqual([command for command in commands if missing in command], [])

    def test_the_test_run_on_linux_demands_the_checks_of_the_macos_host_where_they_can_run(self):
        for machine, demanded in (("x86_64", 2), ("aarch64", 0)):
            commands = self.commands_of_the_test_run("Linux", machine)
            self.assertEqual(len([command for command in commands if "-DLEXWEND_REQUIRE_MAC=ON" in command]), demanded)


if __name__ == "__main__":
    unittest.main()
