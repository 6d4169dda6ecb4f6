// SPDX-License-Identifier: MIT
// Every scenario on the macOS host.
#include <memory>

#include "tests/mac/mac_world.h"
#include "tests/scenarios/scenario_tests.h"

int main(int argc, char** argv) {
  using namespace lexwend::scenarios;
  return runScenarioTests(argc, argv, [] { return std::make_unique<MacWorld>(); },
                          {{"clipboard_path.scenario", "A terminal gets no key and its text stays",
                            "on macOS Command+C and Command+V mean copy and paste in a terminal too, so the "
                            "host sends them there"}});
}
