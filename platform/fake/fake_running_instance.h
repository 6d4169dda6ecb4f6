// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/fake/fake_system.h"
#include "platform/running_instance.h"

namespace lexwend::platform {

/// The way to the agent that runs, in memory.
class FakeRunningInstance : public RunningInstance {
 public:
  explicit FakeRunningInstance(FakeSystem& system) : system_(system) {}

  InstanceAnswer pass(InstanceCommand command) override {
    system_.called("runningInstance.pass " + std::to_string(static_cast<int>(command)));
    return answer;
  }
  Registration receive(std::function<bool(InstanceCommand)> handler) override {
    system_.called("runningInstance.receive");
    return handlers_.add(std::move(handler));
  }
  Registration dropFixes() override {
    ++*deaf_;
    return Registration([deaf = deaf_] { --*deaf; });
  }

  // Controls of a test.
  /// What the other instance answers.
  InstanceAnswer answer = InstanceAnswer::nobodyRuns;
  /// Another process passes a command to this one.
  InstanceAnswer arrives(InstanceCommand command) {
    const auto handlers = handlers_.all();
    if (handlers.empty()) return InstanceAnswer::nobodyRuns;
    if (command == InstanceCommand::fix && *deaf_ > 0) return InstanceAnswer::dropped;
    return (*handlers.back())(command) ? InstanceAnswer::taken : InstanceAnswer::dropped;
  }

 private:
  FakeSystem& system_;
  Handlers<std::function<bool(InstanceCommand)>> handlers_;
  std::shared_ptr<int> deaf_ = std::make_shared<int>(0);
};

}  // namespace lexwend::platform
