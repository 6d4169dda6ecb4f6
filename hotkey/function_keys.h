// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "platform/keys.h"

namespace lexwend {

struct FunctionKey {
  platform::KeyCode keyCode;
  std::string_view name;
};

inline constexpr std::array<FunctionKey, 19> kFunctionKeys = {{
    {platform::kKeyF1, "F1"},   {platform::kKeyF2, "F2"},   {platform::kKeyF3, "F3"},
    {platform::kKeyF4, "F4"},   {platform::kKeyF5, "F5"},   {platform::kKeyF6, "F6"},
    {platform::kKeyF7, "F7"},   {platform::kKeyF8, "F8"},   {platform::kKeyF9, "F9"},
    {platform::kKeyF10, "F10"}, {platform::kKeyF11, "F11"}, {platform::kKeyF12, "F12"},
    {platform::kKeyF13, "F13"}, {platform::kKeyF14, "F14"}, {platform::kKeyF15, "F15"},
    {platform::kKeyF16, "F16"}, {platform::kKeyF17, "F17"}, {platform::kKeyF18, "F18"},
    {platform::kKeyF19, "F19"},
}};

/// "F1" to "F19"; nothing for any other key.
constexpr std::optional<std::string_view> functionKeyName(platform::KeyCode keyCode) {
  for (const FunctionKey& key : kFunctionKeys) {
    if (key.keyCode == keyCode) return key.name;
  }
  return std::nullopt;
}

}  // namespace lexwend
