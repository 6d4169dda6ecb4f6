// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// The values of SMAppServiceStatus.
enum class LoginItemStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

/// Whether the application starts when the user logs in. Main thread only. A call blocks for as long as the
/// system takes to read or write its entry.
class LoginItem {
 public:
  virtual ~LoginItem() = default;
  virtual LoginItemStatus status() = 0;
  /// False when the system refused.
  [[nodiscard]] virtual bool registerItem() = 0;
  /// False when the system refused.
  [[nodiscard]] virtual bool unregisterItem() = 0;
  /// Where the system's entry is this application's and starts another copy of the program, or one that is
  /// gone, makes it start this one. Does nothing where the system follows the application by itself.
  virtual void followProgram() {}
};

/// The service of the installed host, for this application.
LoginItem& loginItem();

}  // namespace lexwend::platform
