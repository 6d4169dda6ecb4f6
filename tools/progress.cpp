// SPDX-License-Identifier: MIT
#include "tools/progress.h"

#include <cstdio>

#include <unistd.h>

namespace lexwend {
namespace {

constexpr std::chrono::milliseconds kFirst(1000);
constexpr std::chrono::milliseconds kNext(200);
constexpr std::uint64_t kMegabyte = 1000000;

}  // namespace

Progress::Progress()
    : isWanted_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      next_(std::chrono::steady_clock::now() + kFirst) {}

Progress::~Progress() {
  if (isShown_) std::fputs("\r\033[K", stderr);
}

void Progress::add(std::size_t bytes) {
  if (!isWanted_) return;
  bytes_ += bytes;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  std::fprintf(stderr, "\r%llu MB", static_cast<unsigned long long>(bytes_ / kMegabyte));
  isShown_ = true;
  next_ = now + kNext;
}

}  // namespace lexwend
