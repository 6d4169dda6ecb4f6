// SPDX-License-Identifier: MIT
#include "tools/byte_stream.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexwend {
namespace {

constexpr std::size_t kChunkSize = std::size_t{64} * 1024;  // what a pipe holds

[[noreturn]] void fail() {
  throw std::system_error(errno, std::generic_category());
}

// Whoever shares the descriptor may have made it non-blocking; the tool then waits here instead.
void waitFor(int descriptor, short event) {
  pollfd waited{descriptor, event, 0};
  if (poll(&waited, 1, -1) < 0 && errno != EINTR) fail();
}

bool wouldBlock() {
  return errno == EAGAIN || errno == EWOULDBLOCK;
}

int openForReading(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) fail();
  return descriptor;
}

}  // namespace

bool ByteReader::canRewind(const std::string& path) {
  struct stat facts {};
  const int failed = path == "-" ? fstat(STDIN_FILENO, &facts) : stat(path.c_str(), &facts);
  return failed == 0 && S_ISREG(facts.st_mode) && facts.st_size > 0;
}

ByteReader::ByteReader(const std::string& path)
    : descriptor_(path == "-" ? STDIN_FILENO : openForReading(path)),
      owned_(path != "-"),
      begin_(lseek(descriptor_, 0, SEEK_CUR)) {}

ByteReader::~ByteReader() {
  if (owned_) close(descriptor_);
}

std::size_t ByteReader::read(char* bytes, std::size_t room) {
  while (true) {
    const ssize_t count = ::read(descriptor_, bytes, room);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (wouldBlock()) {
      waitFor(descriptor_, POLLIN);
    } else if (errno != EINTR) {
      fail();
    }
  }
}

void ByteReader::rewind() {
  if (lseek(descriptor_, static_cast<off_t>(begin_), SEEK_SET) < 0) fail();
}

ByteWriter::ByteWriter(Target target)
    : descriptor_(target == Target::standardOutput ? STDOUT_FILENO : STDERR_FILENO) {}

void ByteWriter::write(std::string_view bytes) {
  kept_ += bytes;
  if (kept_.size() >= kChunkSize) flush();
}

void ByteWriter::flush() {
  std::string_view rest = kept_;
  while (!rest.empty()) {
    const ssize_t count = ::write(descriptor_, rest.data(), rest.size());
    if (count >= 0) {
      wrote_ = true;
      rest.remove_prefix(static_cast<std::size_t>(count));
    } else if (wouldBlock()) {
      waitFor(descriptor_, POLLOUT);
    } else if (errno != EINTR) {
      fail();
    }
  }
  kept_.clear();
}

void ByteWriter::finish() {
  flush();
  // Without a byte written a descriptor that was never open is no failure.
  if (wrote_ && close(descriptor_) != 0 && errno != EINTR) fail();
}

}  // namespace lexwend
