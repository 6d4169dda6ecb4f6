// SPDX-License-Identifier: MIT
#pragma once

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_system.h"
#include "platform/secure_input.h"

namespace lexwend::platform {

/// Enabled while a password field has the focus or a program was told to hold it.
class FakeSecureInput : public SecureInput {
 public:
  FakeSecureInput(FakeSystem& system, FakeApps& apps) : system_(system), apps_(apps) {}

  bool isSecureEventInputEnabled() override {
    system_.called("secureInput.isSecureEventInputEnabled");
    const auto focus = apps_.focus();
    return held_ || (focus && focus->password);
  }

  /// Control of a test: some program in the background holds secure input.
  void hold(bool held) { held_ = held; }

 private:
  FakeSystem& system_;
  FakeApps& apps_;
  bool held_ = false;
};

}  // namespace lexwend::platform
