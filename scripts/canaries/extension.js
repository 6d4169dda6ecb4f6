// SPDX-License-Identifier: MIT
'use strict';
/* exported init */

const {Gio} = imports.gi;
const Main = imports.ui.main;  // denied: nobody uses it

class Extension {
    enable() {
        var name = Gio.DBus.session.unique_name;  // denied: neither let nor const
        if (name == null)  // denied: compares loosely
            print(name);  // denied: nobody has declared it
        const agent = "org.lexwend.Lexwend";  // denied: the other quotes
        return agent  // denied: no semicolon
    }
}

function init() {
    return new Extension();
}
