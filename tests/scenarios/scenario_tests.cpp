// SPDX-License-Identifier: MIT
#include "tests/scenarios/scenario_tests.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <utility>

#include <gtest/gtest.h>

#include "tests/scenarios/runner.h"
#include "tests/scenarios/script.h"

namespace lexwend::scenarios {
namespace {

class ScenarioTest : public testing::Test {
 public:
  ScenarioTest(Scenario scenario, WorldFactory makeWorld, std::string reason)
      : scenario_(std::move(scenario)), makeWorld_(std::move(makeWorld)), reason_(std::move(reason)) {}
  void TestBody() override {
    const std::string report = runScenario(scenario_, makeWorld_);
    if (reason_.empty()) {
      if (!report.empty()) ADD_FAILURE_AT(scenario_.file.c_str(), scenario_.line) << report;
    } else if (report.empty()) {
      ADD_FAILURE_AT(scenario_.file.c_str(), scenario_.line)
          << "expected to fail because \"" << reason_ << "\", but it holds here";
    } else {
      std::cout << "failed as expected: " << reason_ << '\n';
    }
  }

 private:
  Scenario scenario_;
  WorldFactory makeWorld_;
  std::string reason_;  ///< why it must fail; empty: it must hold
};

/// Letters and digits stay, anything else becomes a low line: the names that filters can name.
std::string testName(const std::string& title) {
  std::string name;
  for (const char c : title) {
    const bool kept = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (kept || name.empty() || name.back() != '_') name += kept ? c : '_';
  }
  return name;
}

std::vector<Scenario> scenariosOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error(path.string() + ": cannot be read");
  const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  return parseScript(path.filename().string(), text);
}

void registerScenario(const Scenario& scenario, const WorldFactory& makeWorld, const std::string& reason) {
  testing::RegisterTest(std::filesystem::path(scenario.file).stem().string().c_str(),
                        testName(scenario.title).c_str(), nullptr, nullptr, scenario.file.c_str(),
                        scenario.line, [scenario, makeWorld, reason]() -> testing::Test* {
                          return new ScenarioTest(scenario, makeWorld, reason);
                        });
}

}  // namespace

int runScenarioTests(int argc, char** argv, const WorldFactory& makeWorld,
                     const std::vector<ExpectedFailure>& expectedFailures) {
  testing::InitGoogleTest(&argc, argv);
  if (argc < 2) {
    std::cerr << "usage: " << argv[0] << " FILE.scenario...\n";
    return 2;
  }
  try {
    std::vector<ExpectedFailure> unknown = expectedFailures;
    for (int i = 1; i < argc; ++i) {
      for (const auto& scenario : scenariosOf(argv[i])) {
        const auto found = std::find_if(unknown.begin(), unknown.end(), [&](const ExpectedFailure& each) {
          return each.file == scenario.file && each.title == scenario.title;
        });
        registerScenario(scenario, makeWorld, found == unknown.end() ? std::string() : found->reason);
        if (found != unknown.end()) unknown.erase(found);
      }
    }
    for (const ExpectedFailure& each : unknown) {
      std::cerr << each.file << ": no scenario \"" << each.title << "\" that is expected to fail\n";
    }
    if (!unknown.empty()) return 2;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
  return RUN_ALL_TESTS();
}

}  // namespace lexwend::scenarios
