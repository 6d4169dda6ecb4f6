// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// The server's keyboards as XInput 2 numbers them. Each has a keymap of its own, and the keymaps may differ:
/// the keyboard of simulated keys is made before the system's configuration is read. Applications see only
/// the core keyboard. It takes the keymap of each keyboard on which a key is pressed. When the new keymap has
/// fewer groups, the selected group is lost.
struct KeyboardDevices {
  using Id = std::uint8_t;
  static constexpr Id kNone = 0;

  /// kNone without XInput 2.
  Id core = kNone;
  /// The keyboard whose keymap the core keyboard has; before the first key, the core keyboard itself.
  Id lastUsed = kNone;
  /// The keyboards attached to the core keyboard, without that of simulated keys.
  std::vector<Id> real;

  bool isReal(Id device) const;
  /// The keyboard on which simulated keys leave the core keyboard's keymap as it is; kNone for the server's
  /// own keyboard of simulated keys.
  Id forSimulatedKeys() const;
};

/// Reads the devices from the server. Blocks for one round trip. Without XInput 2 or a reply there are no
/// devices.
KeyboardDevices readKeyboardDevices(const X11Connection& x11);

/// The keys to simulate, by the keymap and the modifier map of the keyboard on which they are simulated.
struct ShortcutKeys {
  /// The keys of the modifiers. Control may be where Caps Lock is printed. A modifier without a key has its
  /// usual place, and so have all without XInput 2.
  xcb_keycode_t shift = 0;
  xcb_keycode_t control = 0;
  xcb_keycode_t alt = 0;
  xcb_keycode_t super = 0;
  /// A key that types Insert in every layout, with Shift and without; nothing when there is none. The key
  /// that is labelled Insert may type Delete.
  std::optional<xcb_keycode_t> insert;
};

/// Reads the keys from the server. Blocks for up to three round trips. Without XInput 2 or a reply they are
/// the usual keys.
ShortcutKeys readShortcutKeys(const X11Connection& x11, const KeyboardDevices& devices);

}  // namespace lexwend::platform
