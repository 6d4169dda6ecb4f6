// SPDX-License-Identifier: MIT
#include "platform/key_monitor.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

class MacKeyMonitorToken : public KeyMonitorToken {
 public:
  explicit MacKeyMonitorToken(id monitor) : monitor_(monitor) {}
  ~MacKeyMonitorToken() override {
    if (monitor_ != nil) [NSEvent removeMonitor:monitor_];
  }
  MacKeyMonitorToken(const MacKeyMonitorToken&) = delete;
  MacKeyMonitorToken& operator=(const MacKeyMonitorToken&) = delete;

 private:
  id monitor_;
};

class MacKeyMonitor : public KeyMonitor {
 public:
  KeyMonitorTokenRef addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) override {
    const auto kept = shared(std::move(handler));
    NSEvent* (^handle)(NSEvent*) = ^NSEvent*(NSEvent* event) {
      // Removing the monitor may release this block.
      const auto running = kept;
      auto disposition = KeyDisposition::passedOn;
      guarded([&] { disposition = (*running)({KeyCode{event.keyCode}, EventFlags{event.modifierFlags}}); });
      return disposition == KeyDisposition::consumed ? nil : event;
    };
    id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown handler:handle];
    return std::make_unique<MacKeyMonitorToken>(monitor);
  }
};

}  // namespace

std::unique_ptr<KeyMonitor> makeKeyMonitor() { return std::make_unique<MacKeyMonitor>(); }

}  // namespace lexwend::platform::mac
