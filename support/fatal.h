// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend {

/// Stops the process: one line on standard error, then abort. For states in which the program must not go on,
/// such as a stored number that does not fit its type. Any thread. `why` never holds the user's text.
[[noreturn]] void fatal(const char* why);

}  // namespace lexwend
