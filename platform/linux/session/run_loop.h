// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>

#include "platform/run_loop.h"

namespace lexwend::platform {

/// Deferred work and timers as sources of GLib's default main context, which the agent's event loop runs.
/// They go by the monotonic clock. Deferred work runs in the order of its time, also after the loop was held
/// up. While no work is due, nothing wakes the process.
class LinuxRunLoop : public RunLoop {
 public:
  LinuxRunLoop() = default;
  /// Work that is still pending is dropped, timers are invalidated.
  ~LinuxRunLoop() override;
  LinuxRunLoop(const LinuxRunLoop&) = delete;
  LinuxRunLoop& operator=(const LinuxRunLoop&) = delete;

  void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  Registration scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                       std::function<void()> handler) override;
  /// A signal that asks this program to end cuts it short (end_request.h).
  void sleep(std::chrono::microseconds duration) override;

  /// For the end of the program: blocks and runs the event loop until no work is left that was deferred by at
  /// most `longest`. Work that such work defers counts as well. Work runs at its own time and no earlier: a
  /// clipboard that is put back before the other application has read it would be lost there.
  void finishPending(std::chrono::milliseconds longest);

 private:
  struct Work;
  class RepeatingTimer;
  static int runWork(void* work);

  std::set<Work*> pending_;
  std::set<std::shared_ptr<RepeatingTimer>> timers_;
};

}  // namespace lexwend::platform
