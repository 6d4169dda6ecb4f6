// SPDX-License-Identifier: MIT
#include "platform/linux/sway/ipc.h"

#include <chrono>

#include <gtest/gtest.h>

#include "tests/linux/sway/fake_sway.h"

namespace lexwend::platform {
namespace {

TEST(SwayWithoutASocket, isNotThere) {
  const test::EnvironmentVariable none("SWAYSOCK", nullptr);
  EXPECT_EQ(SwayIpc::open(), nullptr);
  const test::EnvironmentVariable stale("SWAYSOCK", "/nonexistent/sway");
  EXPECT_EQ(SwayIpc::open(), nullptr);
}

TEST(Sway, thatRefusesToTellEventsIsNotThere) {
  FakeSway sway;
  sway.answer(2, R"({"success":false})");
  EXPECT_EQ(SwayIpc::open(), nullptr);
}

TEST(Sway, saysWhetherItCouldRunACommand) {
  FakeSway sway;
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  EXPECT_TRUE(ipc->run("nop"));
  sway.answer(0, R"([{"success":true},{"success":false,"error":"no"}])");
  EXPECT_FALSE(ipc->run("nop; nonsense"));
  sway.answer(0, "[]");
  EXPECT_FALSE(ipc->run(""));
  sway.answer(0, "no JSON");
  EXPECT_FALSE(ipc->run("nop"));
  sway.answer(0, R"([{"success":true}])");
  EXPECT_TRUE(ipc->run("nop"));
}

TEST(Sway, thatFallsSilentHoldsNobodyUpTwice) {
  FakeSway sway;
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  sway.fallSilent();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(ipc->tree(), nullptr);
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_LT(asked - begin, std::chrono::seconds(3));
  EXPECT_FALSE(ipc->run("nop"));
  EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(500));
}

TEST(Sway, isAskedAgainAfterASilence) {
  FakeSway sway;
  sway.answer(100, "[]");
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  sway.fallSilent();
  EXPECT_EQ(ipc->inputs(), nullptr);
  EXPECT_EQ(ipc->inputs(), nullptr);
  sway.speakAgain();
  EXPECT_NE(ipc->inputs(), nullptr);
}

TEST(Sway, isAskedWhileTheAnswersOfTicksArrive) {
  FakeSway sway;
  sway.answer(100, "[]");
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  ipc->sendTick("one");
  ipc->sendTick("two");
  EXPECT_NE(ipc->inputs(), nullptr);
}

/// Else the end of a pause would never be told, and no hot key would fire any more.
TEST(Sway, getsATickAlsoAfterASilence) {
  FakeSway sway;
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  sway.fallSilent();
  EXPECT_EQ(ipc->tree(), nullptr);
  ipc->sendTick("one");
  while (sway.ticks().empty()) std::this_thread::yield();
  EXPECT_EQ(sway.ticks(), std::vector<std::string>{"one"});
}

}  // namespace
}  // namespace lexwend::platform
