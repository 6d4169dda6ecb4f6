// SPDX-License-Identifier: MIT
#include "platform/fake/fake_files.h"

#include <memory>
#include <utility>

namespace lexwend::platform {

namespace {
std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}
}  // namespace

class FakeFileHandle : public FileHandle {
 public:
  FakeFileHandle(FakeFiles& files, std::string path) : files_(files), path_(std::move(path)) {
    ++files_.openHandles_;
  }
  ~FakeFileHandle() override {
    if (open_) --files_.openHandles_;
  }
  FakeFileHandle(const FakeFileHandle&) = delete;
  FakeFileHandle& operator=(const FakeFileHandle&) = delete;

  void seekToEndOfFile() override {
    files_.system_.called("file.seekToEnd");
    offset_ = files_.contents_[path_].size();
  }
  void write(std::string_view bytes) override {
    files_.system_.called("file.write");
    if (!open_ || files_.system_.failure(FakeOperation::writeFile)) return;
    auto& contents = files_.contents_[path_];
    if (contents.size() < offset_) contents.resize(offset_);
    contents.replace(offset_, bytes.size(), bytes);
    offset_ += bytes.size();
  }
  bool close() override {
    files_.system_.called("file.close");
    if (open_) --files_.openHandles_;
    open_ = false;
    return !files_.system_.failure(FakeOperation::closeFile);
  }

 private:
  FakeFiles& files_;
  std::string path_;
  std::size_t offset_ = 0;
  bool open_ = true;
};

std::unique_ptr<FileHandle> FakeFiles::fileHandleForWriting(const std::string& path) {
  system_.called("files.fileHandleForWriting");
  if (system_.failure(FakeOperation::openFile) || !contents_.contains(path) || readOnly_.contains(path)) {
    return nullptr;
  }
  return std::make_unique<FakeFileHandle>(*this, path);
}

bool FakeFiles::writeWholeFile(const std::string& path, std::string_view bytes) {
  system_.called("files.writeWholeFile");
  if (system_.failure(FakeOperation::writeWholeFile) || !folders_.contains(folderOf(path)) ||
      readOnly_.contains(path)) {
    return false;
  }
  contents_[path] = bytes;
  return true;
}

void FakeFiles::addFolder(const std::string& path) {
  for (std::string folder = path; !folder.empty(); folder = folderOf(folder)) folders_.insert(folder);
}

void FakeFiles::removeFolder(const std::string& path) {
  folders_.erase(path);
  std::erase_if(contents_, [&](const auto& file) { return folderOf(file.first) == path; });
}

void FakeFiles::setReadOnly(const std::string& path, bool readOnly) {
  if (readOnly) {
    readOnly_.insert(path);
  } else {
    readOnly_.erase(path);
  }
}

std::optional<std::string> FakeFiles::bytes(const std::string& path) const {
  const auto found = contents_.find(path);
  return found == contents_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace lexwend::platform
