// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tests/scenarios/world.h"

namespace lexwend::scenarios {

/// How an expectation is held against an observation.
enum class Comparison {
  equal,       ///< the same lines
  ends,        ///< the last lines
  has,         ///< one line is the text
  lacks,       ///< no line contains the text
  processEnds  ///< the process dies with the text on standard error
};

struct ActStep {
  Act act;
  Words arguments;
};
struct CheckStep {
  Look look;
  Comparison comparison;
  Words arguments;  ///< of the look
  Words expected;
};
struct Step {
  int line = 0;
  std::string source;  ///< as it stands in the script
  std::variant<ActStep, CheckStep> what;
};
struct Scenario {
  std::string file;
  int line = 0;
  std::string title;
  std::vector<Step> steps;
};

/// What is wrong with a script: "FILE:LINE: REASON".
struct ScriptError : std::runtime_error {
  ScriptError(const std::string& file, int line, const std::string& reason)
      : std::runtime_error(file + ":" + std::to_string(line) + ": " + reason) {}
};

/// The scenarios of one file in order. Throws ScriptError.
std::vector<Scenario> parseScript(const std::string& file, std::string_view text);

/// A key combination such as "F2", "Cmd+Shift+A", "Cmd+," or "#123" (a key code).
struct KeyCombination {
  unsigned keyCode = 0;
  unsigned carbonModifiers = 0;
};
/// Throws ScriptMistake.
KeyCombination parseCombination(std::string_view text);
/// The same text back: modifiers in the order Control, Option, Shift, Cmd.
std::string combinationName(unsigned keyCode, unsigned carbonModifiers);
/// The Carbon bit of "Cmd", "Shift", "Option", "Control". Throws ScriptMistake.
unsigned parseModifier(std::string_view text);
/// A whole number, signed. Throws ScriptMistake.
long long parseNumber(std::string_view text);

}  // namespace lexwend::scenarios
