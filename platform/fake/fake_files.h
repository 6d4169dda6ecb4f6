// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/fake/fake_system.h"
#include "platform/files.h"

namespace lexwend::platform {

/// Files in memory. At the start the home directory holds the empty folder "Library/Logs".
class FakeFiles : public Files {
 public:
  explicit FakeFiles(FakeSystem& system) : system_(system) { addFolder(home + "/Library/Logs"); }

  std::string homeDirectoryForCurrentUser() override { return home; }
  std::unique_ptr<FileHandle> fileHandleForWriting(const std::string& path) override;
  bool writeWholeFile(const std::string& path, std::string_view bytes) override;

  // Controls of a test.
  std::string home = "/Users/someone";
  /// Makes a folder and those above it.
  void addFolder(const std::string& path);
  /// Removes a folder with the files directly in it.
  void removeFolder(const std::string& path);
  void put(const std::string& path, std::string_view bytes) { contents_[path] = bytes; }
  void setReadOnly(const std::string& path, bool readOnly);
  /// The bytes of a file; nothing when it does not exist.
  std::optional<std::string> bytes(const std::string& path) const;
  std::size_t fileCount() const { return contents_.size(); }
  int openHandles() const { return openHandles_; }

 private:
  friend class FakeFileHandle;
  FakeSystem& system_;
  std::set<std::string> folders_;
  std::map<std::string, std::string> contents_;
  std::set<std::string> readOnly_;
  int openHandles_ = 0;
};

}  // namespace lexwend::platform
