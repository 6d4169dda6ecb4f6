// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

#include "platform/registration.h"

namespace lexwend::platform {

/// Time and deferred work. Main thread only; everything deferred runs there, from the run loop. Delays do not
/// depend on the clock on the wall, which may be set at any time.
class RunLoop {
 public:
  virtual ~RunLoop() = default;
  /// Runs the work once, `delay` from now. It cannot be cancelled, so the work holds what it needs weakly.
  virtual void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) = 0;
  /// A timer that fires every `interval`, for the first time one interval from now. The end of the
  /// registration invalidates it.
  [[nodiscard]] virtual Registration scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                                             std::function<void()> handler) = 0;
  /// Blocks the calling thread for at least `duration`; no deferred work, timer or event runs meanwhile.
  virtual void sleep(std::chrono::microseconds duration) = 0;
};

/// The service of the installed host.
RunLoop& runLoop();

}  // namespace lexwend::platform
