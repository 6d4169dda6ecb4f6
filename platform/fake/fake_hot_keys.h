// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/hot_key_service.h"

namespace lexwend::platform {

/// The system's code for a combination that another program holds.
inline constexpr OSStatus kHotKeyExists = -9878;

/// System-wide hot keys in memory.
class FakeHotKeys : public HotKeyService {
 public:
  using Combination = std::pair<KeyCode, Modifiers>;

  explicit FakeHotKeys(FakeSystem& system) : system_(system) {}

  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  Registration ignorePresses() override;
  bool needsAgreement() override { return takesSettings_ && !isAgreed_; }
  void agree() override { isAgreed_ = true; }
  std::string_view whyNoPressComes() override { return needsAgreement() ? "no press comes" : ""; }

  // Controls of a test.
  /// From now on a hot key takes a change to the user's settings.
  void takeSettings() { takesSettings_ = true; }
  bool isAgreed() const { return isAgreed_; }
  /// Another program holds the combination.
  void otherAppTakes(KeyCode keyCode, Modifiers modifiers) { taken_.insert({keyCode, modifiers}); }
  /// The user presses the combination; false when this program does not hold it. During a pause the handler
  /// is not called.
  bool press(KeyCode keyCode, Modifiers modifiers);
  /// The system reports a press with that identity, registered or not. Returns the handler's result; nothing
  /// when no handler is installed.
  std::optional<OSStatus> dispatch(HotKeyID identity);
  /// The system forgets everything about this process.
  void processEnds() {
    registered_.clear();
    handler_ = nullptr;
    handlerInstallations_ = 0;
  }
  /// The system drops every registration, as it may while the computer sleeps.
  void loseRegistrations() { registered_.clear(); }
  bool holds(KeyCode keyCode, Modifiers modifiers) const;
  bool isTaken(KeyCode keyCode, Modifiers modifiers) const { return taken_.contains({keyCode, modifiers}); }
  /// What is registered now.
  const std::map<Combination, HotKeyID>& registered() const { return registered_; }
  /// Every identity that was offered for registration, refused ones included.
  const std::vector<HotKeyID>& offered() const { return offered_; }
  std::size_t handlerInstallations() const { return handlerInstallations_; }

 private:
  bool takesSettings_ = false;
  bool isAgreed_ = false;
  void unregister(const Combination& combination);

  FakeSystem& system_;
  std::function<OSStatus(const HotKeyEvent&)> handler_;
  std::size_t handlerInstallations_ = 0;
  std::map<Combination, HotKeyID> registered_;
  std::set<Combination> taken_;
  std::shared_ptr<int> pauses_ = std::make_shared<int>(0);
  std::vector<HotKeyID> offered_;
};

}  // namespace lexwend::platform
