// SPDX-License-Identifier: MIT
#pragma once

#include "platform/running_applications.h"

namespace lexwend::platform::mac {

/// Asks NSRunningApplication. Main thread only.
class MacRunningApplications : public RunningApplications {
 public:
  std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) override;
  ProcessIdentifier ownProcessIdentifier() override;
};

}  // namespace lexwend::platform::mac
