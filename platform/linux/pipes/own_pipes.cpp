// SPDX-License-Identifier: MIT
#include "platform/linux/pipes/own_pipes.h"

#include <mutex>
#include <set>

#include <sys/stat.h>

namespace lexwend::platform {
namespace {

struct Pipes {
  std::mutex mutex;
  std::multiset<ino_t> numbers;
};

Pipes& pipes() {
  static Pipes pipes;
  return pipes;
}

/// The same for both ends of a pipe.
ino_t numberOf(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode) ? status.st_ino : 0;
}

}  // namespace

OwnPipe::OwnPipe(int end) : number_(numberOf(end)) {
  const std::lock_guard lock(pipes().mutex);
  pipes().numbers.insert(number_);
}

OwnPipe::~OwnPipe() {
  const std::lock_guard lock(pipes().mutex);
  pipes().numbers.erase(pipes().numbers.find(number_));
}

bool OwnPipe::isEnd(int descriptor) {
  const ino_t number = numberOf(descriptor);
  const std::lock_guard lock(pipes().mutex);
  return number != 0 && pipes().numbers.contains(number);
}

}  // namespace lexwend::platform
