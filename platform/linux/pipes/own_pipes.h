// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

namespace lexwend::platform {

/// A pipe by which this process reads a clipboard. A compositor does not tell who fetches; by this the owner
/// of a clipboard knows the fetches of its own process. Any thread.
class OwnPipe {
 public:
  /// The descriptor of either end.
  explicit OwnPipe(int end);
  ~OwnPipe();
  OwnPipe(const OwnPipe&) = delete;
  OwnPipe& operator=(const OwnPipe&) = delete;

  /// Whether that is an end of a pipe of this process, as long as the object of it lives.
  static bool isEnd(int descriptor);

 private:
  ino_t number_;
};

}  // namespace lexwend::platform
