// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/shortcuts.h"

namespace lexwend::platform {

Shortcut shortcutOf(KeyCode keyCode, EventFlags flags) {
  if (flags != kEventFlagCommand) return Shortcut::none;
  return keyCode == kKeyC ? Shortcut::copy : keyCode == kKeyV ? Shortcut::paste : Shortcut::none;
}

}  // namespace lexwend::platform
