// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/hot_key_service.h"
#include "platform/linux/keymap/hot_key.h"
#include "platform/linux/keymap/linux_key_names.h"

namespace lexwend::platform {

/// Keeps the hot keys of this process and the pauses. A service that derives from this one takes a key from
/// the system, gives it back and reports its presses; its destructor calls stop(). Main thread only.
class HotKeyKeeper : public HotKeyService {
 public:
  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  Registration ignorePresses() override;
  const KeyNames& keyNames() override { return kLinuxKeyNames; }
  /// For the end of the program: gives every key back and refuses any other.
  void stop();

 protected:
  using Clock = std::chrono::steady_clock;
  struct HotKey {
    HotKeyID identity;
    KeyCode keyCode{};
    Modifiers modifiers{};
    std::uint64_t number = 0;                      ///< no other hot key of this service has it
    bool isTaken = true;                           ///< false while another program has it
    std::optional<Clock::time_point> heldSince{};  ///< the last press() of it while it is down
  };
  /// Asks the system for a key that no other hot key of this process has. kHotKeyInvalidErr or
  /// kHotKeyExistsErr when it refuses.
  virtual OSStatus take(const HotKey& hotKey) = 0;
  virtual void giveBack(const HotKey& hotKey) = 0;
  /// A pause has ended. The presses before this moment may not have come yet, and are to be ignored.
  virtual void markEndOfPause() = 0;

  /// A list of its own, since a handler may unregister.
  std::vector<std::shared_ptr<HotKey>> hotKeys() const { return hotKeys_; }
  /// Calls the handler, except during a pause.
  void report(const HotKey& hotKey);
  /// For a system that repeats the press of a held key and tells its release: reports the first press, unless
  /// it is to be ignored.
  void press(HotKey& hotKey, bool isIgnored);
  static void release(HotKey& hotKey) { hotKey.heldSince.reset(); }

 private:
  bool stopped_ = false;
  std::function<OSStatus(const HotKeyEvent&)> handler_;
  std::vector<std::shared_ptr<HotKey>> hotKeys_;
  std::uint64_t lastNumber_ = 0;
  std::shared_ptr<int> pauses_ = std::make_shared<int>(0);  // those that run; they may outlive this object
};

}  // namespace lexwend::platform
