// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// A file open for writing, at offset 0. Its destruction closes it. One thread at a time. A call blocks for
/// as long as the disk takes.
class FileHandle {
 public:
  virtual ~FileHandle() = default;
  virtual void seekToEndOfFile() = 0;
  /// Writes all bytes. When the system reports an error, the rest is lost and the error is not reported.
  virtual void write(std::string_view bytes) = 0;
  /// Closes the file; false when the system reports an error.
  virtual bool close() = 0;
};

/// The user's files. Any thread. Paths are UTF-8 and absolute. A call blocks for as long as the disk takes.
class Files {
 public:
  virtual ~Files() = default;
  /// The current user's home directory, the same for the whole run; empty when there is none.
  virtual std::string homeDirectoryForCurrentUser() = 0;
  /// Opens an existing file for writing without truncating it; null when that fails for any reason.
  virtual std::unique_ptr<FileHandle> fileHandleForWriting(const std::string& path) = 0;
  /// Creates the file with these bytes, or replaces what it holds; never creates a folder. False on failure.
  virtual bool writeWholeFile(const std::string& path, std::string_view bytes) = 0;
};

/// The service of the installed host.
Files& files();

}  // namespace lexwend::platform
