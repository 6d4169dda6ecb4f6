// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "platform/keys.h"

struct xkb_keymap;

namespace lexwend::platform {

/// How Qt numbers the combination of a key at that place (QKeyCombination): the key of what it types, so one
/// number for each group of the keymap that types something else there, that of the first group first.
/// Command is Control here, Option is Alt, and Control is Meta. Empty for a key that a PC keyboard does not
/// have. Without a keymap only keys that type nothing have a number.
std::vector<std::int32_t> qtCombinations(KeyCode keyCode, Modifiers modifiers, xkb_keymap* keymap);

}  // namespace lexwend::platform
