// SPDX-License-Identifier: MIT
#include "support/settings.h"

#include <limits>

#include "support/fatal.h"

namespace lexwend::Settings {
namespace {

constexpr std::uint32_t kDefaultHotKeyCode = 120;  // F2
constexpr std::uint32_t kDefaultHotKeyModifiers = 0;

std::uint32_t unsignedValue(std::string_view key, std::uint32_t defaultValue) {
  const auto object = d().objectForKey(key);
  if (!object) return defaultValue;
  const auto* integer = std::get_if<std::int64_t>(&*object);
  if (integer == nullptr) return defaultValue;
  if (*integer < 0 || *integer > std::numeric_limits<std::uint32_t>::max()) {
    fatal("a stored hot-key number does not fit into 32 unsigned bits");
  }
  return static_cast<std::uint32_t>(*integer);
}

bool boolValue(std::string_view key, bool defaultValue) {
  const auto object = d().objectForKey(key);
  if (!object) return defaultValue;
  const auto* truth = std::get_if<bool>(&*object);
  return truth != nullptr ? *truth : defaultValue;
}

}  // namespace

platform::UserDefaults& d() {
  return platform::standardUserDefaults();
}

std::uint32_t hotKeyCode() {
  return unsignedValue(kHotKeyCodeKey, kDefaultHotKeyCode);
}

std::uint32_t hotKeyModifiers() {
  return unsignedValue(kHotKeyModifiersKey, kDefaultHotKeyModifiers);
}

bool switchLayoutAfter() {
  return boolValue(kSwitchLayoutAfterKey, true);
}

bool compatMode() {
  return boolValue(kCompatModeKey, false);
}

void setHotKey(std::uint32_t keyCode, std::uint32_t modifiers) {
  platform::UserDefaults& store = d();
  store.setInteger(keyCode, kHotKeyCodeKey);
  store.setInteger(modifiers, kHotKeyModifiersKey);
}

}  // namespace lexwend::Settings
