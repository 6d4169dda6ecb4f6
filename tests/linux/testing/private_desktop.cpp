// SPDX-License-Identifier: MIT
#include "tests/linux/testing/private_desktop.h"

#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/application.h"
#include "tests/linux/testing/usual_signals.h"

namespace lexwend::platform {
namespace {

std::unique_ptr<PrivateDesktop>& desktop() {
  static std::unique_ptr<PrivateDesktop> instance;
  return instance;
}

/// Ends the desktop with the tests, before anything static goes.
struct DesktopsEnd : ::testing::Environment {
  void TearDown() override { desktop().reset(); }
};
const auto* const kDesktopsEnd = ::testing::AddGlobalTestEnvironment(new DesktopsEnd);

}  // namespace

PrivateDesktop::PrivateDesktop() {
  takeSignalsAsUsual();
  ::setenv("HOME", home_.path().c_str(), 1);
  ::setenv("XDG_CONFIG_HOME", home_.file(".config").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
  ::setenv("QT_IM_MODULE", "none", 1);
  for (const char* name :
       {"WAYLAND_DISPLAY", "SWAYSOCK", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORM"}) {
    ::unsetenv(name);
  }
  host_ = std::make_unique<LinuxHost>();
  scope_.emplace(*host_);
  if (const auto reason = host_->application().takeSharedApplication()) throw std::runtime_error(*reason);
}

PrivateDesktop::~PrivateDesktop() {
  scope_.reset();
  host_.reset();
}

PrivateDesktop& PrivateDesktop::shared() {
  if (desktop() == nullptr) desktop() = std::make_unique<PrivateDesktop>();
  return *desktop();
}

}  // namespace lexwend::platform
