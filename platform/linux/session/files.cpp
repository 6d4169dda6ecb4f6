// SPDX-License-Identifier: MIT
#include "platform/linux/session/files.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr mode_t kPrivate = 0600;

/// Writes all bytes, also past short writes and signals. False when the system refuses some of them.
bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Opens a regular file for writing and makes it readable by its owner alone; -1 for anything else. Never
/// waits, as a FIFO without a reader would make it do.
int openForWriting(const std::string& path, int more) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | more, kPrivate);
  if (descriptor < 0) return -1;
  struct stat state {};
  if (::fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode)) {
    ::close(descriptor);
    return -1;
  }
  const bool othersMayRead = (state.st_mode & (S_IRWXG | S_IRWXO)) != 0;
  if (othersMayRead && state.st_uid == ::geteuid()) ::fchmod(descriptor, kPrivate);
  return descriptor;
}

class PosixFileHandle : public FileHandle {
 public:
  explicit PosixFileHandle(int descriptor) : descriptor_(descriptor) {}
  ~PosixFileHandle() override { PosixFileHandle::close(); }
  PosixFileHandle(const PosixFileHandle&) = delete;
  PosixFileHandle& operator=(const PosixFileHandle&) = delete;

  void seekToEndOfFile() override { ::lseek(descriptor_, 0, SEEK_END); }
  void write(std::string_view bytes) override { writeAll(descriptor_, bytes); }
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
  const int descriptor = openForWriting(path, 0);
  return descriptor < 0 ? nullptr : std::make_unique<PosixFileHandle>(descriptor);
}

bool LinuxFiles::writeWholeFile(const std::string& path, std::string_view bytes) {
  const int descriptor = openForWriting(path, O_CREAT);
  if (descriptor < 0) return false;
  const bool written = ::ftruncate(descriptor, 0) == 0 && writeAll(descriptor, bytes);
  return ::close(descriptor) == 0 && written;
}

}  // namespace lexwend::platform
