// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keys.h"

namespace lexwend::platform {

/// The shortcut that a key event belongs to. Command with C is played as Control+Insert, and Command with V
/// as Shift+Insert. The places of the letters depend on the layout, and with only a Hebrew layout most
/// applications know neither Control+C nor Control+V.
enum class Shortcut { none, copy, paste };
Shortcut shortcutOf(KeyCode keyCode, EventFlags flags);

}  // namespace lexwend::platform
