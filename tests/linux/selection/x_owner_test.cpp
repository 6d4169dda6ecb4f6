// SPDX-License-Identifier: MIT
#include "platform/linux/selection/x_owner.h"

#include <chrono>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::Lt;

TEST(XSelectionOwner, placesAClaimInTimeThatItHearsOfWhileItAsksForTheTime) {
  const VirtualDisplay display;
  std::unique_ptr<SelectionOwner> owner;
  std::vector<SelectionOwner::Clock::time_point> claims;
  owner = XSelectionOwner::open(
      [&](const SelectionOwner::Change& change) { claims.push_back(owner->inOwnTime(change.claimed)); });
  ASSERT_NE(owner, nullptr);
  Typist other;
  const xcb_window_t window = xcb_generate_id(other.connection());
  xcb_create_window(other.connection(), XCB_COPY_FROM_PARENT, window, other.root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  const auto before = SelectionOwner::Clock::now();
  xcb_set_selection_owner(other.connection(), window, internAtom(other.connection(), "CLIPBOARD"),
                          XCB_CURRENT_TIME);
  roundTrip(other.connection());
  owner->serverTime();
  constexpr std::chrono::seconds kAlmost{1};
  EXPECT_THAT(claims, ElementsAre(AllOf(Gt(before - kAlmost), Lt(SelectionOwner::Clock::now() + kAlmost))));
}

}  // namespace
}  // namespace lexwend::platform
