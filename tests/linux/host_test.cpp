// SPDX-License-Identifier: MIT
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/linux/linux_host.h"

namespace lexwend::platform {
namespace {

TEST(LinuxHostWithoutDisplay, isNotTrusted) {
  ASSERT_EQ(unsetenv("DISPLAY"), 0);
  EXPECT_FALSE(LinuxHost().accessibility().isProcessTrusted());
}

}  // namespace
}  // namespace lexwend::platform
