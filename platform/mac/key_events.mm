// SPDX-License-Identifier: MIT
#include "platform/mac/key_events.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#include "platform/mac/cf_ref.h"

namespace lexwend::platform::mac {
namespace {

class MacEventSource : public EventSource {
 public:
  explicit MacEventSource(CFRef<CGEventSourceRef> source) : source_(std::move(source)) {}
  CGEventSourceRef get() const { return source_.get(); }

 private:
  CFRef<CGEventSourceRef> source_;
};

class MacKeyEvent : public KeyEvent {
 public:
  explicit MacKeyEvent(CFRef<CGEventRef> event) : event_(std::move(event)) {}
  void setFlags(EventFlags flags) override { CGEventSetFlags(event_.get(), number(flags)); }
  CGEventRef get() const { return event_.get(); }

 private:
  CFRef<CGEventRef> event_;
};

}  // namespace

EventFlags MacKeyEvents::flagsState(EventSourceState state) {
  return EventFlags{CGEventSourceFlagsState(static_cast<CGEventSourceStateID>(state))};
}

EventSourceRef MacKeyEvents::createSource(EventSourceState state) {
  auto source = CFRef<CGEventSourceRef>::adopt(CGEventSourceCreate(static_cast<CGEventSourceStateID>(state)));
  if (!source) return nullptr;
  return std::make_shared<MacEventSource>(std::move(source));
}

std::unique_ptr<KeyEvent> MacKeyEvents::createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                            bool keyDown) {
  const auto code = static_cast<CGKeyCode>(keyCode);
  if (KeyCode{code} != keyCode) return nullptr;
  const CGEventSourceRef from =
      source == nullptr ? nullptr : static_cast<const MacEventSource&>(*source).get();
  auto event = CFRef<CGEventRef>::adopt(CGEventCreateKeyboardEvent(from, code, keyDown));
  if (!event) return nullptr;
  return std::make_unique<MacKeyEvent>(std::move(event));
}

PostResult MacKeyEvents::post(EventTap tap, const KeyEvent& event) {
  CGEventPost(static_cast<CGEventTapLocation>(tap), static_cast<const MacKeyEvent&>(event).get());
  return PostResult::posted;
}

static_assert(static_cast<int>(EventSourceState::combinedSession) == kCGEventSourceStateCombinedSessionState);
static_assert(static_cast<int>(EventSourceState::hidSystem) == kCGEventSourceStateHIDSystemState);
static_assert(static_cast<unsigned>(EventTap::hid) == kCGHIDEventTap);
static_assert(number(kEventFlagShift) == kCGEventFlagMaskShift &&
              number(kEventFlagControl) == kCGEventFlagMaskControl &&
              number(kEventFlagOption) == kCGEventFlagMaskAlternate &&
              number(kEventFlagCommand) == kCGEventFlagMaskCommand &&
              number(kEventFlagSecondaryFn) == kCGEventFlagMaskSecondaryFn);

}  // namespace lexwend::platform::mac
