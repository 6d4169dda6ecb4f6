// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace lexwend::platform {

/// Where the program lexwend-clipboard is: in the folder of the file that holds this code.
std::string clipboardKeeper();

/// Starts that program (main.cpp), which takes the clipboard over and keeps it: that of X as it was at that
/// time of the X server, or mutter's by remote control where there is no time (0). It has none of this
/// process's descriptors, and a session of its own, so that it outlives this process. Does not wait. False
/// when it cannot be started. Any thread.
bool startClipboardKeeper(const std::string& program, std::uint32_t time);

}  // namespace lexwend::platform
