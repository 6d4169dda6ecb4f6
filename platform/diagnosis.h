// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexwend::platform {

/// One fact in both languages of the program, for a person.
struct Sentence {
  std::string english;
  std::string hebrew;
};

/// What holds in this session and no other service tells. The values at the start are those of a session in
/// which nothing is wrong.
struct SessionFacts {
  std::string desktop;  ///< as the desktop names itself; may be empty
  std::string display;  ///< the name of the display
  bool displayAnswers = true;
  std::vector<std::string> missingExtensions;  ///< what a fix needs and the display does not have
  std::optional<Sentence> limit;   ///< what does not work in a session of this type; nothing when all does
  std::optional<Sentence> wayOut;  ///< what to do about it; nothing where only another session helps
  bool sessionBus = true;
  bool accessibilityBus = true;
  bool tray = true;                          ///< something shows the icons of programs
  bool hebrewFont = true;                    ///< some font has Hebrew letters
  std::optional<std::int64_t> agentProcess;  ///< the agent of this user that runs now
  std::string settingsPath;                  ///< empty when there is no place for them
  std::string autostartPath;                 ///< the entry that starts the agent at login
  bool autostartIsOn = false;
  std::string autostartProgram;  ///< what the entry would start; empty when it names nothing
  bool autostartProgramIsThere = true;
};

/// Looks at the session for a person who asks why a fix does not work. Main thread only. The program that
/// asks is not the agent, and asking does not make it known as one.
class Diagnosis {
 public:
  virtual ~Diagnosis() = default;
  /// Blocks for as long as the parts of the desktop take to answer: five seconds at most.
  virtual SessionFacts facts() { return {}; }
  /// Waits that long and handles what arrives for the services meanwhile.
  virtual void waitFor(std::chrono::milliseconds) {}
  /// Opens a window with a text field that holds the text, all of it selected. Calls `ready` when the field
  /// has the keyboard, and `changed` with its new text after each change. Blocks until standard input ends.
  /// False where the host has no such field.
  virtual bool runTrialField(std::string_view, const std::function<void()>&,
                             const std::function<void(std::string_view)>&) {
    return false;
  }
};

/// The service of the installed host.
Diagnosis& diagnosis();

}  // namespace lexwend::platform
