// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/// The only diagnostic channel: a UTF-8 text file, one line per event, to which the program only appends.
/// Messages hold categories, outcomes and counts, never the user's text. Any thread. Each call opens, appends
/// and closes by itself. No lock is held over the file. A call blocks for as long as the disk takes.
namespace lexwend::Log {

/// The path of the log file: "Library/Logs/Lexwend.log" under the home directory. It is determined on first
/// use and kept while the host is installed. Empty without a home directory. The folder is never created.
std::string url();

/// Appends the local time as "yyyy-MM-dd HH:mm:ss.SSS", a space, the message unchanged, and a line feed.
/// Never fails towards the caller: a line that cannot be written is lost. A message that is not well-formed
/// UTF-8 is not written.
void write(std::string_view message);

}  // namespace lexwend::Log
