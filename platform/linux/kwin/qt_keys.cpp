// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/qt_keys.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <linux/input-event-codes.h>
#include <xkbcommon/xkbcommon.h>

#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// Qt::KeyboardModifier.
constexpr std::uint32_t kQtShift = 0x02000000;
constexpr std::uint32_t kQtControl = 0x04000000;
constexpr std::uint32_t kQtAlt = 0x08000000;
constexpr std::uint32_t kQtMeta = 0x10000000;

struct NamedKey {
  std::uint16_t evdev;
  std::uint32_t qt;  ///< Qt::Key
};
constexpr std::array kNamedKeys = std::to_array<NamedKey>({
    {KEY_ESC, 0x01000000},    {KEY_TAB, 0x01000001},      {KEY_BACKSPACE, 0x01000003},
    {KEY_ENTER, 0x01000004},  {KEY_INSERT, 0x01000006},   {KEY_DELETE, 0x01000007},
    {KEY_HOME, 0x01000010},   {KEY_END, 0x01000011},      {KEY_LEFT, 0x01000012},
    {KEY_UP, 0x01000013},     {KEY_RIGHT, 0x01000014},    {KEY_DOWN, 0x01000015},
    {KEY_PAGEUP, 0x01000016}, {KEY_PAGEDOWN, 0x01000017}, {KEY_COMPOSE, 0x01000055},
    {KEY_F1, 0x01000030},     {KEY_F2, 0x01000031},       {KEY_F3, 0x01000032},
    {KEY_F4, 0x01000033},     {KEY_F5, 0x01000034},       {KEY_F6, 0x01000035},
    {KEY_F7, 0x01000036},     {KEY_F8, 0x01000037},       {KEY_F9, 0x01000038},
    {KEY_F10, 0x01000039},    {KEY_F11, 0x0100003a},      {KEY_F12, 0x0100003b},
    {KEY_F13, 0x0100003c},    {KEY_F14, 0x0100003d},      {KEY_F15, 0x0100003e},
    {KEY_F16, 0x0100003f},    {KEY_F17, 0x01000040},      {KEY_F18, 0x01000041},
    {KEY_F19, 0x01000042},    {KEY_F20, 0x01000043},      {KEY_SPACE, 0x20},
});

std::uint32_t qtModifiers(Modifiers modifiers) {
  constexpr std::pair<Modifiers, std::uint32_t> kBits[] = {
      {kCmdKey, kQtControl}, {kShiftKey, kQtShift}, {kOptionKey, kQtAlt}, {kControlKey, kQtMeta}};
  std::uint32_t bits = 0;
  for (const auto& [modifier, bit] : kBits) {
    if (overlap(modifiers, modifier)) bits |= bit;
  }
  return bits;
}

/// The sign that the key types at that level, as a capital; 0 for none.
std::uint32_t signAt(xkb_keymap& keymap, xkb_keycode_t key, xkb_layout_index_t group,
                     xkb_level_index_t level) {
  const xkb_keysym_t* symbols = nullptr;
  if (xkb_keymap_key_get_syms_by_level(&keymap, key, group, level, &symbols) != 1) return 0;
  return xkb_keysym_to_utf32(xkb_keysym_to_upper(symbols[0]));
}

}  // namespace

std::vector<std::int32_t> qtCombinations(KeyCode keyCode, Modifiers modifiers, xkb_keymap* keymap) {
  const auto key = evdevFromMacKeyCode(keyCode);
  if (!key) return {};
  const std::uint32_t bits = qtModifiers(modifiers);
  const auto* named = std::find_if(kNamedKeys.begin(), kNamedKeys.end(),
                                   [&](const NamedKey& candidate) { return candidate.evdev == *key; });
  if (named != kNamedKeys.end()) return {static_cast<std::int32_t>(named->qt | bits)};
  std::vector<std::int32_t> combinations;
  if (keymap == nullptr) return combinations;
  const auto add = [&combinations](std::uint32_t combination) {
    const auto number = static_cast<std::int32_t>(combination);
    if (std::find(combinations.begin(), combinations.end(), number) == combinations.end()) {
      combinations.push_back(number);
    }
  };
  for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts(keymap); ++group) {
    const auto code = static_cast<xkb_keycode_t>(*key + kXKeyCodeOffset);
    const std::uint32_t plain = signAt(*keymap, code, group, 0);
    if (plain != 0) add(plain | bits);
    // A sign that is typed with Shift is told without it, a letter with it.
    const std::uint32_t shifted = signAt(*keymap, code, group, 1);
    if ((bits & kQtShift) != 0 && shifted != 0 && shifted != plain) add(shifted | (bits & ~kQtShift));
  }
  return combinations;
}

}  // namespace lexwend::platform
