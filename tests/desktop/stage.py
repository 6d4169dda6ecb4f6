# SPDX-License-Identifier: MIT
"""What the scenes share: one agent and one document on a desktop of its own, and the choice of the scene to run."""
import subprocess
import sys
from pathlib import Path

from session import DEADLINE_SECONDS, AccessibilityBus, DesktopError, FocusedText, Session, until

HERE = Path(__file__).resolve().parent
SCENES = {}
DESKTOPS = {}  # the options of a scene's desktop
ANSWER_SECONDS = 2.0


def scene(function):
    SCENES[function.__name__] = function
    return function


def scene_on(**options):
    """A scene on a desktop that differs from the usual one."""
    def add(function):
        DESKTOPS[function.__name__] = options
        return scene(function)
    return add


class Stage:
    """One agent and one document on a desktop of its own."""

    EDITORS = {
        'mousepad': ['mousepad', '--disable-server'],
        'gnome-text-editor': ['gnome-text-editor', '--standalone'],
        'featherpad': ['featherpad', '--standalone'],
        'qt6_editor': None,  # built with the tests
    }
    # Editors with an undo of their own.
    OTHER_EDITORS = {'l3afpad': ['l3afpad'], 'bluefish': ['bluefish', '-n']}

    def __init__(self, session, agent, qt6_editor):
        self.session = session
        self.agent_path = agent
        self.qt6_editor = qt6_editor
        self.keyboard = session.keyboard

    def start_agent(self, **settings):
        if settings:
            folder = self.session.home / '.config' / 'lexwend'
            folder.mkdir(parents=True, exist_ok=True)
            lines = [f'{key}={str(value).lower()}\n' for key, value in settings.items()]
            (folder / 'settings').write_text(f'[Settings]\n{"".join(lines)}', encoding='utf-8')
        self.agent = self.session.start_agent(self.agent_path)

    def open(self, editor, text):
        document = self.session.folder / 'letter.txt'
        document.write_text(text, encoding='utf-8')
        command = {**self.EDITORS, **self.OTHER_EDITORS}[editor] or [str(self.qt6_editor)]
        program = self.show(command + [str(document)], editor)
        until(lambda: self.field.text() == text, f'{editor} to show the text')
        return program

    def show(self, command, application):
        """Starts a program whose focused field is looked at from now on, by the agent as well."""
        bus = AccessibilityBus()
        until(lambda: bus.hears_focus(self.agent.pid), 'the agent to listen to the focus')
        self.field = FocusedText(application)
        return self.session.start_in_front(command)

    def select_all(self):
        selected = self._all_is_selected()
        self._press_selection()
        until(selected, 'the text to be selected')

    def select_all_of_page(self):
        """A page may show its text and take no keys for a while: it is selected anew until it is."""
        self.select_until(self._all_is_selected())

    def select_until(self, selected):
        """Selects everything, again when the program has not taken it: not at once, or it would come after the hot key."""
        tries = round(DEADLINE_SECONDS / ANSWER_SECONDS)
        for left in reversed(range(tries)):
            self._press_selection()
            try:
                return until(selected, 'the text to be selected', ANSWER_SECONDS)
            except DesktopError:
                if not left:
                    raise

    def _press_selection(self):
        # Not Control+A, which toolkits look up by letter: with a Hebrew layout alone there is none.
        self.keyboard.press('Control+Home')
        self.keyboard.press('Control+Shift+End')

    def _all_is_selected(self):
        length = len(until(self.field.text, 'the field to tell its text'))
        return lambda: self.field.selection_length() >= length

    def fix_ends(self):
        """Presses the hot key and waits until the fix has ended, and the agent takes the next press: it drops those during a fix."""
        ended = self._ends()
        self.keyboard.press('F2')
        until(lambda: self._ends() > ended, 'the fix to end')
        until(self._agent_sleeps, 'the agent to have nothing to do')

    def _agent_sleeps(self):
        """Its main thread (proc(5))."""
        status = Path(f'/proc/{self.agent.pid}/stat').read_text(encoding='utf-8', errors='replace')
        return status.rpartition(')')[2].split()[0] == 'S'

    def _ends(self):
        log = self.session.log()
        return log.count('fix: success') + log.count('fix: failed')

    def fix(self, expected):
        """Presses the hot key and waits until the field holds the text and the fix has ended."""
        self.fix_ends()
        try:
            self.expect_text(expected)
        except DesktopError as error:
            held = self.field.text()
            raise DesktopError(f'{error}; it holds "{held[:60] if held else held}"') from None

    def fix_that_fails(self, failure):
        self.keyboard.press('F2')
        until(lambda: f'fix: failed {failure}' in self.session.log(), f'the fix to fail with {failure}')

    def expect_text(self, expected):
        until(lambda: self.field.text() == expected, f'the field to hold "{expected[:60]}"')

    def expect_secure_input(self):
        """No text leaves the field: the clipboard is neither read from nor written to, and the log names the reason."""
        self.fix_that_fails('secureInput')
        log = self.session.log()
        assert 'secureInput=true' in log, log
        assert 'AX' not in log and 'clipboard:' not in log, log
        assert self.clipboard() == 'kept'
        assert self.clipboard_owner_is_still_the_first(), 'the clipboard has changed hands'

    def expect_paths(self, expected):
        """How Accessibility ended, fix by fix."""
        paths = [line.partition(' AX path: ')[2] for line in self.session.log().splitlines() if ' AX path: ' in line]
        assert paths == expected, f'Accessibility ended with {paths}'

    def expect_group(self, group):
        until(lambda: self.keyboard.group() == group, f'keyboard group {group} to be active')

    def put_on_clipboard(self, text, target='UTF8_STRING'):
        self._feed(text.encode(), target)
        until(lambda: self.clipboard(target) == text, 'the clipboard to hold its contents')

    def put_file_on_clipboard(self, path, target):
        self._feed(path.read_bytes(), target)
        until(lambda: self.clipboard_targets() == [target], 'the clipboard to hold its contents')

    def _feed(self, data, target):
        program = subprocess.Popen(self.session.copy(target), stdin=subprocess.PIPE,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        self.session.processes.append(program)
        program.stdin.write(data)
        program.stdin.close()
        self.owner = program

    def clipboard_owner_is_still_the_first(self):
        """The owner ends as soon as another takes the clipboard."""
        return self.owner.poll() is None

    def clipboard(self, target='UTF8_STRING', seconds=ANSWER_SECONDS):
        """What the clipboard holds; nothing where its owner does not answer in time, which may be about to change."""
        return self._output(self.session.paste(target), seconds)

    def _output(self, command, seconds=ANSWER_SECONDS):
        try:
            found = subprocess.run(command, capture_output=True, check=False, timeout=seconds)
        except subprocess.TimeoutExpired:
            return None
        return found.stdout.decode() if found.returncode == 0 else None

    def clipboard_bytes(self, target):
        """The same of something large, byte for byte."""
        return subprocess.run(self.session.paste(target), capture_output=True, check=True,
                              timeout=DEADLINE_SECONDS).stdout

    def clipboard_targets(self):
        """What the clipboard offers, without the targets that are part of the protocol."""
        return sorted(set((self._output(self.session.paste_targets()) or '').split()) - {'TARGETS', 'MULTIPLE', 'TIMESTAMP', 'SAVE_TARGETS'})


def in_each_editor(function):
    """A scene of its own for every editor, which the function gets as its second argument."""
    for editor in Stage.EDITORS:
        SCENES[f'{function.__name__}_in_{editor.replace("-", "_")}'] = lambda stage, editor=editor: function(stage, editor)
    return function


def main(usage, make_session=lambda _, **options: Session(**options)):
    """Runs the scene that the command line names; its session is made of the agent and options."""
    if sys.argv[1:] == ['--list']:
        print('\n'.join(SCENES))
        return
    if len(sys.argv) != 4 or sys.argv[1] not in SCENES:
        print(usage.strip(), file=sys.stderr)
        sys.exit(2)
    name, agent, qt6_editor = sys.argv[1], Path(sys.argv[2]).resolve(), Path(sys.argv[3]).resolve()
    with make_session(agent, **DESKTOPS.get(name, {})) as session:
        SCENES[name](Stage(session, agent, qt6_editor))
