// SPDX-License-Identifier: MIT
#pragma once

#include "platform/secure_input.h"

namespace lexwend::platform::mac {

/// Asks Carbon. Main thread only.
class MacSecureInput : public SecureInput {
 public:
  bool isSecureEventInputEnabled() override;
};

}  // namespace lexwend::platform::mac
