#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A window with one GTK field for the desktop tests.

usage: gtk_field.py 3|4 entry-hidden|password-entry|read-only TEXT
"""
import sys

import gi

version, kind, text = sys.argv[1:4]
gi.require_version('Gtk', version + '.0')
from gi.repository import GLib, Gtk  # noqa: E402

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
    entry = Gtk.Entry(text=text)
    entry.set_visibility(False)
    return entry


window = Gtk.Window(title='gtk_field')
window.set_default_size(400, 60)
widget = field()
loop = GLib.MainLoop()
if version == '3':
    window.add(widget)
    window.show_all()
    window.connect('destroy', lambda *_: loop.quit())
else:
    window.set_child(widget)
    window.present()
widget.grab_focus()
loop.run()
