// SPDX-License-Identifier: MIT
#include "platform/fake/fake_host.h"

#include <algorithm>
#include <utility>

namespace lexwend::platform {
namespace {

constexpr std::size_t kTimestampLength = 23;  // "2024-03-05 14:07:09.042"

}  // namespace

FakeHost::FakeHost()
    : pasteboard_(std::make_shared<FakePasteboard>(system_)),
      apps_(system_, *pasteboard_),
      inputSources_(system_),
      accessibility_(system_, apps_),
      secureInput_(system_, apps_),
      keyEvents_(system_, apps_),
      hotKeys_(system_),
      application_(system_),
      statusBar_(system_, [this] { application_.terminate(); }),
      recorderWindows_(system_),
      keyMonitor_(system_),
      alerts_(system_),
      workspace_(system_, apps_),
      runningApplications_(system_),
      runningInstance_(system_),
      userDefaults_(system_),
      loginItem_(system_),
      runLoop_(system_),
      files_(system_),
      dateFormatters_(system_) {}

FakeHost::~FakeHost() {
  // Deferred work is destroyed while the services that it may use still exist.
  system_.clock.forgetAll();
  reportComplaints(settled_ ? system_.complaints.all() : collectComplaints());
}

KeyFate FakeHost::userPresses(KeyCode keyCode, Modifiers modifiers) {
  if (hotKeys_.isTaken(keyCode, modifiers)) return KeyFate::othersHotKey;
  if (hotKeys_.press(keyCode, modifiers)) return KeyFate::ownHotKey;
  if (recorderWindows_.window() != nullptr) {
    const auto disposition = keyMonitor_.deliver({keyCode, eventFlagsOf(modifiers)});
    const auto* window = recorderWindows_.window();
    // The space bar presses the button that has the focus, which is the first.
    if (disposition == KeyDisposition::passedOn && keyCode == kKeySpace && window && window->saveEnabled) {
      recorderWindows_.clickSave();
    }
    return KeyFate::ownWindow;
  }
  if (!apps_.front()) return KeyFate::nobody;
  if (modifiers == kCmdKey && keyCode == kKeyC) {
    apps_.copyInFront();
  } else if (modifiers == kCmdKey && keyCode == kKeyV) {
    apps_.pasteInFront();
  } else if ((modifiers | kShiftKey) == kShiftKey) {
    apps_.typeInFront(inputSources_.typed(static_cast<int>(keyCode), modifiers == kShiftKey));
  }
  return KeyFate::application;
}

void FakeHost::processEnds() {
  hotKeys_.processEnds();
  inputSources_.processEnds();
  workspace_.processEnds();
  runLoop_.processEnds();
}

std::string FakeHost::logFile() const {
  return files_.bytes(files_.home + "/Library/Logs/Lexwend.log").value_or(std::string());
}

std::vector<std::string> FakeHost::logMessages() const {
  std::vector<std::string> messages;
  const std::string file = logFile();
  for (std::size_t start = 0; start < file.size();) {
    const auto end = std::min(file.find('\n', start), file.size());
    const std::string line = file.substr(start, end - start);
    messages.push_back(line.size() > kTimestampLength ? line.substr(kTimestampLength + 1) : std::string());
    start = end + 1;
  }
  return messages;
}

std::vector<std::string> FakeHost::settle() {
  auto complaints = collectComplaints();
  system_.complaints.take();
  settled_ = true;
  return complaints;
}

std::vector<std::string> FakeHost::collectComplaints() const {
  auto complaints = system_.complaints.all();
  for (auto unused : {system_.injections.unused(), apps_.unused(), alerts_.unused(), accessibility_.unused(),
                      userDefaults_.unused()}) {
    for (auto& complaint : unused) complaints.push_back(std::move(complaint));
  }
  return complaints;
}

}  // namespace lexwend::platform
