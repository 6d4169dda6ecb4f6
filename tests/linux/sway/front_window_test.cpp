// SPDX-License-Identifier: MIT
#include "platform/linux/sway/front_window.h"

#include <gtest/gtest.h>

#include "tests/linux/sway/fake_sway.h"

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kGetTree = 4;

std::optional<FrontWindow> frontIn(const std::string& tree) {
  FakeSway sway;
  sway.answer(kGetTree, tree);
  const auto ipc = SwayIpc::open();
  return ipc ? frontWindowOf(*ipc) : std::nullopt;
}

TEST(FrontWindow, ofWaylandHasTheIdentifierOfItsApplication) {
  const auto front = frontIn(
      R"({"focused":false,"nodes":[{"focused":false,"id":3,"pid":1,"app_id":"other","nodes":[]},
          {"focused":true,"id":7,"pid":42,"app_id":"foot","nodes":[],"floating_nodes":[]}]})");
  ASSERT_TRUE(front.has_value());
  EXPECT_EQ(front->id, 7);
  EXPECT_EQ(front->process, 42U);
  EXPECT_EQ(front->windowClass, "foot");
}

TEST(FrontWindow, ofXWaylandHasItsClass) {
  const auto front = frontIn(
      R"({"nodes":[{"focused":false,"nodes":[],"floating_nodes":[{"focused":true,"id":9,"pid":43,"app_id":null,
          "window_properties":{"class":"XTerm","instance":"xterm"}}]}]})");
  ASSERT_TRUE(front.has_value());
  EXPECT_EQ(front->windowClass, "XTerm");
}

TEST(FrontWindow, isNoneWhereAWorkspaceHasTheFocus) {
  EXPECT_FALSE(frontIn(R"({"nodes":[{"focused":true,"type":"workspace","nodes":[]}]})").has_value());
  EXPECT_FALSE(frontIn("[]").has_value());
}

}  // namespace
}  // namespace lexwend::platform
