#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What cmake --install puts where, for a user and for a package, and what the target uninstall takes away again.

usage: install_test.py CMAKE BUILD
"""
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

IDENTIFIER = 'org.lexwend.Lexwend'


def install(prefix, home, **environment):
    home.mkdir()
    subprocess.run([sys.argv[1], '--install', sys.argv[2], '--prefix', str(prefix)], check=True, stdout=subprocess.DEVNULL,
                   env=dict(os.environ, HOME=str(home), **environment))


def expect_installed(root, prefix):
    """`root` is where the prefix's files are now."""
    shown = root / 'share' / 'applications' / f'{IDENTIFIER}.desktop'
    entry = shown.read_text(encoding='utf-8').splitlines()
    # KWin compares the command with the program's path, so it has quotes only where the path needs them.
    program = f'{prefix}/bin/lexwend'
    command = f'"{program}"' if ' ' in program else program
    assert f'Exec={command}' in entry, entry
    assert 'X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input,org_kde_plasma_window_management' in entry, entry
    assert f'Icon={IDENTIFIER}' in entry, entry
    for action in ('fix', 'menu', 'settings', 'quit'):
        assert f'[Desktop Action {action}]' in entry and f'Exec={command} --{action}' in entry, entry
    for state in ('', '-waiting', '-done', '-failed'):
        icon = root / 'share' / 'icons' / 'hicolor' / 'symbolic' / 'apps' / f'{IDENTIFIER}{state}-symbolic.svg'
        assert icon.is_file(), icon
    for program in ('lexwend', 'lexwend-convert', 'lexwend-doctor'):
        assert os.access(root / 'bin' / program, os.X_OK), program
        run = subprocess.run([root / 'bin' / program, '--version'], stdout=subprocess.PIPE, text=True, check=True)
        assert run.stdout.startswith(program + ' '), run.stdout
    assert os.access(next((root / 'lib').rglob('lexwend-host.so')).with_name('lexwend-clipboard'), os.X_OK)
    # The part for the desktop is found beside the programs: on a display that is not there it finds no layouts.
    assert ask_for_layouts(root) == (1, 'lexwend-convert: no enabled Hebrew and English layouts found\n')
    part, away = root / 'lib', root / 'lib.away'
    part.rename(away)
    status, said = ask_for_layouts(root)
    assert status == 1 and said.startswith('lexwend: the part for this desktop cannot be loaded: '), (status, said)
    away.rename(part)
    assert (root / 'share' / 'icons' / 'hicolor' / 'scalable' / 'apps' / f'{IDENTIFIER}.svg').is_file()
    extension = root / 'share' / 'gnome-shell' / 'extensions' / 'lexwend@lexwend.org'
    assert json.loads((extension / 'metadata.json').read_text(encoding='utf-8'))['uuid'] == extension.name
    assert (extension / 'extension.js').is_file(), extension
    folders = (root / 'share' / 'user-tmpfiles.d' / 'lexwend.conf').read_text(encoding='utf-8')
    assert '\nd %h/Library/Logs ' in folders, folders


def ask_for_layouts(root):
    run = subprocess.run([root / 'bin' / 'lexwend-convert', '--map', 'system'], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                         text=True, check=False, env={'DISPLAY': ':none'})
    return run.returncode, run.stderr


def files(folder):
    return {path for path in folder.rglob('*') if not path.is_dir()}


with tempfile.TemporaryDirectory() as name:
    folder = Path(name)
    own = folder / 'the user' / '.local'
    other = own / 'share' / 'applications' / 'of-another-program.desktop'
    other.parent.mkdir(parents=True)
    other.touch()
    install(own, folder / 'home')
    expect_installed(own, own)
    assert (folder / 'home' / 'Library' / 'Logs').is_dir()
    subprocess.run([sys.argv[1], '--build', sys.argv[2], '--target', 'uninstall'], check=True, stdout=subprocess.DEVNULL)
    assert files(own) == {other}, files(own)

    install('/usr', folder / 'builder', DESTDIR=str(folder / 'package'))
    expect_installed(folder / 'package' / 'usr', '/usr')
    assert not list((folder / 'builder').iterdir())
