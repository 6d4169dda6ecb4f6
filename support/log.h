// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/// The only diagnostic channel: an append-only UTF-8 text file, one line per event. Messages hold categories,
/// outcomes and counts, never the user's text. Any thread; a call opens, appends and closes by itself, and no
/// lock is held over the file.
namespace lexwend::Log {

/// The log file: "Library/Logs/Lexwend.log" under the home directory, worked out on first use and kept for as
/// long as the host is installed; empty without a home directory. The folder is never created.
std::string url();

/// Appends the local time as "yyyy-MM-dd HH:mm:ss.SSS", a blank, the message as it is, and a line feed. Never
/// fails towards the caller: what cannot be written is lost. A message that is not well-formed UTF-8 is not
/// written.
void write(std::string_view message);

}  // namespace lexwend::Log
