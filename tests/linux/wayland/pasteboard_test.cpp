// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <chrono>
#include <optional>

#include <gtest/gtest.h>

#include "platform/linux/wayland/selections.h"
#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {
namespace {

TEST(PasteboardOfWayland, takesNothingOfItsOwnForACopy) {
  const PrivateSway sway;
  std::optional<PlayedShortcut> copy;
  LinuxPasteboard pasteboard({}, {.lastCopy = [&] { return copy; }, .lastPaste = [] { return std::nullopt; }},
                             {}, selectionsOfWayland());
  ASSERT_TRUE(pasteboard.items().has_value());
  copy = PlayedShortcut{{}, XCB_WINDOW_NONE, std::chrono::steady_clock::now()};
  pasteboard.setString("given back by the fix before");
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  copy.reset();
  EXPECT_EQ(pasteboard.string(), "given back by the fix before") << "outside a fix it is read";
}

}  // namespace
}  // namespace lexwend::platform
