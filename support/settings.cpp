// SPDX-License-Identifier: MIT
#include "support/settings.h"

#include <limits>

#include "support/fatal.h"

namespace lexwend::Settings {
namespace {

template <platform::KeyValue T>
T keyValue(std::string_view key, T defaultValue) {
  const auto object = d().objectForKey(key).value_or(platform::OtherDefaultsValue{});
  const auto* integer = std::get_if<std::int64_t>(&object);
  if (integer == nullptr) return defaultValue;
  if (*integer < 0 || *integer > std::numeric_limits<std::uint32_t>::max()) {
    fatal("a stored hot-key number does not fit into 32 unsigned bits");
  }
  return T{static_cast<std::uint32_t>(*integer)};
}

bool boolValue(std::string_view key, bool defaultValue) {
  const auto object = d().objectForKey(key).value_or(platform::OtherDefaultsValue{});
  const auto* truth = std::get_if<bool>(&object);
  return truth != nullptr ? *truth : defaultValue;
}

}  // namespace

platform::UserDefaults& d() {
  return platform::standardUserDefaults();
}

platform::KeyCode hotKeyCode() {
  return keyValue(kHotKeyCodeKey, platform::kKeyF2);
}

platform::Modifiers hotKeyModifiers() {
  return keyValue(kHotKeyModifiersKey, platform::kNoModifiers);
}

bool switchLayoutAfter() {
  return boolValue(kSwitchLayoutAfterKey, true);
}

bool compatMode() {
  return boolValue(kCompatModeKey, false);
}

void setHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers) {
  platform::UserDefaults& store = d();
  store.setInteger(number(keyCode), kHotKeyCodeKey);
  store.setInteger(number(modifiers), kHotKeyModifiersKey);
}

}  // namespace lexwend::Settings
