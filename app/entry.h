// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace lexwend {

class HotKeyCenter;

/// Prints what --help, -h or --version asks for, and returns true. Prints nothing and returns false when none
/// is among the arguments, or --selftest comes before them. Needs no host.
bool printNotice(const std::vector<std::string>& arguments, std::ostream& out);

/// The program. Main thread only. Needs an installed host. `arguments` starts with the program's path.
///
/// The first of --selftest, --help and --version among the arguments is printed, without a display. Else one
/// of
/// --fix, --menu, --settings and --quit is passed to the instance that runs, without a display. Other
/// arguments are ignored. Without any of these the agent runs, one instance per user. A second instance ends
/// silently.
///
/// Returns the exit status: 1, with a line on `err`, when a command was not taken, and with one in the log as
/// well when no agent can run here; 2 for more than one command; else 0.
int runEntry(const std::vector<std::string>& arguments, HotKeyCenter& hotKeyCenter, std::ostream& out,
             std::ostream& err);

/// The same with the program's own hot key center, standard output and standard error.
int runEntry(const std::vector<std::string>& arguments);

}  // namespace lexwend
