// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "platform/diagnosis.h"

namespace lexwend {

/// One step of the trial.
struct TrialStep {
  std::string name;  ///< for tools
  bool done = false;
  std::chrono::milliseconds took{0};
  platform::Sentence said;
};

/// Fixes a text of its own in a field of its own by each path, and tells what happened. The field belongs to
/// a second process, as the agent's fields do: this program, started as "lexwend-doctor --field". Needs an
/// installed host with a display. Main thread only. Blocks for half a minute at most. The clipboard comes
/// back.
std::vector<TrialStep> tryFixes();

/// The second process: shows the field and prints "ready" and then each text on a line of its own, until
/// standard input ends. False where this host has no field.
bool showTrialField();

}  // namespace lexwend
