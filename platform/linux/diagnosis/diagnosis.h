// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/diagnosis.h"
#include "platform/linux/display/x11_connection.h"
#include "platform/linux/session/session_notice.h"

namespace lexwend::platform {

class LinuxDiagnosis : public Diagnosis {
 public:
  /// What this service needs of its host.
  struct Needs {
    std::function<std::shared_ptr<X11Connection>()> x11;  ///< null without a display
    std::function<bool()> compositorServes;  ///< a Wayland compositor does what the display would
    std::function<bool()> grantIsMissing;    ///< it would, if an entry asked for this program
    std::function<const SessionLimit*()>
        hotKeyLimit;  ///< why no press of the hot key can come; null when one can
    std::function<bool()> accessibilityIsConnected;             ///< begins to connect when first asked
    std::function<std::optional<std::int64_t>()> runningAgent;  ///< of this user
  };

  explicit LinuxDiagnosis(Needs needs) : needs_(std::move(needs)) {}

  SessionFacts facts() override;
  void waitFor(std::chrono::milliseconds time) override;
  bool runTrialField(std::string_view text, const std::function<void()>& ready,
                     const std::function<void(std::string_view)>& changed) override;

 private:
  Needs needs_;
};

}  // namespace lexwend::platform
