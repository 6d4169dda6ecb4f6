// SPDX-License-Identifier: MIT
#include "platform/fake/fake_host.h"

#include <algorithm>
#include <utility>

namespace lexwend::platform {
namespace {

constexpr std::uint16_t kCopyKey = 8;
constexpr std::uint16_t kPasteKey = 9;
constexpr std::uint16_t kSpaceKey = 49;       // presses a window's first button, which has the focus
constexpr std::size_t kTimestampLength = 23;  // "2024-03-05 14:07:09.042"

EventFlags eventFlags(std::uint32_t carbonModifiers) {
  EventFlags flags = 0;
  if ((carbonModifiers & kCmdKey) != 0) flags |= kEventFlagCommand;
  if ((carbonModifiers & kShiftKey) != 0) flags |= kEventFlagShift;
  if ((carbonModifiers & kOptionKey) != 0) flags |= kEventFlagOption;
  if ((carbonModifiers & kControlKey) != 0) flags |= kEventFlagControl;
  return flags;
}

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
      userDefaults_(system_),
      loginItem_(system_),
      runLoop_(system_),
      files_(system_),
      dateFormatters_(system_) {}

FakeHost::~FakeHost() {
  // What deferred work holds goes while the services are still there.
  system_.clock.forgetAll();
  reportComplaints(settled_ ? system_.complaints.all() : collectComplaints());
}

KeyFate FakeHost::userPresses(std::uint16_t keyCode, std::uint32_t carbonModifiers) {
  if (hotKeys_.isTaken(keyCode, carbonModifiers)) return KeyFate::othersHotKey;
  if (hotKeys_.press(keyCode, carbonModifiers)) return KeyFate::ownHotKey;
  if (recorderWindows_.window() != nullptr) {
    const auto disposition = keyMonitor_.deliver({keyCode, eventFlags(carbonModifiers)});
    const auto* window = recorderWindows_.window();
    if (disposition == KeyDisposition::passedOn && keyCode == kSpaceKey && window && window->saveEnabled) {
      recorderWindows_.clickSave();
    }
    return KeyFate::ownWindow;
  }
  if (!apps_.front()) return KeyFate::nobody;
  if (carbonModifiers == kCmdKey && keyCode == kCopyKey) {
    apps_.copyInFront();
  } else if (carbonModifiers == kCmdKey && keyCode == kPasteKey) {
    apps_.pasteInFront();
  } else if ((carbonModifiers & ~kShiftKey) == 0) {
    apps_.typeInFront(inputSources_.typed(keyCode, carbonModifiers != 0));
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
