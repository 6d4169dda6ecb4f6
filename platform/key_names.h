// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

#include "platform/keys.h"

namespace lexwend::platform {

/// How the keys of a combination are called and written, in UTF-8. The defaults are those of a Mac.
struct KeyNames {
  struct Modifier {
    Modifiers bit;
    std::string_view name;
  };
  /// In the order in which they are written.
  std::array<Modifier, 4> modifiers = {
      {{kControlKey, "⌃"}, {kOptionKey, "⌥"}, {kShiftKey, "⇧"}, {kCmdKey, "⌘"}}};
  std::string_view joint;  ///< stands between two names
  std::string_view returnKey = "↩";
  std::string_view tab = "⇥";
  std::string_view space = " ";
  std::string_view backspace = "⌫";
  bool functionKeysNeedGlobe = true;  ///< F1 to F12 alone do something else on many keyboards

  constexpr std::string_view of(Modifiers bit) const {
    for (const Modifier& modifier : modifiers) {
      if (modifier.bit == bit) return modifier.name;
    }
    return {};
  }
};
inline constexpr KeyNames kMacKeyNames;

}  // namespace lexwend::platform
