#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The program's main job in a real editor: garbled text, one key, the text that was meant.

usage: first_fix.py AGENT [--pictures FOLDER] [--wayland TYPIST]

Opens mousepad on a private desktop with text that was typed on the wrong layout, selects it, presses F2 with raw key
events, and reads the text back from the editor. Exits 0 only if the editor holds the Hebrew text and the Hebrew layout
became the active one. With --pictures it leaves before.png and after.png there. With --wayland the desktop is the compositor
sway; TYPIST is the program wayland_typist, which stands for the keyboard.
"""
import argparse
from pathlib import Path

from session import AccessibilityBus, FocusedText, Session, run_scene, until
from sway_session import SwaySession

GARBLED = 'akuo nv akunl'
MEANT = 'שלום מה שלומך'


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('agent', type=Path)
    parser.add_argument('--pictures', type=Path)
    parser.add_argument('--wayland', type=Path)
    arguments = parser.parse_args()

    with SwaySession(arguments.wayland.resolve(), layouts='us,il') if arguments.wayland else Session(layouts='us,il') as session:
        agent = session.start_agent(arguments.agent.resolve())
        bus = AccessibilityBus()
        until(lambda: bus.hears_focus(agent.pid), 'the agent to listen to the focus')
        document = session.folder / 'letter.txt'
        document.write_text(GARBLED, encoding='utf-8')
        session.start_in_front(['mousepad', '--disable-server', str(document)])

        field = FocusedText('mousepad')
        until(lambda: field.text() == GARBLED, 'the editor to show the garbled text')
        session.keyboard.press('Control+a')
        until(lambda: field.selection_length() == len(GARBLED), 'the text to be selected')
        print(f'before: {field.text()}', flush=True)
        if arguments.pictures:
            session.screenshot(arguments.pictures / 'before.png')

        session.keyboard.press('F2')
        until(lambda: field.text() == MEANT, f'the editor to hold "{MEANT}"')
        until(lambda: 'fix: success' in session.log(), 'the fix to be logged as a success')
        print(f'after:  {field.text()}', flush=True)
        if arguments.pictures:
            session.screenshot(arguments.pictures / 'after.png')

        until(lambda: session.keyboard.group() == 1, 'the Hebrew layout to become active')
        assert 'fix: success target=he' in session.log(), 'the log does not name the target'
        print('active layout: Hebrew', flush=True)


if __name__ == '__main__':
    run_scene(main)
