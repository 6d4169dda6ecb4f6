// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace lexwend::platform {

/// The user's files by plain POSIX calls.
class LinuxFiles : public Files {
 public:
  /// $HOME when it is an absolute path, else the account's home directory, else empty. Read once.
  std::string homeDirectoryForCurrentUser() override;
  std::unique_ptr<FileHandle> fileHandleForWriting(const std::string& path) override;
  bool writeWholeFile(const std::string& path, std::string_view bytes) override;
};

}  // namespace lexwend::platform
