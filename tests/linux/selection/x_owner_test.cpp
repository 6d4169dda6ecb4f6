// SPDX-License-Identifier: MIT
#include "platform/linux/selection/x_owner.h"

#include <chrono>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/testing/bytes.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::Lt;

/// A program that claims the clipboard as of a time of the server.
struct Claimant {
  Typist other;
  xcb_atom_t clipboard = internAtom(other.connection(), "CLIPBOARD");
  xcb_window_t window = xcb_generate_id(other.connection());

  Claimant() {
    xcb_create_window(other.connection(), XCB_COPY_FROM_PARENT, window, other.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  }
  void claim(xcb_timestamp_t time) {
    xcb_set_selection_owner(other.connection(), window, clipboard, time);
    roundTrip(other.connection());
  }
  xcb_window_t owner() {
    const auto cookie = xcb_get_selection_owner(other.connection(), clipboard);
    const XcbReply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(other.connection(), cookie, nullptr));
    return reply->owner;
  }
};

ClipboardContents kept() {
  return {{"UTF8_STRING", "UTF8_STRING", 8, bytesOf("kept")}};
}

TEST(XSelectionOwner, leavesAClaimThatComesInTheMillisecondOfItsLook) {
  const VirtualDisplay display;
  const auto owner = XSelectionOwner::open([](const SelectionOwner::Change&) {});
  ASSERT_NE(owner, nullptr);
  Claimant user;
  const xcb_timestamp_t look = owner->timeOfLook();
  user.claim(look + 1);
  owner->claim({}, look);
  EXPECT_EQ(user.owner(), user.window) << "to clear it";
  owner->claim(kept(), look);
  EXPECT_EQ(user.owner(), user.window) << "to fill it";
  EXPECT_FALSE(owner->owns());
}

TEST(XSelectionOwner, replacesWhatWasClaimedInTheMillisecondOfItsLook) {
  const VirtualDisplay display;
  const auto owner = XSelectionOwner::open([](const SelectionOwner::Change&) {});
  ASSERT_NE(owner, nullptr);
  Claimant user;
  for (int claim = 0; claim < 50; ++claim) {
    user.claim(XCB_CURRENT_TIME);
    owner->claim(kept(), owner->timeOfLook());
    ASSERT_TRUE(owner->owns()) << "after " << claim;
  }
}

TEST(XSelectionOwner, placesAClaimInTimeThatItHearsOfWhileItAsksForTheTime) {
  const VirtualDisplay display;
  std::unique_ptr<SelectionOwner> owner;
  std::vector<SelectionOwner::Clock::time_point> claims;
  owner = XSelectionOwner::open(
      [&](const SelectionOwner::Change& change) { claims.push_back(owner->inOwnTime(change.claimed)); });
  ASSERT_NE(owner, nullptr);
  Claimant other;
  const auto before = SelectionOwner::Clock::now();
  other.claim(XCB_CURRENT_TIME);
  owner->serverTime();
  constexpr std::chrono::seconds kAlmost{1};
  EXPECT_THAT(claims, ElementsAre(AllOf(Gt(before - kAlmost), Lt(SelectionOwner::Clock::now() + kAlmost))));
}

}  // namespace
}  // namespace lexwend::platform
