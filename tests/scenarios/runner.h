// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/scenarios/script.h"
#include "tests/scenarios/world.h"

namespace lexwend::scenarios {

using WorldFactory = std::function<std::unique_ptr<ScenarioWorld>()>;

/// Runs one scenario in a world of its own. Empty when everything was as the script says, else a report: each
/// failed check with the expected and the actual lines side by side, and what the world complains of. A
/// script that asks for something impossible is a report too, with file, line and reason. A scenario that
/// says that the process stops runs in a child process.
std::string runScenario(const Scenario& scenario, const WorldFactory& makeWorld);

/// Two columns of lines; lines that differ are marked with "!".
std::string sideBySide(const Words& expected, const Words& actual);

}  // namespace lexwend::scenarios
