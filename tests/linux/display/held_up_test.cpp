// SPDX-License-Identifier: MIT
#include "platform/linux/display/held_up.h"

#include <chrono>
#include <thread>

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include "tests/linux/testing/child_process.h"

namespace lexwend::platform {
namespace {

/// Within some seconds: a new process has to begin first.
bool becomes(const ChildProcess& process, bool heldUp) {
  for (int look = 0; look < 1000; ++look) {
    if (isHeldUp(process.number()) == heldUp) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

TEST(HeldUp, tellsAProcessThatIsStoppedFromOneThatWaits) {
  const ChildProcess process([] { pause(); });
  EXPECT_TRUE(becomes(process, false));
  process.stop();
  EXPECT_TRUE(isHeldUp(process.number()));
  process.goOn();
  EXPECT_TRUE(becomes(process, false));
}

TEST(HeldUp, countsAProcessThatComputes) {
  const ChildProcess process([] {
    volatile int counted = 0;
    counted = counted + 1;
  });
  EXPECT_TRUE(becomes(process, true));
}

TEST(HeldUp, readsTheStateBehindANameThatLooksLikeOne) {
  const ChildProcess process([] {
    prctl(PR_SET_NAME, "a) R (b) T (c");
    pause();
  });
  EXPECT_TRUE(becomes(process, false));
  process.stop();
  EXPECT_TRUE(isHeldUp(process.number()));
}

TEST(HeldUp, countsNothingThatIsNotKnownOrHasEnded) {
  EXPECT_FALSE(isHeldUp(std::nullopt));
  EXPECT_FALSE(isHeldUp(0));
  const ChildProcess process([] { _exit(0); });
  EXPECT_TRUE(becomes(process, false));
}

}  // namespace
}  // namespace lexwend::platform
