// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <xcb/xcb.h>

namespace lexwend::platform {

// Rows of the core modifier map: Shift, Lock and Control, then those whose meaning is read from their keys,
// from Mod1.
inline constexpr std::size_t kModifierCount = 8;
inline constexpr std::size_t kFirstNamelessModifier = 3;

/// The bits of a core modifier state, by the server's modifier map. 0 for a modifier that no key sets.
struct ModifierMasks {
  std::uint16_t shift = XCB_MOD_MASK_SHIFT;
  std::uint16_t control = XCB_MOD_MASK_CONTROL;
  std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
  std::uint16_t alt = 0;
  std::uint16_t super = 0;
  std::uint16_t levelThree = 0;
  std::uint16_t numLock = 0;
  std::uint16_t scrollLock = 0;
  bool operator==(const ModifierMasks&) const = default;

  /// Every combination of the three locks, the empty one included.
  std::vector<std::uint16_t> lockCombinations() const;
};

/// Reads the masks from the server. Blocks for two replies. When a reply does not come because the connection
/// is broken, the masks are those of a default ModifierMasks.
ModifierMasks readModifierMasks(xcb_connection_t* connection);

}  // namespace lexwend::platform
