// SPDX-License-Identifier: MIT
#pragma once

#include "platform/files.h"

namespace lexwend::platform::mac {

/// Files by NSFileManager, NSFileHandle and NSData. Any thread.
class MacFiles : public Files {
 public:
  std::string homeDirectoryForCurrentUser() override;
  std::unique_ptr<FileHandle> fileHandleForWriting(const std::string& path) override;
  bool writeWholeFile(const std::string& path, std::string_view bytes) override;
};

}  // namespace lexwend::platform::mac
