// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alerts.h"

namespace lexwend::platform {

/// A message box, from right to left, above other windows. The application object must exist.
class LinuxAlerts : public Alerts {
 public:
  int runModal(const Alert& alert) override;
};

}  // namespace lexwend::platform
