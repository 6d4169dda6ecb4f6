#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The recipes of docs/editors.md in the real editors, and lexwend-convert at a terminal.

usage: recipes_test.py LEXWEND_CONVERT vim|emacs|bash|tasks|progress|help
"""
import json
import os
import pty
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

CONVERT = Path(sys.argv[1]).resolve()
ROOT = Path(__file__).resolve().parents[2]
GARBLED, MEANT = 'akuo nv akunl', 'שלום מה שלומך'
os.environ.update(PATH=f'{CONVERT.parent}:{os.environ["PATH"]}', LC_ALL='C.UTF-8', TERM='xterm')


def recipe(language):
    found = re.findall(rf'```{language}\n(.*?)```', (ROOT / 'docs' / 'editors.md').read_text(encoding='utf-8'), re.S)
    assert len(found) == 1, found
    return found[0]


def run(*command, **options):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, check=True, timeout=60, **options)


def in_terminal(command, keys=b'', wait_for=None, own_output=None):
    """What a program writes to its terminal; keys are typed once it shows what is waited for."""
    process, terminal = pty.fork()
    if process == 0:
        if own_output is not None:
            os.dup2(own_output, 1)
        os.execvp(command[0], [str(part) for part in command])
    said = b''
    deadline = time.monotonic() + 30
    while time.monotonic() < deadline:
        try:
            said += os.read(terminal, 4096)
        except OSError:
            break  # it has ended
        if wait_for and wait_for in said:
            os.write(terminal, keys)
            wait_for = None
    os.close(terminal)
    _, status = os.waitpid(process, 0)
    assert status == 0, (status, said)
    return said.decode('utf-8', 'replace')


def vim(folder):
    (folder / 'vimrc').write_text(recipe('vim'), encoding='utf-8')
    text = folder / 'text'
    # A word within a line, then whole lines; what was yanked before is put at the end.
    text.write_text(f'keep\nsay {GARBLED} now\n{GARBLED}\n', encoding='utf-8')
    run('vim', '-N', '-u', folder / 'vimrc', '-i', 'NONE', '-n', '-es', '-c', 'normal! ggyy', '-c',
        r'execute "normal 2Gwv3e\<F2>"', '-c', r'execute "normal 3GV\<F2>"', '-c', 'normal! Gp', '-c', 'wq', text)
    result = text.read_text(encoding='utf-8')
    assert result == f'keep\nsay {MEANT} now\n{MEANT}\nkeep\n', result


def emacs(folder):
    script = folder / 'script.el'
    script.write_text(recipe('elisp') + f'''
(with-temp-buffer
  (insert "say {GARBLED} now")
  (set-mark 5)
  (goto-char {5 + len(GARBLED)})
  (transient-mark-mode 1)
  (call-interactively (key-binding (kbd "<f2>")))
  (princ (buffer-string)))''', encoding='utf-8')
    said = run('emacs', '--batch', '-l', script, capture_output=True, text=True).stdout
    assert said == f'say {MEANT} now', said


def bash(folder):
    (folder / 'bashrc').write_text(recipe('bash') + "PS1='ready> '\n", encoding='utf-8')
    said = in_terminal(['bash', '--noprofile', '--rcfile', folder / 'bashrc', '-i'],
                       'קבים יקךךם'.encode() + b'\x18l\n' + b'exit 0\n', b'ready> ')
    assert '\rhello\r' in said, said


def tasks(folder):
    """The command of the task, with a stand-in for the clipboard."""
    task = json.loads(recipe('json'))['tasks'][0]
    (folder / 'xclip').write_text(f'#!/bin/sh\ncat > {folder}/clipboard\n', encoding='utf-8')
    (folder / 'xclip').chmod(0o755)
    arguments = [argument.replace('${selectedText}', GARBLED) for argument in task['args']]
    run(task['command'], *arguments, env={**os.environ, 'PATH': f'{folder}:{os.environ["PATH"]}'})
    assert (folder / 'clipboard').read_text(encoding='utf-8') == MEANT


def progress(folder):
    """On a terminal one sees how far it is; what is written stays clean."""
    result = folder / 'result'
    slow = f'(printf akuo; sleep 1.3; printf " nv") | {CONVERT} --lines'
    with open(result, 'wb') as output:
        said = in_terminal(['sh', '-c', slow], own_output=output.fileno())
    assert result.read_text(encoding='utf-8') == 'שלום מה', result.read_text(encoding='utf-8')
    assert said == '\r0 MB\r\x1b[K', repr(said)
    quiet = subprocess.run(['sh', '-c', slow], capture_output=True, check=True, stdin=subprocess.DEVNULL)
    assert quiet.stderr == b'', quiet.stderr
    assert in_terminal(['sh', '-c', slow]) == 'שלום מה'


def help(_folder):
    """Fits a screen of 100 columns and 24 lines, for each program."""
    for program in (CONVERT, CONVERT.parent / 'lexwend-doctor'):
        for option in ('-h', '--help'):
            said = run(program, option, capture_output=True, text=True).stdout
            assert len(said.splitlines()) <= 24 and 'Examples:' in said, said
            assert max(map(len, said.splitlines())) <= 100, said


with tempfile.TemporaryDirectory() as name:
    {f.__name__: f for f in (vim, emacs, bash, tasks, progress, help)}[sys.argv[2]](Path(name))
