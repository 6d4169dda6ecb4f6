// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/running_applications.h"

namespace lexwend::platform {

/// X11 keeps no list of applications by identifier, so a process makes itself known by a lock on a file of
/// that name. The lock lasts until the process ends, however it ends. It asks no bus, so no bus can hold it
/// up. The file is in $XDG_RUNTIME_DIR, or in "lexwend-UID" under /tmp where that is not set or not private
/// to the user. A folder of that name that belongs to somebody else is not used; then only this process is
/// known.
class LinuxRunningApplications : public RunningApplications {
 public:
  explicit LinuxRunningApplications(std::string sharedFolder = "/tmp");
  std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) override;
  ProcessIdentifier ownProcessIdentifier() override;
  /// The other process that is known by that identifier; nothing when there is none. Does not make this
  /// process known.
  std::optional<ProcessIdentifier> holderOfLock(std::string_view identifier) const;
  /// Whether this process is known by that identifier.
  bool holdsLock(std::string_view identifier) const { return locks_.count(identifier) != 0; }

 private:
  std::optional<ProcessIdentifier> holdLock(const std::string& identifier);
  /// Empty when there is no folder that would be safe.
  std::string lockFolder() const;

  std::string sharedFolder_;
  std::map<std::string, int, std::less<>> locks_;  ///< open files whose locks this process holds
};

}  // namespace lexwend::platform
