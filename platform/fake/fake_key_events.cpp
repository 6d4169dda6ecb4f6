// SPDX-License-Identifier: MIT
#include "platform/fake/fake_key_events.h"

#include <string>

namespace lexwend::platform {
namespace {

class FakeEventSource : public EventSource {
 public:
  explicit FakeEventSource(EventSourceState sourceState) : state(sourceState) {}
  const EventSourceState state;
};

class FakeKeyEvent : public KeyEvent {
 public:
  explicit FakeKeyEvent(FakePostedKey made) : key(made) {}
  void setFlags(EventFlags flags) override { key.flags = flags; }
  FakePostedKey key;
};

}  // namespace

EventFlags FakeKeyEvents::flagsState(EventSourceState state) {
  system_.called("keyEvents.flagsState " + std::to_string(static_cast<int>(state)));
  return held_;
}

EventSourceRef FakeKeyEvents::createSource(EventSourceState state) {
  system_.called("keyEvents.createSource " + std::to_string(static_cast<int>(state)));
  if (system_.failure(FakeOperation::createEventSource)) return nullptr;
  return std::make_shared<FakeEventSource>(state);
}

std::unique_ptr<KeyEvent> FakeKeyEvents::createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                             bool keyDown) {
  system_.called("keyEvents.createKeyboardEvent " + std::to_string(number(keyCode)) +
                 (keyDown ? " down" : " up"));
  if (system_.failure(keyDown ? FakeOperation::createKeyDownEvent : FakeOperation::createKeyUpEvent)) {
    return nullptr;
  }
  if (apps_.front() && apps_.front()->terminal) return nullptr;
  FakePostedKey key;
  key.keyCode = keyCode;
  key.keyDown = keyDown;
  key.flags = held_;
  if (const auto* made = dynamic_cast<const FakeEventSource*>(source.get())) key.source = made->state;
  return std::make_unique<FakeKeyEvent>(key);
}

void FakeKeyEvents::post(EventTap tap, const KeyEvent& event) {
  const auto* made = dynamic_cast<const FakeKeyEvent*>(&event);
  if (made == nullptr) {
    system_.complain("keyEvents.post of an event that this host did not make");
    return;
  }
  FakePostedKey key = made->key;
  key.tap = tap;
  key.time = std::chrono::duration_cast<std::chrono::milliseconds>(system_.clock.now());
  posted_.push_back(key);
  system_.called("keyEvents.post " + std::to_string(number(key.keyCode)) + (key.keyDown ? " down" : " up"));
  if (!key.keyDown || key.flags != kEventFlagCommand) return;
  if (key.keyCode == kKeyC) apps_.copyInFront();
  if (key.keyCode == kKeyV) apps_.pasteInFront();
}

void FakeKeyEvents::releaseModifiersAfter(std::chrono::milliseconds delay) {
  system_.clock.systemDoes(delay, [this] { held_ = kNoEventFlags; });
}

}  // namespace lexwend::platform
