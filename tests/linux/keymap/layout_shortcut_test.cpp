// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/layout_shortcut.h"

#include <algorithm>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include "tests/linux/testing/desktop_settings.h"

namespace lexwend::platform {
namespace {

using Names = std::vector<std::string>;
constexpr KeyCode kSpace{49};
constexpr std::chrono::milliseconds kPatience{500};

TEST(Accelerator, hasModifiersAndAKey) {
  const auto backward = parseAccelerator("<Shift><Super>space");
  ASSERT_TRUE(backward);
  EXPECT_EQ(backward->modifiers, kEventFlagShift | kEventFlagControl);
  EXPECT_EQ(backward->keysym, std::uint32_t{XKB_KEY_space});
  const auto letter = parseAccelerator("<Primary><ALT>k");
  ASSERT_TRUE(letter);
  EXPECT_EQ(letter->modifiers, kEventFlagCommand | kEventFlagOption);
  EXPECT_EQ(letter->keysym, std::uint32_t{XKB_KEY_k});
  EXPECT_EQ(parseAccelerator("XF86Keyboard")->modifiers, kNoEventFlags);
}

TEST(Accelerator, isNoneWithAModifierThatIsNotKnownOrWithoutAKey) {
  for (const char* text :
       {"", "disabled", "<Super>", "<Hyper>space", "<Super", "<Release>space", "<Super>nothing"}) {
    EXPECT_FALSE(parseAccelerator(text)) << text;
  }
}

/// A desktop that selects layouts as GNOME does: the shortcut takes the second of the layouts in the order of
/// their use, the one backward takes the last, and what was taken is the first from then on.
struct DesktopShortcut : testing::Test {
  DesktopSettings& settings = DesktopSettings::shared();
  Names order;
  Names played;
  bool isDeaf = false;
  LayoutShortcut shortcut{{.current = nullptr,
                           .keyGiving = [](std::uint32_t keysym) -> std::optional<KeyCode> {
                             return keysym == XKB_KEY_space ? std::optional(kSpace) : std::nullopt;
                           },
                           .play = [this](KeyCode key, EventFlags flags) { pressed(key, flags); },
                           .patience = kPatience}};

  DesktopShortcut() {
    settings.setShortcuts("switch-input-source", {"XF86Keyboard", "<Super>space"});
    settings.setShortcuts("switch-input-source-backward", {"<Shift><Super>space"});
    have({"us", "il"});
  }
  void have(const Names& layouts) {
    order = layouts;
    settings.setLayouts("sources", layouts);
    settings.setLayouts("mru-sources", {});
  }
  void pressed(KeyCode key, EventFlags flags) {
    EXPECT_EQ(key, kSpace);
    const bool isBackward = flags == (kEventFlagControl | kEventFlagShift);
    EXPECT_TRUE(isBackward || flags == kEventFlagControl);
    played.push_back(isBackward ? "backward" : "forward");
    if (isDeaf) return;
    const auto taken = order.begin() + (isBackward ? static_cast<std::ptrdiff_t>(order.size()) - 1 : 1);
    std::rotate(order.begin(), taken, taken + 1);
    settings.setLayouts("mru-sources", order);
  }
  /// Until nothing more is to be done.
  static void settle(std::chrono::milliseconds time = std::chrono::milliseconds(300)) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) g_main_context_iteration(nullptr, FALSE);
  }
  static XkbLayoutName named(const std::string& layout) { return {layout, ""}; }
};

TEST_F(DesktopShortcut, selectsTheOtherOfTwoLayouts) {
  EXPECT_TRUE(shortcut.select(named("il")));
  settle();
  EXPECT_EQ(order.front(), "il");
  EXPECT_TRUE(shortcut.select(named("us")));
  settle();
  EXPECT_EQ(order.front(), "us");
  EXPECT_EQ(played, (Names{"forward", "forward"}));
}

TEST_F(DesktopShortcut, isNotPressedForTheLayoutInUse) {
  EXPECT_TRUE(shortcut.select(named("us")));
  EXPECT_EQ(played, Names());
}

