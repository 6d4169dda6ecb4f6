// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include <xcb/xcb.h>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// The server's keyboards as XInput 2 numbers them. Each has a keymap of its own, and they may differ: the
/// one of simulated keys is made before the system's configuration is read. Applications see the core
/// keyboard alone. It takes over the keymap of a keyboard as a key of that one is pressed, and where the new
/// keymap has fewer groups the selected group is lost.
struct KeyboardDevices {
  using Id = std::uint8_t;
  static constexpr Id kNone = 0;

  /// kNone without XInput 2.
  Id core = kNone;
  /// Whose keymap the core keyboard has; the core keyboard itself before the first key.
  Id lastUsed = kNone;
  /// Those that are attached to the core keyboard, without the one of simulated keys.
  std::vector<Id> real;

  bool isReal(Id device) const;
  /// Where simulated keys are played so that the core keyboard keeps its keymap; kNone for the server's own
  /// keyboard of simulated keys.
  Id forSimulatedKeys() const;
};

KeyboardDevices readKeyboardDevices(const X11Connection& x11);

/// The keys to hold for each modifier on the keyboard of simulated keys, by its modifier map and keysyms:
/// Control may be where Caps Lock is printed. Where it has no such key, or without XInput 2, the usual place.
struct ModifierKeys {
  xcb_keycode_t shift;
  xcb_keycode_t control;
  xcb_keycode_t alt;
  xcb_keycode_t super;
};

ModifierKeys readModifierKeys(const X11Connection& x11, const KeyboardDevices& devices);

}  // namespace lexwend::platform
