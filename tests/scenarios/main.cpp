// SPDX-License-Identifier: MIT
// Every scenario in the in-memory world.
#include <memory>

#include "tests/scenarios/fake_world.h"
#include "tests/scenarios/scenario_tests.h"

int main(int argc, char** argv) {
  using namespace lexwend::scenarios;
  return runScenarioTests(argc, argv, [] { return std::make_unique<FakeWorld>(); });
}
