// SPDX-License-Identifier: MIT
#include "platform/mac/key_monitor.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"

namespace lexwend::platform::mac {
Registration MacKeyMonitor::addLocalKeyDownMonitor(
    std::function<KeyDisposition(const KeyDownEvent&)> handler) {
  const auto kept = shared(std::move(handler));
  NSEvent* (^handle)(NSEvent*) = ^NSEvent*(NSEvent* event) {
    // Removing the monitor may release this block.
    const auto running = kept;
    auto disposition = KeyDisposition::passedOn;
    guarded([&] { disposition = (*running)({KeyCode{event.keyCode}, EventFlags{event.modifierFlags}}); });
    return disposition == KeyDisposition::consumed ? nil : event;
  };
  id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown handler:handle];
  if (monitor == nil) return {};
  return Registration([monitor] { [NSEvent removeMonitor:monitor]; });
}

}  // namespace lexwend::platform::mac
