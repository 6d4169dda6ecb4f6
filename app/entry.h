// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace lexwend {

class HotKeyCenter;

/// Prints what --help, -h or --version asks for, unless --selftest comes first. False when it printed
/// nothing. Needs no host.
bool printNotice(const std::vector<std::string>& arguments, std::ostream& out);

/// The program, on the main thread: reports and exits when one of --selftest, --help and --version is among
/// the arguments (the first of these three wins, whatever their order). Else it passes the command --fix,
/// --menu, --settings or --quit to the instance that runs. Else it runs the agent, of which one instance per
/// user stays. Other arguments are ignored. `arguments` starts with the program's path. Needs an installed
/// host; reports and commands need no display. Returns the exit status: 0, also for a second instance, which
/// leaves silently; 1 with a line on `err` when a command was not taken, and with one in the log as well when
/// no agent can run here; 2 for more than one command.
int runEntry(const std::vector<std::string>& arguments, HotKeyCenter& hotKeyCenter, std::ostream& out,
             std::ostream& err);

/// The same with the program's own hot key center, standard output and standard error.
int runEntry(const std::vector<std::string>& arguments);

}  // namespace lexwend
