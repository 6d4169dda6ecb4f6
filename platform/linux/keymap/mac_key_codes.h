// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "platform/keys.h"

namespace lexwend::platform {

/// An X key code is this plus the evdev code of <linux/input-event-codes.h>.
inline constexpr std::uint16_t kXKeyCodeOffset = 8;

/// The evdev code of the key at that place; nothing when a PC keyboard has no key there.
std::optional<std::uint16_t> evdevFromMacKeyCode(KeyCode keyCode);
/// The reverse.
std::optional<KeyCode> macFromEvdevKeyCode(std::uint32_t evdevKeyCode);

/// The same for X key codes (8 to 255).
std::optional<std::uint8_t> xFromMacKeyCode(KeyCode keyCode);
std::optional<KeyCode> macFromXKeyCode(std::uint32_t xKeyCode);

}  // namespace lexwend::platform
