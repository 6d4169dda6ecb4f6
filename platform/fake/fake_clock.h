// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lexwend::platform {

/// Manual time. Two kinds of things wait on it: what the rest of the system does (an application finishes its
/// copy, the user lets go of a key), which happens while the program sleeps too, and the program's own
/// deferred work, which needs a turn of its run loop.
class FakeClock {
 public:
  using Duration = std::chrono::microseconds;

  /// Since the host was made.
  Duration now() const { return now_; }
  /// The rest of the system does this `delay` from now; at once when there is no delay.
  void systemDoes(Duration delay, std::function<void()> what);
  /// The program's deferred work.
  void defer(Duration delay, std::function<void()> work);
  /// Time passes without a turn of the run loop.
  void sleep(Duration duration);
  /// Time passes with the run loop turning: everything due runs, in order of due time, then of scheduling.
  /// What work overslept runs late but runs. May be called from work that runs (a modal alert).
  void advance(Duration duration);
  /// Lets go of the program's deferred work.
  void forgetDeferred();
  /// Lets go of everything that waits.
  void forgetAll();

 private:
  struct Event {
    Duration due;
    std::uint64_t order;
    bool deferred;
    std::function<void()> run;
  };
  std::optional<Event> takeNext(Duration latest, bool deferredToo);
  void add(Duration delay, bool deferred, std::function<void()> run);

  Duration now_{0};
  std::uint64_t nextOrder_ = 0;
  std::vector<Event> events_;
};

}  // namespace lexwend::platform
