// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>

#include "platform/run_loop.h"

namespace lexwend::platform {

/// Deferred work and timers as sources of GLib's default main context, which the event loop of the agent
/// runs. Deferred work runs in the order of its time, also after the loop was held up. Nothing wakes the
/// process while no work is due.
class LinuxRunLoop : public RunLoop {
 public:
  LinuxRunLoop() = default;
  /// Work that is still pending is dropped, timers are invalidated.
  ~LinuxRunLoop() override;
  LinuxRunLoop(const LinuxRunLoop&) = delete;
  LinuxRunLoop& operator=(const LinuxRunLoop&) = delete;

  void dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
  TimerRef scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                   std::function<void(Timer&)> handler) override;
  void sleep(std::chrono::microseconds duration) override;

  /// For the end of the program: runs the event loop until no work is left that was deferred by at most
  /// `longest`, what such work defers in its turn included. Work keeps its time: a clipboard that is put back
  /// before the other application has read it would be lost there.
  void finishPending(std::chrono::milliseconds longest);

 private:
  struct Work;
  class RepeatingTimer;
  static int runWork(void* work);

  std::set<Work*> pending_;
  std::set<std::shared_ptr<RepeatingTimer>> timers_;
};

}  // namespace lexwend::platform
