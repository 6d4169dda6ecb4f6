// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace lexwend::platform {

/// The user's files by plain POSIX calls. What is written is readable by the user alone, also where the file
/// was there before. Only regular files are written: a FIFO, a device or a folder counts as a failure and is
/// never waited for.
class LinuxFiles : public Files {
 public:
  /// $HOME when it is an absolute path, else the account's home directory, else empty. Read once.
  std::string homeDirectoryForCurrentUser() override;
  std::unique_ptr<FileHandle> fileHandleForWriting(const std::string& path) override;
  bool writeWholeFile(const std::string& path, std::string_view bytes) override;
};

}  // namespace lexwend::platform
