// SPDX-License-Identifier: MIT
#include "platform/mac/run_loop.h"

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include "platform/mac/callback.h"

namespace lexwend::platform::mac {
namespace {

/// While one lives, the system does not put off what this process waits for, as App Nap does where nobody
/// sees a window of it. The computer may still go to sleep.
class Activity {
 public:
  explicit Activity(NSString* reason)
      : token_([[NSProcessInfo processInfo]
            beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                              reason:reason]) {}
  ~Activity() { [[NSProcessInfo processInfo] endActivity:token_]; }
  Activity(const Activity&) = delete;
  Activity& operator=(const Activity&) = delete;

 private:
  id<NSObject> token_;
};

/// Work that waits for its time, and the activity that ends with it.
template <typename Work>
struct Pending {
  Pending(Work work, NSString* reason) : work(std::move(work)), activity(reason) {}
  Work work;
  Activity activity;
};

}  // namespace

void MacRunLoop::dispatchAfter(std::chrono::milliseconds delay, std::function<void()> work) {
  const auto kept =
      std::make_shared<const Pending<std::function<void()>>>(std::move(work), @"Work for a moment from now");
  const std::int64_t nanoseconds = std::chrono::nanoseconds(delay).count();
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, nanoseconds), dispatch_get_main_queue(), ^{
    // The main queue waits for the work that it runs, and work may open an alert that stands for hours; a
    // block of the run loop holds up nothing.
    CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
      guarded(kept->work);
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
  });
}

Registration MacRunLoop::scheduledRepeatingTimer(std::chrono::milliseconds interval,
                                                 std::function<void()> handler) {
  const auto kept =
      std::make_shared<const Pending<std::function<void()>>>(std::move(handler), @"Looking again and again");
  const NSTimeInterval seconds = std::chrono::duration<double>(interval).count();
  void (^tick)(NSTimer*) = ^(NSTimer*) {
    // Invalidating the timer may release this block.
    const auto running = kept;
    guarded(running->work);
  };
  NSTimer* scheduled = [NSTimer scheduledTimerWithTimeInterval:seconds repeats:YES block:tick];
  // Scheduled in the default mode alone, it would stand still while an alert or a menu is open.
  [[NSRunLoop mainRunLoop] addTimer:scheduled forMode:NSRunLoopCommonModes];
  return Registration([scheduled] { [scheduled invalidate]; });
}

void MacRunLoop::sleep(std::chrono::microseconds duration) {
  usleep(static_cast<useconds_t>(duration.count()));
}

}  // namespace lexwend::platform::mac
