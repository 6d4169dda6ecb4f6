// SPDX-License-Identifier: MIT
'use strict';
/* exported init */

const {Clutter, Gio, GLib, Meta, Shell} = imports.gi;
const Main = imports.ui.main;
const {getInputSourceManager} = imports.ui.status.keyboard;

const AGENT = 'org.lexwend.Lexwend';
const NAME = 'org.lexwend.Shell';
const PATH = '/org/lexwend/Shell';
const MODIFIERS = Clutter.ModifierType.SHIFT_MASK | Clutter.ModifierType.CONTROL_MASK |
    Clutter.ModifierType.MOD1_MASK | Clutter.ModifierType.MOD4_MASK;
const LOOK_MILLISECONDS = 10;
const INTERFACE = `<node><interface name="${NAME}">
  <method name="Layouts"><arg type="a(ss)" direction="out"/><arg type="u" direction="out"/></method>
  <method name="SelectLayout"><arg type="u" direction="in"/></method>
  <method name="FrontWindow">
    <arg type="t" direction="out"/><arg type="u" direction="out"/><arg type="s" direction="out"/></method>
  <method name="BindKey"><arg type="s" direction="in"/><arg type="u" direction="out"/></method>
  <method name="UnbindKey"><arg type="u" direction="in"/></method>
  <signal name="KeyPressed"><arg type="u"/></signal>
  <signal name="LayoutsChanged"/>
</interface></node>`;

class Extension {
    enable() {
        this._agent = null;
        this._waiting = 0;
        this._keys = new Set();
        this._layouts = getInputSourceManager();
        this._layoutsHandler = this._layouts.connect('sources-changed', () => this._tell('LayoutsChanged', null));
        this._keyHandler = global.display.connect('accelerator-activated', (_display, key) => this._press(key));
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, PATH);
        // The watch comes before the name: who sees the name is known here by then.
        this._watch = Gio.bus_watch_name_on_connection(Gio.DBus.session, AGENT, Gio.BusNameWatcherFlags.NONE,
            (_bus, _name, owner) => this._agentChanges(owner), () => this._agentChanges(null));
        this._name = Gio.bus_own_name_on_connection(Gio.DBus.session, NAME, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        this._agentChanges(null);
        if (this._waiting)
            GLib.source_remove(this._waiting);
        Gio.bus_unown_name(this._name);
        Gio.bus_unwatch_name(this._watch);
        this._object.unexport();
        this._object = null;
        global.display.disconnect(this._keyHandler);
        this._layouts.disconnect(this._layoutsHandler);
        this._layouts = null;
    }

    _agentChanges(owner) {
        if (owner === this._agent)
            return;
        this._keys.forEach(key => this._unbind(key));
        this._agent = owner;
    }

    _tell(signal, value) {
        if (this._agent)
            Gio.DBus.session.emit_signal(this._agent, PATH, NAME, signal, value);
    }

    // Answers the agent, and denies everybody else.
    _answer(invocation, type, values) {
        if (invocation.get_sender() === this._agent)
            invocation.return_value(new GLib.Variant(type, values()));
        else
            invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied', 'for Lexwend only');
    }

    // Told when no modifier is down any more: it would count for the keys that the agent plays.
    _press(key) {
        if (!this._keys.has(key) || this._waiting)
            return;
        const isHeld = () => (global.get_pointer()[2] & MODIFIERS) !== 0;
        if (!isHeld()) {
            this._tell('KeyPressed', new GLib.Variant('(u)', [key]));
            return;
        }
        this._waiting = GLib.timeout_add(GLib.PRIORITY_DEFAULT, LOOK_MILLISECONDS, () => {
            if (isHeld())
                return GLib.SOURCE_CONTINUE;
            this._waiting = 0;
            this._press(key);
            return GLib.SOURCE_REMOVE;
        });
    }

    _unbind(key) {
        if (this._keys.delete(key))
            global.display.ungrab_accelerator(key);
    }

    LayoutsAsync(_arguments, invocation) {
        this._answer(invocation, '(a(ss)u)', () => {
            const sources = Object.values(this._layouts.inputSources).sort((a, b) => a.index - b.index);
            return [sources.map(source => [source.type, source.id]), this._layouts.currentSource?.index ?? 0];
        });
    }

    SelectLayoutAsync([index], invocation) {
        this._answer(invocation, '()', () => {
            this._layouts.inputSources[index]?.activate(true);
            return [];
        });
    }

    FrontWindowAsync(_arguments, invocation) {
        this._answer(invocation, '(tus)', () => {
            const front = global.display.focus_window;
            return front ? [front.get_id(), Math.max(front.get_pid(), 0), front.get_wm_class() ?? ''] : [0, 0, ''];
        });
    }

    BindKeyAsync([accelerator], invocation) {
        this._answer(invocation, '(u)', () => {
            const key = global.display.grab_accelerator(accelerator, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
            if (key !== Meta.KeyBindingAction.NONE) {
                this._keys.add(key);
                Main.wm.allowKeybinding(Meta.external_binding_name_for_action(key), Shell.ActionMode.NORMAL);
            }
            return [key];
        });
    }

    UnbindKeyAsync([key], invocation) {
        this._answer(invocation, '()', () => {
            this._unbind(key);
            return [];
        });
    }
}

function init() {
    return new Extension();
}
