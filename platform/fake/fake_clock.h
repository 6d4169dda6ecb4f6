// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lexwend::platform {

/// Manual time. It moves only by sleep() and advance(). Two kinds of events wait for it. What the rest of the
/// system does (an application finishes its copy, the user releases a key) happens even while the program
/// sleeps. The program's own deferred work needs a turn of its run loop.
class FakeClock {
 public:
  using Duration = std::chrono::microseconds;

  /// The time since the host was made.
  Duration now() const { return now_; }
  /// The rest of the system does this after `delay`; at once when there is no delay.
  void systemDoes(Duration delay, std::function<void()> what);
  /// Adds deferred work of the program.
  void defer(Duration delay, std::function<void()> work);
  /// Time passes without a turn of the run loop.
  void sleep(Duration duration);
  /// Time passes and the run loop turns. Everything due runs, in order of due time, then of scheduling. Work
  /// that became due during a sleep runs late. May be called from work that runs, as a modal alert does.
  void advance(Duration duration);
  /// Drops the program's deferred work.
  void forgetDeferred();
  /// Drops everything that waits.
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
