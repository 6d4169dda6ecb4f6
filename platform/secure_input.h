// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether some program holds secure keyboard entry, as a password field does. On Linux a terminal counts as
/// well. Main thread only.
class SecureInput {
 public:
  virtual ~SecureInput() = default;
  /// False when no field has the keyboard; true when a field does not say what it is. A host does not read
  /// the text of the field. A field may not say whether it hides what is typed: then a host may read its
  /// selection, only to see whether that is a mask, and keeps nothing of it. On Linux the focused application
  /// is asked, with the time limits of Accessibility.
  virtual bool isSecureEventInputEnabled() = 0;
};

/// The service of the installed host.
SecureInput& secureInput();

}  // namespace lexwend::platform
