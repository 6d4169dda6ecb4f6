// SPDX-License-Identifier: MIT
#pragma once

#include "platform/fake/fake_system.h"
#include "platform/login_item.h"

namespace lexwend::platform {

/// The login item in memory, not registered at the start.
class FakeLoginItem : public LoginItem {
 public:
  explicit FakeLoginItem(FakeSystem& system) : system_(system) {}

  LoginItemStatus status() override { return status_; }
  [[nodiscard]] bool registerItem() override {
    system_.called("loginItem.registerItem");
    if (system_.failure(FakeOperation::registerLoginItem)) return false;
    status_ = afterRegister_;
    return true;
  }
  [[nodiscard]] bool unregisterItem() override {
    system_.called("loginItem.unregisterItem");
    if (system_.failure(FakeOperation::unregisterLoginItem)) return false;
    status_ = LoginItemStatus::notRegistered;
    return true;
  }
  void followProgram() override { system_.called("loginItem.followProgram"); }

  // Controls of a test.
  void setStatus(LoginItemStatus status) { status_ = status; }
  /// The status after a successful registration. A system may require the user's approval first.
  void setStatusAfterRegister(LoginItemStatus status) { afterRegister_ = status; }

 private:
  FakeSystem& system_;
  LoginItemStatus status_ = LoginItemStatus::notRegistered;
  LoginItemStatus afterRegister_ = LoginItemStatus::enabled;
};

}  // namespace lexwend::platform
