// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "platform/fake/fake_system.h"
#include "platform/run_loop.h"

namespace lexwend::platform {

/// Deferred work and timers on the manual clock.
class FakeRunLoop : public RunLoop {
 public:
  explicit FakeRunLoop(FakeSystem& system) : system_(system) {}

  void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  Registration scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                       std::function<void()> handler) override;
  void sleep(std::chrono::microseconds duration) override;

  // Controls of a test.
  /// Time passes and the run loop turns: timers and deferred work that are due run.
  void advance(std::chrono::milliseconds duration) { system_.clock.advance(duration); }
  std::chrono::microseconds now() const { return system_.clock.now(); }
  /// The system forgets everything about this process.
  void processEnds() {
    system_.clock.forgetDeferred();
    pendingWork_ = 0;
  }
  /// The number of timers that are not invalidated.
  std::size_t liveTimers() const { return *liveTimers_; }
  /// The amount of deferred work that waits, without timers.
  std::size_t pendingWork() const { return pendingWork_; }

 private:
  FakeSystem& system_;
  std::shared_ptr<std::size_t> liveTimers_ = std::make_shared<std::size_t>(0);
  std::size_t pendingWork_ = 0;
};

}  // namespace lexwend::platform
