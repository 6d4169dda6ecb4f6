// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/doctor_checks.h"
#include "tools/doctor_trial.h"

namespace lexwend {

struct DoctorReport {
  std::vector<Check> checks;
  std::vector<TrialStep> trial;  ///< empty when none was asked for
};

struct TextStyle {
  bool hebrew = false;
  bool colour = false;
};

/// True without findings and with every step of the trial done.
bool allIsWell(const DoctorReport& report);

/// For a person: a line for each check, and what to do below it. Each Hebrew line begins with a Hebrew word,
/// which tells a terminal its direction.
std::string asText(const DoctorReport& report, std::string_view version, TextStyle style);

/// For tools: one JSON object (RFC 8259) in English. What it says is in the manual page.
std::string asJson(const DoctorReport& report, std::string_view version);

}  // namespace lexwend
