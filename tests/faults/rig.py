# SPDX-License-Identifier: MIT
"""A desktop on which faults are tried one after the other: agent, editor, clipboard, and the look at what is left.

After each fault one of these holds, or the fault counts as lost: the text is fixed or as it was, the clipboard holds what
the user last put there, no key is down, the layout exists, and the agent serves the next fix or has ended with a message
and a status other than 0.
"""
import os
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / 'desktop'))
from session import DesktopError, FocusedText, until  # noqa: E402
from stage import HERE, Stage  # noqa: E402

GARBLED, MEANT = 'akuo nv akunl', 'שלום מה שלומך'
KEPT = 'what the user has copied'
FIX_SECONDS = 8.0  # the longest fix, its restore, and a busy machine
SERVE_SECONDS = 10.0
SLOW_ANSWER_SECONDS = 6.0


class Lost(Exception):
    """What the fault has cost."""


class Rig:
    """One desktop with its agent; made once for many faults, and made anew where one has broken it."""

    def __init__(self, session, agent, qt6_editor, owner):
        self.session = session
        self.stage = Stage(session, agent, qt6_editor)
        self.owner_program = owner
        self.keyboard = session.keyboard
        self.keyboard.record()
        self.editor = None
        self.editor_name = None
        self.settings = None
        self.owner = None
        self.expected_clipboard = KEPT
        self.other = None

    # -- setting the scene

    def prepare(self, path='accessibility', editor='mousepad', clipboard=None):
        """An agent that takes that path, an editor with the garbled text selected, and a clipboard with contents:
        plain text, or what the arguments of the fault suite's owner say."""
        self._start_agent(compatMode=path == 'clipboard')
        self._show(editor)
        self.expected_clipboard = KEPT
        if clipboard is None:
            self._end_owner()
            self.stage.put_on_clipboard(KEPT)
            self.owner = self.stage.owner
        else:
            self.own_clipboard(*clipboard)

    def own_clipboard(self, *arguments):
        self._end_owner()
        self.owner = self.session.start([str(self.owner_program), *map(str, arguments)], stdout=subprocess.PIPE)
        assert self.owner.stdout.readline() == b'ready\n', 'the owner of the clipboard did not start'

    def _end_owner(self):
        if self.owner is not None:
            self.session.end(self.owner, 1.0)
            self.owner = None

    def _start_agent(self, **settings):
        if self.agent_lives() and self.settings == settings:
            return
        if self.agent_lives():
            self.session.end(self.stage.agent)
        self.settings = settings
        self.stage.start_agent(**settings)

    def agent_lives(self):
        return self.settings is not None and self.stage.agent.poll() is None

    def _show(self, editor):
        """The editor with the garbled text, all of it selected. The one of the fault before is used again where it is whole."""
        reusable = self.editor is not None and self.editor.poll() is None and self.editor_name == editor
        if not (reusable and self.stage.field.text() == GARBLED and self.editor_is_active()):
            self.close_editor()
            self.editor_name = editor
            self.editor = self.stage.open(editor, GARBLED)
        self.stage.select_all()

    def editor_is_active(self):
        title = self.session.active_title()
        return self.editor_name.replace('_', '-') in title.lower().replace('_', '-') or 'letter' in title

    def close_editor(self):
        if self.editor is not None:
            self.kill(self.editor)
            self.session.processes = [p for p in self.session.processes if p is not self.editor]
            self.editor = None

    def show_other_window(self, text='nv'):
        """A second window with a field; the editor has the keyboard afterwards."""
        field = ['/usr/bin/python3', str(HERE / 'gtk_field.py'),
                 '3', 'entry', text]
        self.other = self.session.start_in_front(field)
        self.other_field = FocusedText('gtk_field')
        until(lambda: self.other_field.text() == text, 'the other field to show its text')
        self.activate(self.window_of_editor())
        until(self.editor_is_active, 'the editor to have the keyboard again')
        self.stage.select_all()

    def show_window_named(self, name):
        """Another one in front, whose class is that name."""
        self.other = self.session.start_in_front(['/usr/bin/python3', str(HERE / 'gtk_field.py'), '3', 'entry-named', 'nv', name])

    def window_of_editor(self):
        name = 'letter' if self.editor_name != 'qt6_editor' else 'qt6_editor'
        return self.window_titled(name)

    def window_titled(self, title):
        return until(lambda: self.session.windows_titled(title), f'a window to be titled {title}')[0]

    def activate(self, window):
        self.session.activate(window)

    # -- the fix and the fault

    def press(self, key='F2'):
        self.pressed_at = time.monotonic()
        self.fixes_before = self.fixes()
        self.keyboard.press(key)

    def fixes(self):
        log = self.session.log()
        return log.count('fix: success') + log.count('fix: failed')

    def fix_with(self, fault, milliseconds=0):
        """Presses the hot key and lets the fault happen so long after it."""
        self.press()
        left = milliseconds / 1000 - (time.monotonic() - self.pressed_at)
        if left > 0:
            time.sleep(left)
        fault()
        self.wait_for_end()

    def wait_for_end(self, seconds=FIX_SECONDS):
        """Until the fix has ended, or the agent has."""
        until(lambda: self.fixes() > self.fixes_before or not self.agent_lives(), 'the fix to end', seconds)

    def stop(self, process, seconds):
        """The process and its children answer nothing for so long."""
        os.killpg(process.pid, signal.SIGSTOP)
        time.sleep(seconds)
        os.killpg(process.pid, signal.SIGCONT)

    @staticmethod
    def kill(process):
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()

    @staticmethod
    def later(seconds, action):
        thread = threading.Timer(seconds, action)
        thread.start()
        return thread

    # -- the look at what is left

    def expect(self, text=(GARBLED, MEANT), clipboard=KEPT, agent='serves', target='UTF8_STRING'):
        """`text`: what the editor may hold, nothing where it is gone. `agent`: "serves", or "ended" with a message."""
        if agent == 'serves' and not self.agent_lives():
            raise Lost(f'the agent ended with {self.stage.agent.returncode}: {self._said()}')
        if text:
            self.expect_text(self.stage.field, text, 'the text')
        if clipboard is not None:
            self.expect_clipboard(clipboard, target)
        self.expect_soon(lambda: not self.keyboard.pressed(), lambda: f'keys are down: {self.keyboard.pressed()}')
        self.expect_soon(lambda: self.keyboard.group() in (0, 1), lambda: f'group {self.keyboard.group()} is active')
        if agent == 'serves':
            self.expect_service()

    def expect_soon(self, condition, said, seconds=3.0):
        try:
            until(condition, '', seconds)
        except DesktopError:
            raise Lost(said()) from None

    def expect_text(self, field, allowed, name):
        """Held steadily: what a program that was stopped has still to take comes within that time."""
        def held():
            first = field.text()
            if first not in allowed:
                return False
            time.sleep(0.25)
            return field.text() == first
        self.expect_soon(held, lambda: f'{name} is {field.text()!r}')

    def expect_clipboard(self, wanted, target):
        """Also of an owner that takes its time for the answer."""
        self.expect_soon(lambda: self.stage.clipboard(target, SLOW_ANSWER_SECONDS) == wanted,
                     lambda: f'the clipboard holds {str(self.stage.clipboard(target))[:60]!r}', SERVE_SECONDS)

    def expect_service(self):
        """A fix in a sound editor, by the same path."""
        self.keyboard.lock_group(0)
        if self.editor is None or self.editor.poll() is not None or self.stage.field.text() not in (GARBLED, MEANT) \
                or not self.editor_is_active():
            self.reopen()
        held = self.stage.field.text()
        wanted = MEANT if held == GARBLED else GARBLED
        self.stage.select_all()
        before = self.fixes()
        self.keyboard.press('F2')
        self.expect_soon(lambda: self.fixes() > before and self.stage.field.text() == wanted,
                     lambda: f'the next fix came to {self.stage.field.text()!r}; the log ends:\n{self.log_end()}', SERVE_SECONDS)
        if wanted == MEANT:  # as it was, for the fault after this one
            self.stage.select_all()
            before = self.fixes()
            self.keyboard.press('F2')
            self.expect_soon(lambda: self.fixes() > before and self.stage.field.text() == GARBLED,
                         lambda: f'the fix back came to {self.stage.field.text()!r}; the log ends:\n{self.log_end()}', SERVE_SECONDS)
        self.keyboard.lock_group(0)

    def reopen(self):
        self.close_editor()
        self.editor_name = 'mousepad'
        self.editor = self.stage.open('mousepad', GARBLED)

    def expect_end(self, seconds=3.0, status=None, message=True):
        """The agent has ended by itself."""
        self.expect_soon(lambda: not self.agent_lives(), lambda: 'the agent has not ended', seconds)
        code = self.stage.agent.returncode
        if status is not None and code != status:
            raise Lost(f'the agent ended with {code}: {self._said()}')
        if status is None and code == 0:
            raise Lost('the agent ended with 0')
        if message and not self._said():
            raise Lost(f'the agent ended with {code} and without a word')

    def _said(self):
        if not hasattr(self.stage.agent, 'said'):
            self.stage.agent.said = self.stage.agent.stderr.read().decode(errors='replace').strip()
        return self.stage.agent.said

    def log_end(self):
        ended = [] if self.agent_lives() else [f'the agent has ended with {self.stage.agent.returncode}: {self._said()}']
        return '\n'.join(self.session.log().splitlines()[-12:] + ended)
