// SPDX-License-Identifier: MIT
#include "platform/linux/display/x_application.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/display/x11_connection.h"
#include "tests/linux/testing/other_application.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

TEST(ProgramOfAWindow, isKnownByItsProcessOverItsConnections) {
  const VirtualDisplay display;
  const auto x11 = X11Connection::open();
  const FocusedWindow one;
  const FocusedWindow other;
  const XApplication first = applicationOf(x11->get(), one.id());
  const XApplication second = applicationOf(x11->get(), other.id());
  EXPECT_NE(first.client, second.client);
  EXPECT_EQ(first.process, static_cast<std::uint32_t>(getpid()));
  EXPECT_TRUE(mayBeTheSame(first, second));
}

TEST(ProgramOfAWindow, isAnotherOneInAnotherProcess) {
  const VirtualDisplay display;
  const auto x11 = X11Connection::open();
  const FocusedWindow own;
  StrangeClient stranger;
  stranger.copy("x");
  const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      x11->get(), xcb_get_selection_owner(x11->get(), x11->atom("CLIPBOARD")), nullptr));
  EXPECT_FALSE(mayBeTheSame(applicationOf(x11->get(), own.id()), applicationOf(x11->get(), owner->owner)));
}

TEST(ProgramOfAWindow, thatHasGoneIsNoneOfThoseThatAreThere) {
  const VirtualDisplay display;
  const auto x11 = X11Connection::open();
  const FocusedWindow own;
  xcb_window_t gone = XCB_WINDOW_NONE;
  {
    const FocusedWindow leaving;
    gone = leaving.id();
  }
  EXPECT_FALSE(mayBeTheSame(applicationOf(x11->get(), own.id()), applicationOf(x11->get(), gone)));
}

TEST(ProgramOfAWindow, isAnotherOneThatHasGotThePrefixOfOneThatHasGone) {
  EXPECT_FALSE(mayBeTheSame({0xc00000, 1000}, {0xc00000, 1001}));
  EXPECT_TRUE(mayBeTheSame({0xc00000, 1000}, {0xc00000, std::nullopt})) << "its window may have gone";
}

}  // namespace
}  // namespace lexwend::platform
