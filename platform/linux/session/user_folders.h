// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
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

/// No settings file and no autostart entry is larger.
inline constexpr std::size_t kMaxSmallFile = 65536;

/// The whole of a regular file; nothing when it is of another kind, larger than kMaxSmallFile, or cannot be
/// read. Never waits for a writer, as opening a FIFO would.
std::optional<std::string> readSmallFile(const std::string& path);
/// Replaces the file so that at every moment, a crash or power cut included, either the old or the new
/// contents are there. The file and the folders that are missing above it are made for the user alone. A
/// symbolic link stays one; its target is replaced. False on failure, with the old file untouched.
bool replaceFile(const std::string& path, std::string_view bytes);

}  // namespace lexwend::platform::user_folders
