// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alerts.h"

namespace lexwend::platform::mac {

/// Shows an NSAlert, needs the shared application, and returns when the user has answered. Main thread only.
class MacAlerts : public Alerts {
 public:
  int runModal(const Alert& alert) override;
};

}  // namespace lexwend::platform::mac
