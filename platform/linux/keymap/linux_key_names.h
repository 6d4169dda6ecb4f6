// SPDX-License-Identifier: MIT
#pragma once

#include "platform/key_names.h"

namespace lexwend::platform {

/// As they are printed on keyboards: Super, Ctrl, Alt and Shift, joined by a plus sign.
inline constexpr KeyNames kLinuxKeyNames = {
    .modifiers = {{{kControlKey, "Super"}, {kCmdKey, "Ctrl"}, {kOptionKey, "Alt"}, {kShiftKey, "Shift"}}},
    .joint = "+",
    .returnKey = "Enter",
    .tab = "Tab",
    .space = "Space",
    .backspace = "Backspace",
    .functionKeysNeedGlobe = false};

}  // namespace lexwend::platform
