// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether some program holds secure keyboard entry, as a password field does. On Linux a terminal counts as
/// well. Main thread only.
class SecureInput {
 public:
  virtual ~SecureInput() = default;
  /// Decided without asking the focused field for its text. Where a field does not tell that it hides what is
  /// typed, a host may look at what the field itself hands out as its selection, only to see whether that is
  /// a mask, and keeps nothing of it. A host may ask another application and then bounds the wait. When it
  /// finds no field the answer is false; for a field that does not tell what it is the answer is true.
  virtual bool isSecureEventInputEnabled() = 0;
};

/// The service of the installed host.
SecureInput& secureInput();

}  // namespace lexwend::platform
