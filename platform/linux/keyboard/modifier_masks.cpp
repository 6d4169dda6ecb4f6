// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/modifier_masks.h"

#include <algorithm>

#include <xkbcommon/xkbcommon-keysyms.h>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {
namespace {

void addMeaning(ModifierMasks& masks, std::uint16_t bit, xcb_keysym_t keysym) {
  const auto keepFirst = [bit](std::uint16_t& mask) {
    if (mask == 0) mask = bit;
  };
  switch (keysym) {
    case XKB_KEY_Alt_L:
    case XKB_KEY_Alt_R:
      keepFirst(masks.alt);
      break;
    case XKB_KEY_Super_L:
    case XKB_KEY_Super_R:
      keepFirst(masks.super);
      break;
    case XKB_KEY_ISO_Level3_Shift:
    case XKB_KEY_Mode_switch:
      keepFirst(masks.levelThree);
      break;
    case XKB_KEY_Num_Lock:
      keepFirst(masks.numLock);
      break;
    case XKB_KEY_Scroll_Lock:
      keepFirst(masks.scrollLock);
      break;
    default:
      break;
  }
}

}  // namespace

std::vector<std::uint16_t> ModifierMasks::lockCombinations() const {
  std::vector<std::uint16_t> combinations = {0};
  for (const std::uint16_t lock : {capsLock, numLock, scrollLock}) {
    if (lock == 0) continue;
    const std::size_t count = combinations.size();
    for (std::size_t i = 0; i < count; ++i) {
      combinations.push_back(static_cast<std::uint16_t>(combinations[i] | lock));
    }
  }
  std::sort(combinations.begin(), combinations.end());
  combinations.erase(std::unique(combinations.begin(), combinations.end()), combinations.end());
  return combinations;
}

ModifierMasks readModifierMasks(xcb_connection_t* connection) {
  const xcb_setup_t* setup = xcb_get_setup(connection);
  const xcb_keycode_t first = setup->min_keycode;
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
  const auto modifierCookie = xcb_get_modifier_mapping(connection);
  const auto keyboardCookie = xcb_get_keyboard_mapping(connection, first, count);
  const XcbReply<xcb_get_modifier_mapping_reply_t> modifiers(
      xcb_get_modifier_mapping_reply(connection, modifierCookie, nullptr));
  const XcbReply<xcb_get_keyboard_mapping_reply_t> keyboard(
      xcb_get_keyboard_mapping_reply(connection, keyboardCookie, nullptr));
  ModifierMasks masks;
  if (!modifiers || !keyboard) return masks;
  const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(modifiers.get());
  const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(keyboard.get());
  const std::size_t codesPerModifier = modifiers->keycodes_per_modifier;
  const std::size_t keysymsPerCode = keyboard->keysyms_per_keycode;
  for (std::size_t modifier = kFirstNamelessModifier; modifier < kModifierCount; ++modifier) {
    for (std::size_t i = 0; i < codesPerModifier; ++i) {
      const xcb_keycode_t code = codes[modifier * codesPerModifier + i];
      if (code < first) continue;
      for (std::size_t j = 0; j < keysymsPerCode; ++j) {
        addMeaning(masks, static_cast<std::uint16_t>(1U << modifier),
                   keysyms[std::size_t(code - first) * keysymsPerCode + j]);
      }
    }
  }
  return masks;
}

}  // namespace lexwend::platform
