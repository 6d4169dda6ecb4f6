#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tries the Debian package in a fresh root of this Debian: installs it over an older one, runs its programs, purges it.

usage: try_package.py [PACKAGE]

Without PACKAGE it is built first by ./package, while the root is made. The root has nothing but what Debian calls required, and apt. It
comes from the mirrors that apt uses here and needs a root user who may chroot, but no mount, so that a container can do it. Packages that
were fetched are kept in build/package/archives.
"""
import concurrent.futures
import contextlib
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
ARCHIVES = ROOT / "build" / "package" / "archives"
OLDER = "0.0.1"
USER = 1000
STARTED = time.monotonic()
PROGRAMS = ("lexwend", "lexwend-convert", "lexwend-doctor")
# Of what the package must have. What it has besides is compared with its own list.
EXPECTED = [f"usr/bin/{program}" for program in PROGRAMS] + [f"usr/share/man/man1/{program}.1.gz" for program in PROGRAMS] + [
    f"usr/share/{place}" for program in PROGRAMS
    for place in (f"bash-completion/completions/{program}", f"zsh/vendor-completions/_{program}", f"fish/vendor_completions.d/{program}.fish")
] + [f"usr/share/{place}" for place in (
    "applications/org.lexwend.Lexwend.desktop", "metainfo/org.lexwend.Lexwend.metainfo.xml",
    "icons/hicolor/scalable/apps/org.lexwend.Lexwend.svg", "icons/hicolor/symbolic/apps/org.lexwend.Lexwend-symbolic.svg",
    "user-tmpfiles.d/lexwend.conf", "doc/lexwend/README.md", "doc/lexwend/README.he.md", "doc/lexwend/copyright")]


def say(text):
    print(f"{time.monotonic() - STARTED:5.0f} s  {text}", flush=True)


def fail(text):
    sys.exit(f"try_package: {text}")


def run(command, **options):
    """Runs a command; prints what it said when it fails."""
    done = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False, **options)
    if done.returncode != 0:
        fail(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


def sources():
    """The lines of Debian's own archives among the sources of this machine's apt."""
    name = dict(line.rstrip().split("=", 1) for line in open("/etc/os-release", encoding="utf-8"))["VERSION_CODENAME"].strip('"')
    targets = run(["apt-get", "indextargets", "--format", "$(SITE) $(RELEASE) $(COMPONENT)", "Identifier: Packages"])
    lines = sorted({line for line in targets.splitlines()
                    if line.split()[1:] in [[f"{name}{part}", "main"] for part in ("", "-updates", "-security")]})
    if not lines:
        fail(f"apt knows no archive of Debian {name} here; its sources are needed to make a fresh root of it")
    return name, [f"deb {line}" for line in lines]


class FreshRoot:
    """A Debian that nobody has used yet."""

    def __init__(self, folder):
        self.path = folder
        self.environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"}
        self.environment |= {key: value for key, value in os.environ.items() if key.lower() in ("http_proxy", "https_proxy", "no_proxy")}

    def make(self):
        name, lines = sources()
        ARCHIVES.mkdir(parents=True, exist_ok=True)
        kept = f'cp -n {ARCHIVES}/*.deb "$1"/var/cache/apt/archives/ 2>/dev/null || true'
        run(["mmdebstrap", "--mode=root", "--variant=minbase", "--dpkgopt=force-unsafe-io", '--aptopt=Acquire::Languages "none"',
             "--aptopt=APT::Sandbox::User \"root\"",
             "--skip=cleanup/apt/lists,cleanup/apt/cache,download/empty",
             f'--setup-hook=mkdir -p "$1"/var/cache/apt/archives/partial; {kept}', name, self.path, *lines])
        shutil.copy("/etc/resolv.conf", self.path / "etc/resolv.conf")
        (self.path / "usr/sbin/policy-rc.d").write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")
        (self.path / "usr/sbin/policy-rc.d").chmod(0o755)
        self.run("useradd", "--create-home", "--uid", str(USER), "somebody")
        say("the fresh root is made")

    def keep_archives(self):
        """So that the next run need not fetch them; written under another name first, because another run may read them."""
        for archive in (self.path / "var/cache/apt/archives").glob("*.deb"):
            if not (ARCHIVES / archive.name).exists():
                shutil.copy(archive, ARCHIVES / f".{archive.name}.{os.getpid()}")
                (ARCHIVES / f".{archive.name}.{os.getpid()}").rename(ARCHIVES / archive.name)

    def command(self, *command, user=0):
        return ["chroot", f"--userspec={user}:{user}", self.path, *command]

    def user_environment(self, **more):
        return self.environment | {"HOME": "/home/somebody", "USER": "somebody"} | more

    def run(self, *command):
        return run(self.command(*command), env=self.environment)

    def run_as_user(self, *command, text=None, expected=0, **environment):
        done = subprocess.run([str(part) for part in self.command(*command, user=USER)], env=self.user_environment(**environment),
                              input=text or "", stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, timeout=60)
        if done.returncode != expected:
            fail(f"{command} ended with {done.returncode}, expected was {expected}:\n{done.stdout}")
        return done.stdout

    def install(self, package):
        shutil.copy(package, self.path / "root" / package.name)
        self.run("apt-get", "-y", "-q", "--no-install-recommends", "install", f"/root/{package.name}")
        (self.path / "root" / package.name).unlink()

    def version(self):
        return self.run("dpkg-query", "-W", "-f", "${Version}", "lexwend")

    def own_files(self):
        """Everything with the name of the program, except what users and apt keep of it."""
        found = set()
        for folder, folders, files in os.walk(self.path):
            place = Path(folder).relative_to(self.path)
            if str(place) in ("proc", "sys", "home", "tmp", "var/log", "var/cache/apt", "var/lib/apt"):
                folders.clear()
                continue
            found |= {str(place / name) for name in (*folders, *files) if "lexwend" in name.lower()}
        return found


def older_package(package, folder):
    """The same package under a lower version, with a file that the real one no longer has."""
    content = folder / "older"
    run(["dpkg-deb", "-R", package, content])
    control = content / "DEBIAN/control"
    lines = [f"Version: {OLDER}" if line.startswith("Version: ") else line for line in control.read_text(encoding="utf-8").splitlines()]
    control.write_text("\n".join(lines) + "\n", encoding="utf-8")
    (content / "usr/share/lexwend-of-old").write_text("of an older version\n", encoding="utf-8")
    older = folder / f"lexwend_{OLDER}.deb"
    run(["dpkg-deb", "--root-owner-group", "-Znone", "-b", content, older])
    return older


@contextlib.contextmanager
def display():
    """An X server of this machine. The programs in the root reach it by its abstract socket."""
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "800x600x24", "-nolisten", "tcp", "-noreset", "-ac"], pass_fds=[write],
                              stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        with os.fdopen(read) as numbers:
            number = numbers.readline().strip()
        if not number:
            fail("Xvfb did not start")
        run(["setxkbmap", "-display", f":{number}", "-layout", "us,il"])
        yield f":{number}"
    finally:
        server.terminate()
        server.wait()


def poll(condition, what, seconds=20):
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            fail(f"{what}: not within {seconds} s")
        time.sleep(0.05)


def try_programs(root, version):
    for program in PROGRAMS:
        said = root.run_as_user(program, "--version")
        if said != f"{program} {version}\n":
            fail(f"{program} --version said {said!r}")
    if "FAIL" in root.run_as_user("lexwend", "--selftest"):
        fail("the built-in table fails in the self-test")
    said = root.run_as_user("lexwend-convert", text="akuo")
    if said != "שלום":
        fail(f"lexwend-convert made {said!r}")
    if not any("agent" in said for said in [root.run_as_user("lexwend", expected=1)]):
        fail("without a display the agent does not say why it ends")


def try_agent(root):
    """Starts the agent on a display and lets the doctor look at it."""
    settings = root.path / "home/somebody/.config/lexwend/settings"
    with display() as name:
        agent = subprocess.Popen([str(part) for part in root.command("lexwend", user=USER)], env=root.user_environment(DISPLAY=name),
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            poll(lambda: settings.exists() or agent.poll() is not None, "the agent has written its settings")
            if agent.poll() is not None:
                fail(f"the agent ended with {agent.returncode}: {agent.stdout.read()}")
            seen = {}

            def held():
                # 1 is right: without a session bus and a tray there are findings.
                said = root.run_as_user("lexwend-doctor", "--json", expected=1, DISPLAY=name)
                seen.update({check["name"]: check["state"] for check in json.loads(said)["checks"]})
                return seen["hotKey"] == "good"

            poll(held, "the agent has its hot key")
            for check in ("agent", "display", "layouts", "fonts", "settings"):
                if seen[check] != "good":
                    fail(f"lexwend-doctor says in the fresh root that {check} is {seen[check]}")
        finally:
            agent.send_signal(signal.SIGTERM)
            said = agent.communicate(timeout=20)[0]
        if agent.returncode != 0:
            fail(f"the agent ended with {agent.returncode} when it was asked to end: {said}")


def try_package(root, package, folder):
    version = run(["dpkg-deb", "-f", package, "Version"]).strip()
    if root.own_files():
        fail(f"the fresh root is not fresh: {root.own_files()}")
    root.install(older_package(package, folder))
    root.keep_archives()
    if root.version() != OLDER or not (root.path / "usr/share/lexwend-of-old").exists():
        fail("the older version was not installed")
    say("the older version is installed, with what it depends on")

    root.install(package)
    if root.version() != version or (root.path / "usr/share/lexwend-of-old").exists():
        fail("the upgrade left the older version")
    missing = [file for file in EXPECTED if not (root.path / file).exists()]
    if missing:
        fail(f"the package has no {missing}")
    damage = root.run("dpkg", "--verify", "lexwend")
    if damage:
        fail(f"files differ from the package's own list: {damage}")
    try_programs(root, version)
    say("the upgrade is installed, and its programs run")
    try_agent(root)
    say("the agent starts, holds its hot key, and ends")

    listed = [line for line in root.run("dpkg", "-L", "lexwend").splitlines() if not (root.path / line[1:]).is_dir()]
    root.run("apt-get", "-y", "-q", "purge", "lexwend")
    left = root.own_files() | {file for file in listed if (root.path / file[1:]).exists()}
    if left:
        fail(f"the purge left {sorted(left)}")
    say("the purge left nothing")


def build():
    # The caller's, not root's: the tree is his.
    caller = ["sudo", "-u", os.environ["SUDO_USER"]] if "SUDO_USER" in os.environ else []
    said = run([*caller, ROOT / "package", "--no-install"])
    say("the package is built")
    return ROOT / said.strip().rsplit("package: ", 1)[1]


def main():
    if os.geteuid() != 0:
        os.execvp("sudo", ["sudo", sys.executable, __file__, *sys.argv[1:]])
    with tempfile.TemporaryDirectory(prefix="lexwend-root-") as name, concurrent.futures.ThreadPoolExecutor() as pool:
        folder = Path(name)
        root = FreshRoot(folder / "root")
        made = pool.submit(root.make)
        package = Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else build()
        checked = pool.submit(run, [HERE / "check.sh", package])
        made.result()
        try_package(root, package, folder)
        checked.result()
        say("lintian and the other checkers have no complaint")


if __name__ == "__main__":
    main()
