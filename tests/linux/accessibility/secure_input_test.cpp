// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/secure_input.h"

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

class FixedRole : public FocusedRole {
 public:
  explicit FixedRole(bool isPassword) : isPassword_(isPassword) {}
  bool focusIsPasswordField() override { return isPassword_; }

 private:
  bool isPassword_;
};

TEST(LinuxSecureInput, followsTheRoleOfTheFocus) {
  FixedRole password(true);
  FixedRole other(false);
  EXPECT_TRUE(LinuxSecureInput(&password).isSecureEventInputEnabled());
  EXPECT_FALSE(LinuxSecureInput(&other).isSecureEventInputEnabled());
  EXPECT_FALSE(LinuxSecureInput(nullptr).isSecureEventInputEnabled());
}

}  // namespace
}  // namespace lexwend::platform
