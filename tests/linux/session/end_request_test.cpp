// SPDX-License-Identifier: MIT
#include "platform/linux/session/end_request.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/session/run_loop.h"
#include "tests/linux/testing/usual_signals.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

bool isReadable(int descriptor) {
  pollfd state{descriptor, POLLIN, 0};
  return ::poll(&state, 1, 0) == 1;
}

/// Each in a process of its own, because a request cannot be withdrawn.
#define EXPECT_IN_A_CHILD(statement) \
  EXPECT_EXIT(                       \
      {                              \
        takeSignalsAsUsual();        \
        statement;                   \
        std::_Exit(0);               \
      },                             \
      ::testing::ExitedWithCode(0), "")

void require(bool truth) {
  if (!truth) std::_Exit(1);
}

TEST(EndRequest, cutsShortWhatSleeps) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    EXPECT_IN_A_CHILD({
      end_request::catchSignals();
      std::thread sender([number] {
        std::this_thread::sleep_for(milliseconds(50));
        ::kill(::getpid(), number);
      });
      const auto start = Clock::now();
      LinuxRunLoop().sleep(std::chrono::seconds(30));
      sender.join();
      require(Clock::now() - start < std::chrono::seconds(5));
      require(isReadable(end_request::descriptor()));
    });
  }
}

TEST(EndRequest, leavesTheLastStepsTheirPausesUntilTheGraceIsOver) {
  EXPECT_IN_A_CHILD({
    end_request::catchSignals();
    ::raise(SIGTERM);
    const auto start = Clock::now();
    end_request::sleep(milliseconds(30));
    require(Clock::now() - start >= milliseconds(30));
    end_request::sleep(end_request::kGrace);
    const auto afterwards = Clock::now();
    require(afterwards - start >= end_request::kGrace - milliseconds(30));
    for (int i = 0; i < 1000; ++i) end_request::sleep(std::chrono::seconds(1));
    require(Clock::now() - afterwards < std::chrono::seconds(1));
  });
}

TEST(EndRequest, isNotMadeByASignalThatTheProcessIgnores) {
  EXPECT_IN_A_CHILD({
    std::signal(SIGHUP, SIG_IGN);
    end_request::catchSignals();
    ::raise(SIGHUP);
    require(!isReadable(end_request::descriptor()));
    const auto wanted = Clock::now() + std::chrono::hours(1);
    require(end_request::limited(wanted) == wanted);
  });
}

}  // namespace
}  // namespace lexwend::platform
