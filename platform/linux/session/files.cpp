// SPDX-License-Identifier: MIT
#include "platform/linux/session/files.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

/// What other programs' data files get too; the user's umask takes away from it.
constexpr mode_t kNewFileMode = 0666;

class PosixFileHandle : public FileHandle {
 public:
  explicit PosixFileHandle(int descriptor) : descriptor_(descriptor) {}
  ~PosixFileHandle() override { PosixFileHandle::close(); }
  PosixFileHandle(const PosixFileHandle&) = delete;
  PosixFileHandle& operator=(const PosixFileHandle&) = delete;

  void seekToEndOfFile() override { ::lseek(descriptor_, 0, SEEK_END); }
  void write(std::string_view bytes) override { user_folders::writeAll(descriptor_, bytes); }
  bool close() override {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor >= 0 && ::close(descriptor) == 0;
  }

 private:
  int descriptor_;
};

}  // namespace

std::string LinuxFiles::homeDirectoryForCurrentUser() {
  static const std::string kHome = user_folders::homeDirectory();
  return kHome;
}

std::unique_ptr<FileHandle> LinuxFiles::fileHandleForWriting(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  return descriptor < 0 ? nullptr : std::make_unique<PosixFileHandle>(descriptor);
}

bool LinuxFiles::writeWholeFile(const std::string& path, std::string_view bytes) {
  const int descriptor =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, kNewFileMode);
  if (descriptor < 0) return false;
  const bool written = user_folders::writeAll(descriptor, bytes);
  return ::close(descriptor) == 0 && written;
}

}  // namespace lexwend::platform
