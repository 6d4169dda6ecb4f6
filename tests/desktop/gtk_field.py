#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A window with one GTK field for the desktop tests.

usage: gtk_field.py 3|4 entry-hidden TEXT [SIGN]
       gtk_field.py 3 entry-named TEXT CLASS
       gtk_field.py 3|4 entry|entry-full|password-entry|read-only|search TEXT
       gtk_field.py 3 terminal COMMAND

A search field stands among two thousand other objects. A hidden entry shows the sign instead of each character, a full one has room for no more. The command runs in a terminal
that is a part of the window; what it writes is selected.
"""
import sys

import gi

version, kind, text = sys.argv[1:4]
word = sys.argv[4] if len(sys.argv) > 4 else None
gi.require_version('Gtk', version + '.0')
from gi.repository import GLib, Gtk  # noqa: E402

if kind == 'entry-named':
    GLib.set_prgname(word)
if version == '3':
    Gtk.init()
else:
    GLib.set_prgname('gtk_field')
    Gtk.init()


def field():
    if kind == 'read-only':
        view = Gtk.TextView(editable=False)
        view.get_buffer().set_text(text)
        return view
    if kind == 'password-entry':
        return Gtk.PasswordEntry(text=text)
    if kind == 'terminal':
        return terminal()
    if kind == 'search':
        return Gtk.SearchEntry(text=text)
    entry = Gtk.Entry(text=text)
    if kind == 'entry-full':
        entry.set_max_length(len(text))
    entry.set_visibility(kind != 'entry-hidden')
    if kind == 'entry-hidden' and word:
        entry.set_invisible_char(word)
    return entry


def terminal():
    gi.require_version('Vte', '2.91')
    from gi.repository import Vte
    widget = Vte.Terminal()
    widget.connect('contents-changed', lambda _: widget.select_all())
    # A compositor takes a selection from the window with the keyboard only, and the terminal gives up one that is refused.
    widget.connect('focus-in-event', lambda *_: GLib.idle_add(lambda: widget.select_all()) and False)
    widget.spawn_async(Vte.PtyFlags.DEFAULT, None, ['/bin/sh', '-c', text], None, GLib.SpawnFlags.DEFAULT, None, None, -1, None, None)
    return widget


def add(box, child):
    box.add(child) if version == '3' else box.append(child)


def crowd(widget):
    """The field, and a box with so many objects that nobody finds it by asking each."""
    boxes = [Gtk.Box(orientation=Gtk.Orientation.VERTICAL) for _ in range(3)]
    window_box, scrolled_box, row = boxes
    for number in range(2000):
        if number % 40 == 0:
            row = Gtk.Box()
            add(scrolled_box, row)
        add(row, Gtk.Label(label=str(number)))
    scrolled = Gtk.ScrolledWindow(vexpand=True)
    scrolled.add(scrolled_box) if version == '3' else scrolled.set_child(scrolled_box)
    add(window_box, scrolled)
    add(window_box, widget)
    return window_box


window = Gtk.Window(title='gtk_field')
window.set_default_size(400, 60)
widget = field()
content = crowd(widget) if kind == 'search' else widget
# Else the crowd is drawn again and again while the window loses the keyboard to the hot key and gets it back.
Gtk.Settings.get_default().props.gtk_enable_animations = False
loop = GLib.MainLoop()
if version == '3':
    window.add(content)
    window.show_all()
    window.connect('destroy', lambda *_: loop.quit())
else:
    window.set_child(content)
    window.present()
widget.grab_focus()
loop.run()
