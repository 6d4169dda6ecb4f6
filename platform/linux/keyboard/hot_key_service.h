// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/keyboard/modifier_masks.h"
#include "platform/linux/keymap/hot_key_keeper.h"

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
class LinuxHotKeyService : public HotKeyKeeper {
 public:
  /// Without a display (null) every registration is refused as invalid.
  explicit LinuxHotKeyService(std::shared_ptr<X11Connection> x11);
  ~LinuxHotKeyService() override;

 private:
  /// What the server is asked for.
  struct Grab {
    std::uint8_t key = 0;
    std::uint16_t state = 0;  ///< the modifiers without any lock
    bool operator==(const Grab&) const = default;
  };
  /// As the modifiers are now; nothing for a key or a modifier that the keyboard does not have.
  std::optional<Grab> grabOf(const HotKey& hotKey) const;
  OSStatus take(const HotKey& hotKey) override;
  void giveBack(const HotKey& hotKey) override;
  /// The end of a pause is a request to the server. The server marks every event with the number of the last
  /// request before it. This tells exactly whether a press came before or after the end, however late the
  /// press is read.
  void markEndOfPause() override;
  bool isBeforeEndOfPause(const xcb_key_press_event_t& event) const;
  void handleEvent(const xcb_generic_event_t& event);
  void handlePress(const xcb_key_press_event_t& event);
  void handleRelease(std::uint8_t key);
  void handleKeymapChange();
  void selectRawReleases(bool wanted);
  bool grab(const Grab& wanted);
  bool isHeldThroughXInput2(const Grab& wanted);
  void ungrab(const Grab& grabbed);

  std::shared_ptr<X11Connection> x11_;
  ModifierMasks masks_;
  /// The keys of hot keys that are down, with the server's time of their last press.
  std::map<std::uint8_t, xcb_timestamp_t> held_;
  std::optional<std::uint32_t> lastEndOfPause_;  // the number of the request
  X11Connection::Observation observation_;
};

}  // namespace lexwend::platform
