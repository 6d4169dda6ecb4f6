// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether some program holds secure keyboard entry, as a password field does. Main thread only.
class SecureInput {
 public:
  virtual ~SecureInput() = default;
  /// Decided without reading any text of the focused field. A host may ask another application and then
  /// bounds the wait; when it cannot find out, the answer is false.
  virtual bool isSecureEventInputEnabled() = 0;
};

/// The service of the installed host.
SecureInput& secureInput();

}  // namespace lexwend::platform
