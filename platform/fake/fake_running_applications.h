// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/running_applications.h"

namespace lexwend::platform {

/// Who runs, as the test says.
class FakeRunningApplications : public RunningApplications {
 public:
  explicit FakeRunningApplications(FakeSystem& system) : system_(system) {}

  std::vector<ProcessIdentifier> withBundleIdentifier(std::string_view identifier) override {
    system_.called("runningApplications.withBundleIdentifier " + std::string(identifier));
    std::vector<ProcessIdentifier> found;
    for (const auto& process : processes_) {
      if (process.bundleIdentifier == identifier) found.push_back(process.identifier);
    }
    return found;
  }
  ProcessIdentifier ownProcessIdentifier() override { return own_; }

  /// Controls of a test. At the start nobody runs, this process not either.
  void add(std::string bundleIdentifier, ProcessIdentifier identifier) {
    processes_.push_back({std::move(bundleIdentifier), identifier});
  }
  void addOwnProcess(std::string bundleIdentifier) { add(std::move(bundleIdentifier), own_); }

 private:
  struct Process {
    std::string bundleIdentifier;
    ProcessIdentifier identifier;
  };
  FakeSystem& system_;
  std::vector<Process> processes_;
  ProcessIdentifier own_ = 501;
};

}  // namespace lexwend::platform
