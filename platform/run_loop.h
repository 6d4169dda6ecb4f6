// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace lexwend::platform {

/// A repeating timer. The run loop keeps it until it is invalidated, whoever else lets go of it.
class Timer {
 public:
  virtual ~Timer() = default;
  /// Never fires again; may be called from its own handler, and more than once.
  virtual void invalidate() = 0;
};
using TimerRef = std::shared_ptr<Timer>;

/// Time and deferred work. Main thread only; everything deferred runs there, from the run loop. Delays do not
/// depend on the clock on the wall, which may be set at any time.
class RunLoop {
 public:
  virtual ~RunLoop() = default;
  /// Runs the work once, `delay` from now. It cannot be cancelled: the work holds what it needs weakly.
  virtual void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) = 0;
  /// Fires every `interval`, the first time one interval from now. The handler gets the timer.
  virtual TimerRef scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                           std::function<void(Timer&)> handler) = 0;
  /// Blocks the calling thread; deferred work does not run meanwhile.
  virtual void sleep(std::chrono::microseconds duration) = 0;
};

/// The service of the installed host.
RunLoop& runLoop();

}  // namespace lexwend::platform
