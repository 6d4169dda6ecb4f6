// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lexwend::scenarios {

/// Everything a scenario can do to the world: the words of words.inc.
enum class Act {
#define ACT(name, words, least, most) name,
#include "tests/scenarios/words.inc"
};

/// Everything a scenario can look at. Each observation is a list of lines.
enum class Look {
#define LOOK(name) name,
#include "tests/scenarios/words.inc"
};

/// A script asks for something that does not exist or makes no sense: never a result of the program under
/// test.
struct ScriptMistake : std::runtime_error {
  using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string>;

/// A system in which the whole program runs while a script acts on it. One object for one scenario.
class ScenarioWorld {
 public:
  virtual ~ScenarioWorld() = default;
  /// Every act but Act::start. Throws ScriptMistake.
  virtual void act(Act act, const Words& arguments) = 0;
  /// Runs the program's entry with these arguments (its path not included). `whileRunning` is called exactly
  /// once: in its event loop, or after the entry returned when it never had one.
  virtual void start(const Words& arguments, const std::function<void()>& whileRunning) = 0;
  virtual Words look(Look look, const Words& arguments) = 0;
  /// What was prepared and never happened, and what was impossible. Called once, at the end.
  virtual Words complaints() = 0;
};

}  // namespace lexwend::scenarios
