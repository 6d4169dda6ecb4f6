// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/running_applications.h"

namespace lexwend::platform {

/// The processes that the test says are running.
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

  // Controls of a test. At the start no process is listed, not even this one.
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
