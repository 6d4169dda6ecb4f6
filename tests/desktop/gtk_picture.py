#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Puts a picture on the clipboard with GTK 3 and offers it until it is ended: gtk_picture.py WIDTH HEIGHT"""
import sys

import gi

gi.require_version('Gdk', '3.0')
gi.require_version('Gtk', '3.0')
from gi.repository import Gdk, GdkPixbuf, GLib, Gtk  # noqa: E402

width, height = int(sys.argv[1]), int(sys.argv[2])
# Lines that differ, as those of a screen do.
line = bytes(value % 251 for value in range(3 * width + height))
dots = b''.join(line[row:row + 3 * width] for row in range(height))
picture = GdkPixbuf.Pixbuf.new_from_bytes(GLib.Bytes.new(dots), GdkPixbuf.Colorspace.RGB, False, 8, width, height, 3 * width)
Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD).set_image(picture)
print('ready', flush=True)
Gtk.main()
