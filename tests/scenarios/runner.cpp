// SPDX-License-Identifier: MIT
#include "tests/scenarios/runner.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

namespace lexwend::scenarios {
namespace {

/// Code points: near enough to columns for a report.
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string visible(const std::string& text) {
  std::string shown;
  for (const char c : text) {
    if (c == '\n') {
      shown += "\\n";
    } else if (c == '\t') {
      shown += "\\t";
    } else {
      shown += c;
    }
  }
  return shown;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

const std::string* expectedEnd(const Scenario& scenario) {
  for (const auto& step : scenario.steps) {
    const auto* check = std::get_if<CheckStep>(&step.what);
    if (check != nullptr && check->comparison == Comparison::processEnds) return &check->expected[0];
  }
  return nullptr;
}

class Run {
 public:
  Run(const Scenario& scenario, ScenarioWorld& world) : scenario_(scenario), world_(world) {}

  std::string report() {
    runUntilStart();
    while (next_ < scenario_.steps.size() && !broken_) {
      const auto& arguments = std::get<ActStep>(scenario_.steps[next_].what).arguments;
      ++next_;
      // Another start later in the script ends this run of the program: the loop it runs in returns.
      world_.start(arguments, [this] { runUntilStart(); });
    }
    if (!broken_) {
      for (const auto& complaint : world_.complaints()) {
        report_ += scenario_.file + ":" + std::to_string(scenario_.line) + ": " + complaint + "\n";
      }
    }
    return std::move(report_);
  }

 private:
  void runUntilStart() {
    for (; next_ < scenario_.steps.size() && !broken_; ++next_) {
      const Step& step = scenario_.steps[next_];
      const auto* act = std::get_if<ActStep>(&step.what);
      if (act != nullptr && act->act == Act::start) return;
      try {
        if (act != nullptr) {
          world_.act(act->act, act->arguments);
        } else {
          check(step, std::get<CheckStep>(step.what));
        }
      } catch (const ScriptMistake& mistake) {
        report_ += place(step) + mistake.what() + "\n";
        broken_ = true;
      }
    }
  }

  void check(const Step& step, const CheckStep& check) {
    if (check.comparison == Comparison::processEnds) {
      report_ += place(step) + "the process goes on\n";
      return;
    }
    Words actual = world_.look(check.look, check.arguments);
    const Words& expected = check.expected;
    switch (check.comparison) {
      case Comparison::equal:
        if (actual == expected) return;
        break;
      case Comparison::ends:
        if (actual.size() > expected.size()) {
          actual.erase(actual.begin(), actual.end() - static_cast<std::ptrdiff_t>(expected.size()));
        }
        if (actual == expected) return;
        break;
      case Comparison::has:
        if (std::find(actual.begin(), actual.end(), expected[0]) != actual.end()) return;
        break;
      case Comparison::lacks:
        if (std::none_of(actual.begin(), actual.end(),
                         [&](const std::string& line) { return contains(line, expected[0]); })) {
          return;
        }
        break;
      case Comparison::processEnds:
        return;
    }
    report_ += place(step) + step.source + "\n" + sideBySide(expected, actual);
  }

  std::string place(const Step& step) const {
    return scenario_.file + ":" + std::to_string(step.line) + ": ";
  }

  const Scenario& scenario_;
  ScenarioWorld& world_;
  std::size_t next_ = 0;
  bool broken_ = false;
  std::string report_;
};

std::string runHere(const Scenario& scenario, const WorldFactory& makeWorld) {
  const auto world = makeWorld();
  return Run(scenario, *world).report();
}

/// The child's report comes back on its standard error, together with whatever the program says as it dies.
std::string runInChild(const Scenario& scenario, const WorldFactory& makeWorld,
                       const std::string& lastWords) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return "no pipe to a child process\n";
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) return "no child process\n";
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    const std::string report = runHere(scenario, makeWorld);
    std::fputs(report.c_str(), stderr);
    std::exit(0);
  }
  close(ends[1]);
  std::string said;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    said.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  const bool aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
  if (aborted && contains(said, lastWords)) return {};
  return scenario.file + ":" + std::to_string(scenario.line) + ": the process " +
         (aborted ? "stopped with other words" : "did not stop") + "\n" + sideBySide({lastWords}, {said});
}

}  // namespace

std::string runScenario(const Scenario& scenario, const WorldFactory& makeWorld) {
  const std::string* lastWords = expectedEnd(scenario);
  std::string report =
      lastWords != nullptr ? runInChild(scenario, makeWorld, *lastWords) : runHere(scenario, makeWorld);
  if (report.empty()) return report;
  return "scenario \"" + scenario.title + "\"\n" + report;
}

std::string sideBySide(const Words& expected, const Words& actual) {
  const std::string title = "expected";
  std::size_t column = title.size();
  for (const auto& line : expected) column = std::max(column, width(visible(line)));
  const auto row = [&](char mark, const std::string& left, const std::string& right) {
    return std::string("  ") + mark + " " + left + std::string(column - width(left), ' ') + " | " + right +
           "\n";
  };
  std::string table = row(' ', title, "actual");
  for (std::size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
    const std::string left = i < expected.size() ? visible(expected[i]) : "";
    const std::string right = i < actual.size() ? visible(actual[i]) : "";
    const bool same = i < expected.size() && i < actual.size() && left == right;
    table += row(same ? ' ' : '!', left, right);
  }
  return table;
}

}  // namespace lexwend::scenarios
