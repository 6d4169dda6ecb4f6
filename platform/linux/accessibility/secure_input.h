// SPDX-License-Identifier: MIT
#pragma once

#include "platform/secure_input.h"

namespace lexwend::platform {

/// What can tell about the element that has the keyboard. Main thread only.
class FocusedRole {
 public:
  virtual ~FocusedRole() = default;
  /// True when it is a field for passwords, and when it was found but does not tell what it is; false when no
  /// field is found. Does not ask the field for its text; may read the PRIMARY selection, which is the mask
  /// in a field that hides its text. Waits for a bounded time.
  virtual bool focusIsPasswordField() = 0;
};

/// An X server has no secure input mode that a client could ask about: a focused password field stands for
/// it.
class LinuxSecureInput : public SecureInput {
 public:
  /// The role may be null and then no field counts as one for passwords. It is not owned and must live as
  /// long as this.
  explicit LinuxSecureInput(FocusedRole* focusedRole) : focusedRole_(focusedRole) {}

  bool isSecureEventInputEnabled() override {
    return focusedRole_ != nullptr && focusedRole_->focusIsPasswordField();
  }

 private:
  FocusedRole* focusedRole_;
};

}  // namespace lexwend::platform
