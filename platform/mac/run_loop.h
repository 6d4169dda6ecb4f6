// SPDX-License-Identifier: MIT
#pragma once

#include "platform/run_loop.h"

namespace lexwend::platform::mac {

/// The main run loop. While something waits for its time, App Nap does not put it off. Main thread only.
class MacRunLoop : public RunLoop {
 public:
  void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  Registration scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                       std::function<void()> handler) override;
  void sleep(std::chrono::microseconds duration) override;
};

}  // namespace lexwend::platform::mac
