// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/hot_key_service.h"
#include "platform/linux/keymap/linux_key_names.h"
#include "platform/linux/sway/ipc.h"

namespace lexwend::platform {

/// Key bindings of sway that do nothing (`bindcode ... nop`), whose presses sway reports. They name the place
/// of the key, so they are the same in every layout. They take the place of a binding of the user's own for
/// the same combination until sway reads its configuration again; no program can ask sway which ones there
/// are. A locked screen has no bindings. Command is Control here, Option is Alt, and Control is Super. Main
/// thread only. Registering waits for sway.
///
/// sway repeats the binding of a held key. A second binding, for the release, tells that it was let go.
class SwayHotKeyService : public HotKeyService {
 public:
  explicit SwayHotKeyService(std::shared_ptr<SwayIpc> sway);
  ~SwayHotKeyService() override;

  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  /// The end of a pause is a tick of sway, which it sends after the presses before it.
  Registration ignorePresses() override;
  const KeyNames& keyNames() override { return kLinuxKeyNames; }
  /// For the end of the program: gives every key back and refuses any other.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  struct BoundKey {
    HotKeyID identity;
    std::string combination;  ///< as sway spells it
    std::uint64_t number = 0;
    std::optional<Clock::time_point> heldSince{};  ///< the last report of it while it is down
  };
  /// Shared with pauses, which may outlive the service.
  struct Pauses {
    int running = 0;
    int ending = 0;  ///< ticks that have been asked for and have not come
  };
  bool bind(const BoundKey& hotKey);
  void unbind(const BoundKey& hotKey);
  void handleEvent(const SwayEvent& event);
  void handleBinding(const std::string& command);

  std::shared_ptr<SwayIpc> sway_;
  bool stopped_ = false;
  std::function<OSStatus(const HotKeyEvent&)> handler_;
  std::vector<std::shared_ptr<BoundKey>> hotKeys_;
  std::uint64_t lastNumber_ = 0;
  std::shared_ptr<Pauses> pauses_ = std::make_shared<Pauses>();
  std::string tick_;  // of this process
  Registration observation_;
};

}  // namespace lexwend::platform
