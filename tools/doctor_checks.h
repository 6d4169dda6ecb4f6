// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/diagnosis.h"

namespace lexwend {

/// What a check says: all is well, something worth knowing, or a reason why a fix does not work.
enum class CheckState { good, note, finding };

/// One question that the doctor asks, with its answer. It holds nothing of the user's text.
struct Check {
  std::string name;  ///< for tools; stays the same in every version
  CheckState state = CheckState::good;
  platform::Sentence found;
  platform::Sentence advice;  ///< what to do about it; empty where there is nothing to do
};

struct CheckOptions {
  /// The user had time to put the keyboard where a fix fails, so a field that refuses fixes is a finding.
  bool focusIsMeant = false;
};

/// Asks the system everything, in the order in which a person should read it. Needs an installed host. Main
/// thread only. Blocks for ten seconds at most. Presses no key and changes nothing: to see whether the hot
/// key is free it is registered for a moment.
std::vector<Check> examine(const CheckOptions& options);

bool hasFindings(const std::vector<Check>& checks);

}  // namespace lexwend
