// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace lexwend {

struct FunctionKey {
  std::uint32_t keyCode;
  std::string_view name;
};

/// The function keys F1 to F19 with their macOS virtual key codes (Carbon, Events.h), which follow no order
/// of their own.
inline constexpr std::array<FunctionKey, 19> kFunctionKeys = {{
    {122, "F1"},  {120, "F2"},  {99, "F3"},   {118, "F4"},  {96, "F5"},   {97, "F6"},   {98, "F7"},
    {100, "F8"},  {101, "F9"},  {109, "F10"}, {103, "F11"}, {111, "F12"}, {105, "F13"}, {107, "F14"},
    {113, "F15"}, {106, "F16"}, {64, "F17"},  {79, "F18"},  {80, "F19"},
}};

/// "F1" to "F19"; nothing for any other key.
constexpr std::optional<std::string_view> functionKeyName(std::uint32_t keyCode) {
  for (const FunctionKey& key : kFunctionKeys) {
    if (key.keyCode == keyCode) return key.name;
  }
  return std::nullopt;
}

}  // namespace lexwend
