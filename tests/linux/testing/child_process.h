// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <cstdint>

#include <sys/wait.h>
#include <unistd.h>

namespace lexwend::platform {

/// A process of its own that does something again and again until the object goes. What it does may call
/// async-signal-safe functions only: the test may have threads.
class ChildProcess {
 public:
  template <typename Act>
  explicit ChildProcess(Act act) : process_(fork()) {
    if (process_ == 0) {
      for (;;) act();
    }
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  std::uint32_t number() const { return static_cast<std::uint32_t>(process_); }
  /// Returns when it is stopped.
  void stop() const {
    kill(process_, SIGSTOP);
    waitpid(process_, nullptr, WUNTRACED);
  }
  void goOn() const { kill(process_, SIGCONT); }

 private:
  pid_t process_;
};

}  // namespace lexwend::platform
