// SPDX-License-Identifier: MIT
// Quartz events: sources, key events, and what was posted where.
#include "tests/mac/doubles/support.h"
#include "tests/mac/doubles/system_objects.h"

using namespace lexwend::doubles;

@implementation LXWEventSource
@end
@implementation LXWKeyEvent
@end

namespace {

struct State {
  std::vector<key_events::Posted> posted;
  std::uint64_t heldModifiers = 0;
  std::function<void(const key_events::Posted&)> observer;
  bool doesNextSourceFail = false;
  int creationsUntilFailure = 0;
  int failuresLeft = 0;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

LXWKeyEvent* checked(CGEventRef event, const char* what) {
  requireKind(event, [LXWKeyEvent class], what);
  return (LXWKeyEvent*)event;
}

}  // namespace

namespace lexwend::doubles::key_events {
std::vector<Posted> posted() { return state().posted; }
void setModifiersHeld(std::uint64_t flags) { state().heldModifiers = flags; }
void onPost(std::function<void(const Posted&)> observer) { state().observer = std::move(observer); }
void failNextSource() { state().doesNextSourceFail = true; }
void failEventCreation(int firstFailing, int count) {
  state().creationsUntilFailure = firstFailing;
  state().failuresLeft = count;
}
}  // namespace lexwend::doubles::key_events

extern "C" {

CGEventFlags CGEventSourceFlagsState(CGEventSourceStateID stateId) {
  record(std::to_string(stateId));
  if (stateId != kCGEventSourceStateCombinedSessionState && stateId != kCGEventSourceStateHIDSystemState) {
    die("CGEventSourceFlagsState: no such state");
  }
  return state().heldModifiers;
}
CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID stateId) {
  record(std::to_string(stateId));
  if (std::exchange(state().doesNextSourceFail, false) || takeFailure()) return nullptr;
  LXWEventSource* source = [[LXWEventSource alloc] init];
  source->state = stateId;
  return (CGEventSourceRef)source;
}
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode virtualKey, bool keyDown) {
  record(std::string(source == nullptr ? "no source" : "source") + ", " + std::to_string(virtualKey) + ", " +
         (keyDown ? "down" : "up"));
  if (source != nullptr) requireKind(source, [LXWEventSource class]);
  if (state().failuresLeft > 0 && --state().creationsUntilFailure <= 0) {
    --state().failuresLeft;
    return nullptr;
  }
  if (takeFailure(keyDown ? "CGEventCreateKeyboardEvent down" : "CGEventCreateKeyboardEvent up")) {
    return nullptr;
  }
  LXWKeyEvent* event = [[LXWKeyEvent alloc] init];
  event->event.keyCode = virtualKey;
  event->event.isDown = keyDown;
  // A new event carries the modifiers that are held, until its flags are set.
  event->event.flags = state().heldModifiers;
  if (source != nullptr) event->event.sourceState = ((LXWEventSource*)source)->state;
  return (CGEventRef)event;
}
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
  checked(event, "CGEventSetFlags")->event.flags = flags;
  record(std::to_string(flags));
}
CGEventFlags CGEventGetFlags(CGEventRef event) { return checked(event, "CGEventGetFlags")->event.flags; }
CGEventType CGEventGetType(CGEventRef event) {
  return checked(event, "CGEventGetType")->event.isDown ? kCGEventKeyDown : kCGEventKeyUp;
}
void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
  key_events::Posted posted = checked(event, "CGEventPost")->event;
  posted.tap = tap;
  posted.time = std::chrono::duration_cast<std::chrono::milliseconds>(time::now());
  record(std::to_string(tap) + ", " + std::to_string(posted.keyCode) + ", " +
         (posted.isDown ? "down" : "up"));
  state().posted.push_back(posted);
  if (state().observer) state().observer(posted);
}
}
