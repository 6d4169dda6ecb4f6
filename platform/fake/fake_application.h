// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/application.h"
#include "platform/fake/fake_system.h"

namespace lexwend::platform {

/// This process as an application, in memory. Its event loop is `whileRunning`.
class FakeApplication : public Application {
 public:
  explicit FakeApplication(FakeSystem& system) : system_(system) {}

  std::optional<std::string> bundleIdentifier() override { return identifier; }
  std::string displayName() override { return name; }
  std::optional<std::string> shortVersionString() override { return version; }
  std::optional<std::string> takeSharedApplication() override {
    system_.called("application.takeSharedApplication");
    if (system_.failure(FakeOperation::takeSharedApplication)) return "There is no desktop to run on.";
    return std::nullopt;
  }
  std::optional<std::string> notice() override { return sessionNotice; }
  std::string limitation() override { return sessionLimitation; }
  bool gainsByInstallation() override { return gains && !installed; }
  bool install() override { return installed = canBeInstalled; }
  void setDelegate(std::function<void()> didFinishLaunching) override {
    system_.called("application.setDelegate");
    didFinishLaunching_ = std::move(didFinishLaunching);
  }
  void setActivationPolicy(ActivationPolicy newPolicy) override {
    system_.called("application.setActivationPolicy " + std::to_string(static_cast<int>(newPolicy)));
    policy = newPolicy;
  }
  void run() override {
    system_.called("application.run");
    running_ = true;
    if (const auto launch = didFinishLaunching_) launch();
    if (whileRunning) whileRunning();
    running_ = false;
  }
  void terminate() override {
    system_.called("application.terminate");
    terminated = true;
  }
  void activate(bool ignoringOtherApps) override {
    system_.called(std::string("application.activate ") + (ignoringOtherApps ? "true" : "false"));
    activations.push_back(ignoringOtherApps);
  }
  void notifyUser(std::string_view sentence) override { notifications.emplace_back(sentence); }
  void beep() override {
    system_.called("application.beep");
    ++beeps;
  }

  // Controls of a test.
  std::optional<std::string> identifier = "org.lexwend.Lexwend";
  std::string name = "Lexwend";
  std::optional<std::string> version = "1.0";
  std::optional<std::string> sessionNotice;
  std::string sessionLimitation;
  bool gains = false;  ///< by its installation
  bool canBeInstalled = true;
  bool installed = false;
  /// The event loop, which runs after the launch and ends when this returns.
  std::function<void()> whileRunning;
  ActivationPolicy policy = ActivationPolicy::regular;
  bool terminated = false;
  int beeps = 0;
  std::vector<std::string> notifications;
  std::vector<bool> activations;  ///< one entry per activation: ignoring other applications
  bool running() const { return running_; }

 private:
  FakeSystem& system_;
  std::function<void()> didFinishLaunching_;
  bool running_ = false;
};

}  // namespace lexwend::platform
