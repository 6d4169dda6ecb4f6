// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/application.h"

namespace lexwend::platform::mac {

/// The shared NSApplication of this process, and what its bundle says. Main thread only.
class MacApplication : public Application {
 public:
  std::optional<std::string> bundleIdentifier() override;
  std::string displayName() override;
  std::optional<std::string> shortVersionString() override;
  std::optional<std::string> takeSharedApplication() override;
  std::optional<std::string> notice() override;
  void setDelegate(std::function<void()> didFinishLaunching) override;
  void setActivationPolicy(ActivationPolicy policy) override;
  void run() override;
  void terminate() override;
  void activate(bool ignoringOtherApps) override;
  void beep() override;

 private:
  std::shared_ptr<const void> delegate_;  // which the application holds weakly
};

}  // namespace lexwend::platform::mac