TEST_F(DesktopShortcut, goesBackwardToALayoutThatWasUsedLongAgo) {
  have({"us", "ru", "de", "il", "ibus:anthy"});
  EXPECT_TRUE(shortcut.select(named("il")));
  settle();
  EXPECT_EQ(order.front(), "il");
  EXPECT_EQ(played, (Names{"backward", "backward"}));
}

TEST_F(DesktopShortcut, findsTheLayoutWhereTheSettingsDoNotTellTheOrder) {
  have({"us", "ru", "il"});
  order = {"us", "il", "ru"};  // as after a change that was not made by the shortcut
  EXPECT_TRUE(shortcut.select(named("il")));
  settle();
  EXPECT_EQ(order.front(), "il");
  EXPECT_LE(played.size(), 3U);
}

TEST_F(DesktopShortcut, isPressedAtMostAsOftenAsThereAreLayouts) {
  isDeaf = true;
  EXPECT_TRUE(shortcut.select(named("il")));
  settle(std::chrono::milliseconds(300));
  EXPECT_EQ(played.size(), 1U);  // the desktop may be busy
  settle(3 * kPatience);
  EXPECT_EQ(played.size(), 2U);
}

TEST_F(DesktopShortcut, endsWithItsOwner) {
  isDeaf = true;
  {
    LayoutShortcut other({.current = nullptr,
                          .keyGiving = [](std::uint32_t) { return std::optional(kSpace); },
                          .play = [this](KeyCode, EventFlags) { played.push_back("played"); },
                          .patience = kPatience});
    EXPECT_TRUE(other.select(named("il")));
  }
  settle(2 * kPatience);
  EXPECT_EQ(played, Names{"played"});
}

TEST_F(DesktopShortcut, makesRoomForAnotherSelection) {
  isDeaf = true;
  EXPECT_TRUE(shortcut.select(named("il")));
  isDeaf = false;
  EXPECT_TRUE(shortcut.select(named("us")));
  settle(kPatience + std::chrono::milliseconds(300));
  EXPECT_EQ(order.front(), "us");
  EXPECT_EQ(played, Names{"forward"});
}

TEST_F(DesktopShortcut, isNotThereWithoutTheLayoutOrAKey) {
  EXPECT_FALSE(shortcut.select(named("fr")));
  EXPECT_FALSE(shortcut.select({"il", "lyx"}));
  settings.setShortcuts("switch-input-source", {"XF86Keyboard"});
  settings.setShortcuts("switch-input-source-backward", {});
  EXPECT_FALSE(shortcut.select(named("il")));
  EXPECT_EQ(played, Names());
}

TEST_F(DesktopShortcut, isTheOneBackwardWhereTheUserHasNoOther) {
  settings.setShortcuts("switch-input-source", {});
  EXPECT_TRUE(shortcut.select(named("il")));
  settle();
  EXPECT_EQ(order.front(), "il");
  EXPECT_EQ(played, Names{"backward"});
}

TEST_F(DesktopShortcut, knowsVariantsAndTheOrderOfUse) {
  have({"us+dvorak", "il", "ibus:anthy"});
  settings.setLayouts("mru-sources", {"il", "fr", "us+dvorak", "il"});
  EXPECT_THAT(desktopLayoutsByUse(),
              testing::ElementsAre(XkbLayoutName{"il", ""}, XkbLayoutName{"us", "dvorak"},
                                   XkbLayoutName{"", "anthy"}));
}

TEST_F(DesktopShortcut, asksItsOwnerForTheLayoutInUse) {
  std::string inUse = "il";  // what the settings say is old
  LayoutShortcut other({.current = [&] { return std::optional(named(inUse)); },
                        .keyGiving = [](std::uint32_t) { return std::optional(kSpace); },
                        .play =
                            [&](KeyCode, EventFlags) {
                              played.push_back("played");
                              inUse = "us";
                            }});
  EXPECT_TRUE(other.select(named("il")));
  EXPECT_EQ(played, Names());
  EXPECT_TRUE(other.select(named("us")));
  settle();
  EXPECT_EQ(played, Names{"played"});
}

}  // namespace
}  // namespace lexwend::platform
