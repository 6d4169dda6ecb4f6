// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace lexwend::platform {

struct Alert {
  std::string messageText;           ///< UTF-8
  std::string informativeText;       ///< UTF-8
  std::vector<std::string> buttons;  ///< the first is the default; at least one
};
/// The response of the first button. The response of each further button is one higher.
inline constexpr int kAlertFirstButtonReturn = 1000;

/// Modal alerts. Main thread only.
class Alerts {
 public:
  virtual ~Alerts() = default;
  /// Shows the alert and blocks until the user answers, without a time limit. Timers, deferred work and
  /// observers run meanwhile. Closing the window is the response of the last button.
  virtual int runModal(const Alert& alert) = 0;
};

/// The service of the installed host.
Alerts& alerts();

}  // namespace lexwend::platform
