// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What several services of this host need of files and folders. Any thread. No function throws for a file
/// that cannot be had.
namespace lexwend::platform::user_folders {

/// $HOME when it is an absolute path, else the account's home directory, else empty. Asked anew at every
/// call.
std::string homeDirectory();
/// $XDG_CONFIG_HOME, or ~/.config, as the XDG Base Directory Specification says (a relative value does not
/// count); empty when there is neither.
std::string configFolder();
/// $XDG_RUNTIME_DIR; empty when it is not set or not absolute.
std::string runtimeFolder();

/// Writes all bytes, also past short writes and signals. False when the system refuses some of them.
bool writeAll(int descriptor, std::string_view bytes);
/// The whole file; nothing when it cannot be read to its end.
std::optional<std::string> readFile(const std::string& path);
/// Makes the folder and those above it, readable by the user alone. False when it is not there afterwards.
bool makeFolders(const std::string& path);
/// Replaces the file so that at every moment, a crash or power cut included, either the old or the new
/// contents are there: a new file beside it, flushed to the disk, takes its name. A symbolic link stays one;
/// its target is replaced. The folder must exist. False on failure, with the old file untouched.
bool replaceFile(const std::string& path, std::string_view bytes);

}  // namespace lexwend::platform::user_folders
