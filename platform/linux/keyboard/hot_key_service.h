// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/hot_key_service.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/modifier_masks.h"

namespace lexwend::platform {

/// Statuses of a refused registration, as the system whose terms the service speaks numbers them.
inline constexpr OSStatus kHotKeyExistsErr = -9878;
inline constexpr OSStatus kHotKeyInvalidErr = -9879;

/// Passive key grabs on the root window, one for each combination of Caps Lock, Num Lock and Scroll Lock. A
/// key is taken when another client has it by such a grab or by one of XInput 2. Command is Control here,
/// Option is Alt, and Control is Super.
///
/// The keyboard grab that a press brings is given up before the handler runs, so that keys simulated by the
/// handler reach their application. Since the server then no longer says when the key goes up, raw key
/// releases are selected while it is held: thus a key that repeats is one press.
class LinuxHotKeyService : public HotKeyService {
 public:
  /// Without a display (null) every registration is refused as invalid.
  explicit LinuxHotKeyService(std::shared_ptr<X11Connection> x11);
  ~LinuxHotKeyService() override;

  OSStatus installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) override;
  HotKeyRegistration registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) override;
  OSStatus unregisterHotKey(const HotKeyRef& ref) override;
  /// For the end of the program: gives every key back and refuses any other.
  void stop();

 private:
  class Registration;
  void handleEvent(const xcb_generic_event_t& event);
  void handlePress(const xcb_key_press_event_t& event);
  void handleRelease(std::uint8_t key);
  void handleKeymapChange();
  void selectRawReleases(bool wanted);
  bool grab(const Registration& registration);
  bool isHeldThroughXInput2(const Registration& registration);
  void ungrab(const Registration& registration);

  std::shared_ptr<X11Connection> x11_;
  bool stopped_ = false;
  ModifierMasks masks_;
  std::function<OSStatus(const HotKeyEvent&)> handler_;
  std::vector<std::shared_ptr<Registration>> registrations_;
  /// The keys of hot keys that are down, with the server's time of their last press.
  std::map<std::uint8_t, xcb_timestamp_t> held_;
  X11Connection::Observation observation_;
};

}  // namespace lexwend::platform
