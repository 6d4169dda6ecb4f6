#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A panel for the desktop tests, reduced to its StatusNotifier watcher and host. It prints a line once it is there."""
import sys

from gi.repository import Gio, GLib

NAME = 'org.kde.StatusNotifierWatcher'
PATH = '/StatusNotifierWatcher'
INTERFACE = Gio.DBusNodeInfo.new_for_xml(f'''<node><interface name="{NAME}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
  </interface></node>''').interfaces[0]
items = []


def called(bus, sender, _path, _interface, method, arguments, invocation):
    if method == 'RegisterStatusNotifierItem':
        service = arguments.unpack()[0]
        item = sender if service.startswith('/') else service
        items.append(item)
        bus.emit_signal(None, PATH, NAME, 'StatusNotifierItemRegistered', GLib.Variant('(s)', (item,)))
        # An item goes with the connection that offered it.
        Gio.bus_watch_name_on_connection(bus, item, Gio.BusNameWatcherFlags.NONE, None,
                                         lambda *_: item in items and items.remove(item))
    invocation.return_value(None)


def asked(_bus, _sender, _path, _interface, name):
    return {'IsStatusNotifierHostRegistered': GLib.Variant('b', True),
            'RegisteredStatusNotifierItems': GLib.Variant('as', items),
            'ProtocolVersion': GLib.Variant('i', 0)}[name]


session_bus = Gio.bus_get_sync(Gio.BusType.SESSION)
session_bus.register_object(PATH, INTERFACE, called, asked, None)
Gio.bus_own_name_on_connection(session_bus, NAME, Gio.BusNameOwnerFlags.NONE,
                               lambda *_: print('ready', flush=True), lambda *_: sys.exit('the name is taken'))
GLib.MainLoop().run()
