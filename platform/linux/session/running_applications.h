// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/running_applications.h"

namespace lexwend::platform {

/// X11 keeps no list of applications by identifier, so a process makes itself known: it owns the identifier
/// as a name on the session bus, or where there is no bus holds a lock on a file of that name in
/// $XDG_RUNTIME_DIR. Name and lock last until the process ends. With neither bus nor folder only this process
/// is known.
class LinuxRunningApplications : public RunningApplications {
 public:
  std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) override;
  ProcessIdentifier ownProcessIdentifier() override;

 private:
  std::optional<ProcessIdentifier> holderOnBus(const std::string& identifier);
  std::optional<ProcessIdentifier> holderOfLock(const std::string& identifier);

  std::map<std::string, int, std::less<>> locks_;  ///< open files whose locks this process holds
};

}  // namespace lexwend::platform
