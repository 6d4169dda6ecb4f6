// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/secure_input.h"

namespace lexwend::platform {

/// No display has a secure input mode that a client could ask about. A locked screen and a focused field for
/// passwords stand for it, and a terminal, in a window of its own or inside another one: there the copy
/// shortcut stops the running program or types an escape sequence, and no selection can be replaced in place.
class LinuxSecureInput : public SecureInput {
 public:
  struct Needs {
    /// The class of the window that has the keyboard.
    std::function<std::optional<std::string>()> frontWindowClass;
    /// Whether the focused field, in whatever window, is one for passwords or a terminal. Waits for a bounded
    /// time.
    std::function<bool()> focusIsSecure;
    /// Whether the screen is locked, where the display tells.
    std::function<bool()> screenIsLocked = [] { return false; };
  };
  explicit LinuxSecureInput(Needs needs);

  bool isSecureEventInputEnabled() override;

 private:
  Needs needs_;
};

}  // namespace lexwend::platform
