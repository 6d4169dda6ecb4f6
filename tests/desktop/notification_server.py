#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What shows notifications, for the desktop tests. It prints a line once it is there, and the body of each notification."""
import sys

from gi.repository import Gio, GLib

NAME = 'org.freedesktop.Notifications'
INTERFACE = Gio.DBusNodeInfo.new_for_xml(f'''<node><interface name="{NAME}">
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="a{{sv}}" direction="in"/>
    <arg type="i" direction="in"/><arg type="u" direction="out"/>
  </method>
  </interface></node>''').interfaces[0]
BODY = 4


def called(_bus, _sender, _path, _interface, _method, arguments, invocation):
    print(arguments.unpack()[BODY], flush=True)
    invocation.return_value(GLib.Variant('(u)', (1,)))


session_bus = Gio.bus_get_sync(Gio.BusType.SESSION)
session_bus.register_object('/org/freedesktop/Notifications', INTERFACE, called, None, None)
Gio.bus_own_name_on_connection(session_bus, NAME, Gio.BusNameOwnerFlags.NONE,
                               lambda *_: print('ready', flush=True), lambda *_: sys.exit('the name is taken'))
GLib.MainLoop().run()
