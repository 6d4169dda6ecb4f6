// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/keyboard_devices.h"

#include <algorithm>
#include <span>
#include <string_view>

#include <linux/input-event-codes.h>
#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include "platform/linux/keyboard/modifier_masks.h"
#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// The server gives this name to the keyboard that it plays simulated keys on.
constexpr std::string_view kSimulated = "XTEST";

constexpr std::size_t kShiftRow = 0;
constexpr std::size_t kControlRow = 2;
// Of the keysyms of a key: those that the core protocol knows, two layouts with two levels each.
constexpr std::size_t kLayoutColumns = 4;

std::string_view nameOf(const xcb_input_xi_device_info_t& device) {
  return {xcb_input_xi_device_info_name(&device),
          static_cast<std::size_t>(xcb_input_xi_device_info_name_length(&device))};
}

/// Where the keys of a device come from: the device itself, or for a master the slave that was used last.
KeyboardDevices::Id sourceOfKeys(const xcb_input_xi_device_info_t& device) {
  for (auto it = xcb_input_xi_device_info_classes_iterator(&device); it.rem > 0;
       xcb_input_device_class_next(&it)) {
    if (it.data->type == XCB_INPUT_DEVICE_CLASS_TYPE_KEY) {
      return static_cast<KeyboardDevices::Id>(it.data->sourceid);
    }
  }
  return KeyboardDevices::kNone;
}

/// The modifier map of one keyboard, a row of key codes for each modifier, and the keysyms of each key code.
struct KeyTables {
  std::span<const xcb_keycode_t> modifierMap;
  std::span<const xcb_keysym_t> keysyms;
  std::size_t keysymsPerCode;
  xcb_keycode_t firstCode;

  std::span<const xcb_keycode_t> rows(std::size_t first, std::size_t count) const {
    const std::size_t width = modifierMap.size() / kModifierCount;
    return modifierMap.subspan(first * width, count * width);
  }
  bool types(xcb_keycode_t code, xcb_keysym_t keysym) const {
    return code >= firstCode && keysyms[std::size_t(code - firstCode) * keysymsPerCode] == keysym;
  }
  xcb_keycode_t keyOf(std::span<const xcb_keycode_t> codes, xcb_keysym_t left, xcb_keysym_t right,
                      int usualKey) const {
    for (const xcb_keysym_t keysym : {left, right}) {
      const auto found =
          std::find_if(codes.begin(), codes.end(), [&](xcb_keycode_t code) { return types(code, keysym); });
      if (found != codes.end()) return *found;
    }
    return static_cast<xcb_keycode_t>(usualKey + kXKeyCodeOffset);
  }
  bool typesNothingBut(xcb_keycode_t code, xcb_keysym_t keysym) const {
    // The first two columns are the first layout's without and with Shift, the next two the second's.
    const auto columns = keysyms.subspan(std::size_t(code - firstCode) * keysymsPerCode,
                                         std::min(keysymsPerCode, kLayoutColumns));
    return columns.front() == keysym && std::all_of(columns.begin(), columns.end(), [&](xcb_keysym_t typed) {
             return typed == keysym || typed == XKB_KEY_NoSymbol;
           });
  }
  std::optional<xcb_keycode_t> insertKey() const {
    constexpr xcb_keycode_t kUsual = KEY_INSERT + kXKeyCodeOffset;
    if (keysymsPerCode == 0 || typesNothingBut(kUsual, XKB_KEY_Insert)) return kUsual;
    for (std::size_t i = 0; i < keysyms.size() / keysymsPerCode; ++i) {
      const auto code = static_cast<xcb_keycode_t>(firstCode + i);
      if (typesNothingBut(code, XKB_KEY_Insert)) return code;
    }
    return std::nullopt;
  }
  ShortcutKeys shortcutKeys() const {
    const auto nameless = rows(kFirstNamelessModifier, kModifierCount - kFirstNamelessModifier);
    return {keyOf(rows(kShiftRow, 1), XKB_KEY_Shift_L, XKB_KEY_Shift_R, KEY_LEFTSHIFT),
            keyOf(rows(kControlRow, 1), XKB_KEY_Control_L, XKB_KEY_Control_R, KEY_LEFTCTRL),
            keyOf(nameless, XKB_KEY_Alt_L, XKB_KEY_Alt_R, KEY_LEFTALT),
            keyOf(nameless, XKB_KEY_Super_L, XKB_KEY_Super_R, KEY_LEFTMETA), insertKey()};
  }
};

template <typename T>
std::span<const T> spanOf(const T* values, int count) {
  return {values, static_cast<std::size_t>(count)};
}

}  // namespace

bool KeyboardDevices::isReal(Id device) const {
  return std::find(real.begin(), real.end(), device) != real.end();
}

KeyboardDevices::Id KeyboardDevices::forSimulatedKeys() const {
  if (isReal(lastUsed)) return lastUsed;
  return lastUsed == core && !real.empty() ? real.front() : kNone;
}

KeyboardDevices readKeyboardDevices(const X11Connection& x11) {
  KeyboardDevices devices;
  if (!x11.hasXInput2()) return devices;
  const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
      x11.get(), xcb_input_xi_query_device(x11.get(), XCB_INPUT_DEVICE_ALL), nullptr));
  if (!reply) return devices;
  for (auto it = xcb_input_xi_query_device_infos_iterator(reply.get()); it.rem > 0;
       xcb_input_xi_device_info_next(&it)) {
    const xcb_input_xi_device_info_t& device = *it.data;
    const auto id = static_cast<KeyboardDevices::Id>(device.deviceid);
    // Masters come before their slaves, and the core keyboard before the masters that a user has added.
    if (device.type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD && devices.core == KeyboardDevices::kNone) {
      devices.core = id;
      devices.lastUsed = sourceOfKeys(device);
    } else if (device.type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && device.attachment == devices.core &&
               nameOf(device).find(kSimulated) == std::string_view::npos) {
      devices.real.push_back(id);
    }
  }
  return devices;
}

ShortcutKeys readShortcutKeys(const X11Connection& x11, const KeyboardDevices& devices) {
  xcb_connection_t* c = x11.get();
  const xcb_setup_t* setup = xcb_get_setup(c);
  const xcb_keycode_t first = setup->min_keycode;
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
  KeyTables tables{{}, {}, 0, first};
  if (devices.core == KeyboardDevices::kNone) return tables.shortcutKeys();
  const KeyboardDevices::Id played = devices.forSimulatedKeys();
  const KeyboardDevices::Id device = played != KeyboardDevices::kNone ? played : devices.core;
  const auto modifierCookie = xcb_input_get_device_modifier_mapping(c, device);
  const auto keyCookie = xcb_input_get_device_key_mapping(c, device, first, count);
  const XcbReply<xcb_input_get_device_modifier_mapping_reply_t> modifiers(
      xcb_input_get_device_modifier_mapping_reply(c, modifierCookie, nullptr));
  const XcbReply<xcb_input_get_device_key_mapping_reply_t> keys(
      xcb_input_get_device_key_mapping_reply(c, keyCookie, nullptr));
  if (modifiers && keys) {
    tables.modifierMap = spanOf(xcb_input_get_device_modifier_mapping_keymaps(modifiers.get()),
                                xcb_input_get_device_modifier_mapping_keymaps_length(modifiers.get()));
    tables.keysyms = spanOf(xcb_input_get_device_key_mapping_keysyms(keys.get()),
                            xcb_input_get_device_key_mapping_keysyms_length(keys.get()));
    tables.keysymsPerCode = keys->keysyms_per_keycode;
  }
  return tables.shortcutKeys();
}

}  // namespace lexwend::platform
