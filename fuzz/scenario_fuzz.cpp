// SPDX-License-Identifier: MIT
// A scenario script of any bytes. What is no script is refused with its file and line; what is one runs, on
// the whole agent and the host in memory, to a report or to none.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tests/scenarios/fake_world.h"
#include "tests/scenarios/runner.h"
#include "tests/scenarios/script.h"

namespace {

using namespace lexwend::scenarios;

/// One in which the process ends would need a process of its own.
bool endsTheProcess(const Scenario& scenario) {
  for (const Step& step : scenario.steps) {
    const auto* check = std::get_if<CheckStep>(&step.what);
    if (check != nullptr && check->comparison == Comparison::processEnds) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<Scenario> scenarios;
  try {
    scenarios = parseScript("script", {reinterpret_cast<const char*>(data), size});
  } catch (const ScriptError& error) {
    if (std::string_view(error.what()).rfind("script:", 0) != 0) std::abort();
    return 0;
  }
  for (const Scenario& scenario : scenarios) {
    if (!endsTheProcess(scenario)) runScenario(scenario, [] { return std::make_unique<FakeWorld>(); });
  }
  return 0;
}
