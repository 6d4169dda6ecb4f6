// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace lexwend::platform {

using ProcessIdentifier = std::int64_t;

/// The programs of this user's session. Main thread only. No call blocks.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;
  /// Processes with that bundle identifier (UTF-8), in the system's order. This process may be among them.
  /// Where the system keeps no such list, the call also registers this process under the identifier.
  virtual std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) = 0;
  virtual ProcessIdentifier ownProcessIdentifier() = 0;
};

/// The service of the installed host.
RunningApplications& runningApplications();

}  // namespace lexwend::platform
