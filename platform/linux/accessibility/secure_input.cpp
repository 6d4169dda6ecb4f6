// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/secure_input.h"

#include <utility>

#include "platform/linux/session/window_classes.h"

namespace lexwend::platform {

LinuxSecureInput::LinuxSecureInput(Needs needs) : needs_(std::move(needs)) {}

bool LinuxSecureInput::isSecureEventInputEnabled() {
  const auto windowClass = needs_.frontWindowClass();
  if (windowClass && (isTerminalClass(*windowClass) || isPasswordPromptClass(*windowClass))) return true;
  return needs_.focusIsSecure() || needs_.screenIsLocked();
}

}  // namespace lexwend::platform
