// SPDX-License-Identifier: MIT
#include "tools/doctor_report.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace lexwend {
namespace {

using platform::Sentence;

struct Label {
  std::string_view tool;
  Sentence person;
  std::string_view colour;
};

const Label& labelOf(CheckState state) {
  static const Label kGood{"good", {"ok     ", "תקין: "}, "\033[32m"};
  static const Label kNote{"note", {"note   ", "לידיעה: "}, "\033[33m"};
  static const Label kFinding{"finding", {"PROBLEM", "תקלה: "}, "\033[31m"};
  switch (state) {
    case CheckState::good:
      return kGood;
    case CheckState::note:
      return kNote;
    case CheckState::finding:
      return kFinding;
  }
  return kFinding;
}

const std::string& in(const Sentence& sentence, bool hebrew) {
  return hebrew ? sentence.hebrew : sentence.english;
}

std::string line(CheckState state, const Sentence& said, TextStyle style) {
  const Label& label = labelOf(state);
  std::string text = style.colour ? std::string(label.colour) : "";
  text += in(label.person, style.hebrew);
  if (style.colour) text += "\033[0m";
  return text + (style.hebrew ? "" : "  ") + in(said, style.hebrew) + '\n';
}

std::string jsonString(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      result += {'\\', byte};
    } else if (static_cast<unsigned char>(byte) < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned char>(byte));
      result += escape.data();
    } else {
      result += byte;
    }
  }
  return result + '"';
}

}  // namespace

bool allIsWell(const DoctorReport& report) {
  return !hasFindings(report.checks) && std::all_of(report.trial.begin(), report.trial.end(),
                                                    [](const TrialStep& step) { return step.done; });
}

std::string asText(const DoctorReport& report, std::string_view version, TextStyle style) {
  std::string text = style.hebrew ? "בדיקה של Lexwend " : "Lexwend ";
  text += std::string(version) + "\n";
  for (const Check& check : report.checks) {
    text += line(check.state, check.found, style);
    const std::string& advice = in(check.advice, style.hebrew);
    if (!advice.empty()) text += (style.hebrew ? "    מה עושים: " : "           -> ") + advice + '\n';
  }
  if (!report.trial.empty()) {
    text += style.hebrew ? "\nניסיון בשדה של הבדיקה\n" : "\nTrial in a field of its own\n";
  }
  for (const TrialStep& step : report.trial) {
    Sentence said{step.name + ": " + step.said.english, step.said.hebrew + " (" + step.name + ")"};
    if (step.done) {
      said.english += " in " + std::to_string(step.took.count()) + " ms";
      said.hebrew += " בתוך " + std::to_string(step.took.count()) + " אלפיות שנייה";
    }
    text += line(step.done ? CheckState::good : CheckState::finding, said, style);
  }
  return text;
}

std::string asJson(const DoctorReport& report, std::string_view version) {
  std::string text = "{\"version\": " + jsonString(version) +
                     ", \"good\": " + (allIsWell(report) ? "true" : "false") + ", \"checks\": [";
  for (std::size_t i = 0; i < report.checks.size(); ++i) {
    const Check& check = report.checks[i];
    text += (i == 0 ? "\n" : ",\n");
    text += "  {\"name\": " + jsonString(check.name) +
            ", \"state\": " + jsonString(labelOf(check.state).tool) +
            ", \"found\": " + jsonString(check.found.english) +
            ", \"advice\": " + jsonString(check.advice.english) + "}";
  }
  text += "]";
  if (!report.trial.empty()) {
    text += ", \"trial\": [";
    for (std::size_t i = 0; i < report.trial.size(); ++i) {
      const TrialStep& step = report.trial[i];
      text += (i == 0 ? "\n" : ",\n");
      text += "  {\"name\": " + jsonString(step.name) + ", \"done\": " + (step.done ? "true" : "false") +
              ", \"milliseconds\": " + std::to_string(step.took.count()) +
              ", \"said\": " + jsonString(step.said.english) + "}";
    }
    text += "]";
  }
  return text + "}\n";
}

}  // namespace lexwend
