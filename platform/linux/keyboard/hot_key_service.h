// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/hot_key_service.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/modifier_masks.h"
#include "platform/linux/keymap/hot_key.h"
#include "platform/linux/keymap/linux_key_names.h"

namespace lexwend::platform {

/// Passive key grabs on the root window, one for each combination of Caps Lock, Num Lock and Scroll Lock. A
/// key is taken when another client has grabbed it, in the core protocol or through XInput 2. Command is
/// Control here, Option is Alt, and Control is Super. Main thread only. Registering blocks for some round
/// trips to the X server.
///
/// A press activates a grab of the keyboard. The service releases that grab before the handler runs, so that
/// keys that the handler simulates reach their application. Without the grab the server does not report the
/// release of the key. The service therefore selects raw key releases while the key is held, and counts the
/// repeats of a held key as one press.
class LinuxHotKeyService : public HotKeyService {
 public:
  /// Without a display (null) every registration is refused as invalid.
  explicit LinuxHotKeyService(std::shared_ptr<X11Connection> x11);
  ~LinuxHotKeyService() override;

  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  /// The end of a pause is a request to the server. The server marks every event with the number of the last
  /// request before it. This tells exactly whether a press came before or after the end, however late the
  /// press is read.
  Registration ignorePresses() override;
  const KeyNames& keyNames() override { return kLinuxKeyNames; }
  /// For the end of the program: ungrabs every key and refuses new registrations.
  void stop();

 private:
  struct GrabbedKey;
  /// Shared with pauses, which may outlive the service.
  struct Pauses {
    int running = 0;
    std::optional<std::uint32_t> lastEnd;  ///< number of the request that ended the last one
  };
  bool wasPausedAt(const xcb_key_press_event_t& event) const;
  void handleEvent(const xcb_generic_event_t& event);
  void handlePress(const xcb_key_press_event_t& event);
  void handleRelease(std::uint8_t key);
  void handleKeymapChange();
  void unregister(const std::shared_ptr<GrabbedKey>& hotKey);
  void selectRawReleases(bool wanted);
  bool grab(const GrabbedKey& hotKey);
  bool isHeldThroughXInput2(const GrabbedKey& hotKey);
  void ungrab(const GrabbedKey& hotKey);

  std::shared_ptr<X11Connection> x11_;
  bool stopped_ = false;
  ModifierMasks masks_;
  std::function<OSStatus(const HotKeyEvent&)> handler_;
  std::vector<std::shared_ptr<GrabbedKey>> hotKeys_;
  /// The keys of hot keys that are down, with the server's time of their last press.
  std::map<std::uint8_t, xcb_timestamp_t> held_;
  std::shared_ptr<Pauses> pauses_ = std::make_shared<Pauses>();
  X11Connection::Observation observation_;
};

}  // namespace lexwend::platform
