// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tests/scenarios/runner.h"

namespace lexwend::scenarios {

/// A scenario that cannot hold in a world, and why.
struct ExpectedFailure {
  std::string file;  ///< without its folder
  std::string title;
  std::string reason;
};

/// Runs every scenario of the files named on the command line as a test of its own; the exit status of the
/// program. One that is expected to fail is run as well: its test fails when it holds, and else prints the
/// reason. An expected title that no file has ends the program.
int runScenarioTests(int argc, char** argv, const WorldFactory& makeWorld,
                     const std::vector<ExpectedFailure>& expectedFailures = {});

}  // namespace lexwend::scenarios
