// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/connection.h"

#include <chrono>

#include <gtest/gtest.h>

#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;
using Clock = WaylandConnection::Clock;

TEST(WaylandConnection, outlivesASilenceOfTheCompositor) {
  PrivateSway sway;
  const auto connection = WaylandConnection::open();
  ASSERT_NE(connection, nullptr);
  sway.stop();
  const auto stopped = Clock::now();
  EXPECT_FALSE(connection->roundTrip());
  const auto asked = Clock::now();
  EXPECT_LT(asked - stopped, 3s);
  EXPECT_FALSE(connection->roundTrip());
  EXPECT_LT(Clock::now() - asked, 500ms) << "it is waited for no second time as long";
  sway.goOn();
  const auto end = Clock::now() + 10s;
  while (!connection->roundTrip() && Clock::now() < end) {
  }
  EXPECT_TRUE(connection->roundTrip());
}

}  // namespace
}  // namespace lexwend::platform
