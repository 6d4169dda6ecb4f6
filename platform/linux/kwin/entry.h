// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace lexwend::platform {

/// Whether an entry of an application is installed that asks KWin to let a program named lexwend press keys
/// and know the windows (X-KDE-Wayland-Interfaces). KWin tells only that program itself. Reads every entry
/// from disk.
bool anEntryGrantsKeys();

/// Whether an entry can name that program: KWin does not know the quotes that other paths would need.
bool entryCanName(std::string_view program);
/// Writes such an entry for that program into the user's applications; takes the place of the one before.
/// KWin looks for it when the program connects to it the next time. False on failure.
bool writeEntryThatGrantsKeys(const std::string& program);

}  // namespace lexwend::platform
