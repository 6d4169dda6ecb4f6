// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <set>
#include <vector>

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_system.h"
#include "platform/key_events.h"

namespace lexwend::platform {

/// A simulated key event that was posted.
struct FakePostedKey {
  KeyCode keyCode{};
  bool keyDown = false;
  EventFlags flags{};
  std::optional<EventSourceState> source;  ///< nothing: made without a source
  EventTap tap = EventTap::hid;
  std::chrono::milliseconds time{0};  ///< since the host was made
  bool operator==(const FakePostedKey&) const = default;
};

/// Simulated typing that reaches the application in front: exactly Command with C or V there copies or
/// pastes.
class FakeKeyEvents : public KeyEvents {
 public:
  FakeKeyEvents(FakeSystem& system, FakeApps& apps) : system_(system), apps_(apps) {}

  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  PostResult post(EventTap tap, const KeyEvent& event) override;

  // Controls of a test.
  /// The user holds these modifiers (event flags, any of them).
  void holdModifiers(EventFlags flags) { held_ = flags; }
  void releaseModifiersAfter(std::chrono::milliseconds delay);
  /// From now on the host refuses to press this key.
  void refuse(KeyCode keyCode) { refusedKeys_.insert(keyCode); }
  const std::vector<FakePostedKey>& posted() const { return posted_; }
  void forgetPosted() { posted_.clear(); }

 private:
  FakeSystem& system_;
  FakeApps& apps_;
  EventFlags held_{};
  std::set<KeyCode> refusedKeys_;
  std::vector<FakePostedKey> posted_;
};

}  // namespace lexwend::platform
