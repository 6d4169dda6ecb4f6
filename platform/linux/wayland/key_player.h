// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace lexwend::platform {

/// What a compositor lets a program press keys with. Main thread only; a call waits for the compositor, for a
/// second at most.
class KeyPlayer {
 public:
  /// The bits of the modifiers, as keymaps number them.
  enum Modifier : std::uint32_t { shift = 1U << 0, control = 1U << 2, alt = 1U << 3, super = 1U << 6 };

  virtual ~KeyPlayer() = default;
  /// Presses or releases a key (evdev code) while exactly these modifiers are down afterwards. False when the
  /// compositor is gone.
  virtual bool play(std::uint16_t evdevKey, bool down, std::uint32_t modifiersAfter) = 0;
  /// Waits until the compositor has taken what was played. False when it does not within a second; then keys
  /// that are down are let go as soon as it goes on.
  virtual bool settle() = 0;
};

}  // namespace lexwend::platform
