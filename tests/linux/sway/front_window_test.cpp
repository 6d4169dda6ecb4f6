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

TEST(FocusKey, isBoundAsLongAsItLives) {
  FakeSway sway;
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  {
    const auto key = focusKeyOf(ipc, 7);
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(key->evdev, 240);
    EXPECT_EQ(sway.commands().back(), "bindcode --no-warn --inhibited 248 [con_id=7] focus");
  }
  EXPECT_EQ(sway.commands().back(), "unbindcode --inhibited 248");
}

TEST(FocusKey, isNoneWhereSwayRefuses) {
  FakeSway sway;
  const auto ipc = SwayIpc::open();
  ASSERT_NE(ipc, nullptr);
  sway.answer(0, R"([{"success":false}])");
  EXPECT_FALSE(focusKeyOf(ipc, 7).has_value());
  EXPECT_EQ(sway.commands().size(), 1U);
}

TEST(FrontWindow, isNoneWhereAWorkspaceHasTheFocus) {
  EXPECT_FALSE(frontIn(R"({"nodes":[{"focused":true,"type":"workspace","nodes":[]}]})").has_value());
  EXPECT_FALSE(frontIn("[]").has_value());
}

}  // namespace
}  // namespace lexwend::platform
