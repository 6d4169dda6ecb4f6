// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tests/scenarios/runner.h"

namespace lexwend::scenarios {

/// A scenario that cannot hold in a world, and why.
struct LeftOut {
  std::string file;  ///< without its folder
  std::string title;
  std::string reason;
};

/// Runs every scenario of the files named on the command line as a test of its own; the exit status of the
/// program. One that is left out is run all the same: it fails when it holds, else it is shown as skipped
/// with its reason. A title to leave out that no file has ends the program.
int runScenarioTests(int argc, char** argv, const WorldFactory& makeWorld,
                     const std::vector<LeftOut>& leftOut = {});

}  // namespace lexwend::scenarios
