// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether some program holds secure keyboard entry, as a password field does. On Linux a terminal counts as
/// well. Main thread only.
class SecureInput {
 public:
  virtual ~SecureInput() = default;
  /// True when a program holds secure keyboard entry, and when the focused field does not report what it is.
  /// False when no field has the keyboard. A host never reads the text of the field. Where a field does not
  /// report whether it hides what is typed, a host may read its selection to see whether that is a mask, and
  /// keeps nothing of it. On Linux the call asks the focused application and has the deadlines of
  /// Accessibility.
  virtual bool isSecureEventInputEnabled() = 0;
};

/// The service of the installed host.
SecureInput& secureInput();

}  // namespace lexwend::platform
