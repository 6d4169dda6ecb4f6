// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/key_events.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

struct SimulatedKeys : testing::Test {
  VirtualDisplay display;
  Typist typist;
  std::shared_ptr<X11Connection> x11 = X11Connection::open();
  bool mayPost = true;
  int refused = 0;
  LinuxKeyEvents keyEvents{x11, [this] { return mayPost; }, [this] { ++refused; }};

  SimulatedKeys() { display.setLayouts("us,il"); }
  EventFlags held() { return keyEvents.flagsState(EventSourceState::combinedSession); }
  void type(KeyCode keyCode, EventFlags flags) {
    for (const bool down : {true, false}) {
      const auto event =
          keyEvents.createKeyboardEvent(keyEvents.createSource(EventSourceState::hidSystem), keyCode, down);
      ASSERT_NE(event, nullptr);
      event->setFlags(flags);
      keyEvents.post(EventTap::hid, *event);
    }
    // A window reads on a connection of its own: by this answer the server has played the keys.
    held();
  }
  bool canMakeEvent() { return keyEvents.createKeyboardEvent(nullptr, kKeyC, true) != nullptr; }
};

TEST_F(SimulatedKeys, playCopyAndPasteTheSameInEveryLayout) {
  for (const std::uint8_t group : {std::uint8_t{0}, std::uint8_t{1}}) {
    typist.lockGroup(group);
    FocusedWindow window("Mousepad");
    type(kKeyC, kEventFlagCommand);
    type(kKeyV, kEventFlagCommand);
    EXPECT_TRUE(pumpUntil([&] { return window.keys() == "+37 +118 -118 -37 +50 +118 -118 -50"; }))
        << window.keys();
  }
}

TEST_F(SimulatedKeys, playOtherKeysWithTheirModifiers) {
  FocusedWindow window;
  type(kKeyA, kEventFlagCommand | kEventFlagShift);
  type(kKeyC, kNoEventFlags);
  type(kKeyA, kEventFlagOption);
  type(kKeyA, kEventFlagControl);
  EXPECT_TRUE(pumpUntil([&] {
    return window.keys() == "+37 +50 +38 -38 -50 -37 +54 -54 +64 +38 -38 -64 +133 +38 -38 -133";
  })) << window.keys();
}

TEST_F(SimulatedKeys, holdTheKeysThatAreModifiersWhereverTheyArePrinted) {
  struct Row {
    const char* option;
    const char* keys;
  };
  for (const Row& row :
       {Row{"ctrl:swapcaps", "+66 +118 -118 -66 +50 +118 -118 -50 +66 +38 -38 -66"},
        Row{"ctrl:nocaps", "+37 +118 -118 -37 +50 +118 -118 -50 +37 +38 -38 -37"},
        Row{"altwin:swap_lalt_lwin", "+37 +118 -118 -37 +50 +118 -118 -50 +37 +38 -38 -37"}}) {
    ASSERT_EQ(runProgram(std::string("setxkbmap -option '' -option ") + row.option), 0);
    FocusedWindow window;
    type(kKeyC, kEventFlagCommand);
    type(kKeyV, kEventFlagCommand);
    type(kKeyA, kEventFlagCommand);
    EXPECT_EQ(window.keys(), row.keys) << row.option;
    EXPECT_EQ(typist.lockedModifiers(), 0) << row.option;
  }
  FocusedWindow window;
  type(kKeyA, kEventFlagOption);
  type(kKeyA, kEventFlagControl);
  EXPECT_EQ(window.keys(), "+133 +38 -38 -133 +64 +38 -38 -64");
}

TEST_F(SimulatedKeys, holdTheOtherKeyOfAModifierThatHasLostOne) {
  ASSERT_EQ(runProgram("xmodmap -e 'remove control = Control_L' -e 'remove shift = Shift_L' "
                       "-e 'keycode 37 = x' -e 'keycode 50 = y'"),
            0);
  FocusedWindow window;
  type(kKeyC, kEventFlagCommand);
  type(kKeyV, kEventFlagCommand);
  EXPECT_EQ(window.keys(), "+105 +118 -118 -105 +62 +118 -118 -62");
}

TEST_F(SimulatedKeys, leaveTheGroupWhereTheirOwnKeyboardHasNoOther) {
  typist.setKeyboardsApart("us", "us,il");
  for (const std::uint8_t group : {std::uint8_t{1}, std::uint8_t{0}}) {
    typist.tapPhysically(KEY_A);
    typist.lockGroup(group);
    FocusedWindow window;
    type(kKeyC, kEventFlagCommand);
    EXPECT_EQ(window.keys(), "+37 +118 -118 -37");
    EXPECT_EQ(typist.group(), group);
  }
}

TEST_F(SimulatedKeys, leaveTheGroupWhenNoKeyWasEverPressed) {
  typist.setKeyboardsApart("us", "us,il");
  typist.lockGroup(1);
  type(kKeyC, kEventFlagCommand);
  EXPECT_EQ(typist.group(), 1);
}

TEST_F(SimulatedKeys, letGoModifiersOfAnotherKeyboardToo) {
  typist.press(KEY_LEFTSHIFT);
  typist.tapPhysically(KEY_F2);
  EXPECT_EQ(held(), kEventFlagShift);
  FocusedWindow window;
  type(kKeyC, kEventFlagCommand);
  EXPECT_EQ(window.keys(), "-50 +37 +118 -118 -37");
  EXPECT_EQ(held(), kNoEventFlags);
  typist.release(KEY_LEFTSHIFT);
}

TEST_F(SimulatedKeys, leaveNoKeyDown) {
  type(kKeyC, kEventFlagCommand);
  EXPECT_TRUE(pumpUntil([&] { return held() == kNoEventFlags; }));
  EXPECT_FALSE(typist.isDown(KEY_INSERT));
  EXPECT_FALSE(typist.isDown(KEY_LEFTCTRL));
}

TEST_F(SimulatedKeys, haveTheirOwnModifiersOnlyWhateverTheUserHolds) {
  typist.pressPhysically(KEY_LEFTSHIFT);
  typist.pressPhysically(KEY_LEFTCTRL);
  EXPECT_EQ(held(), kEventFlagShift | kEventFlagCommand);
  {
    FocusedWindow window;
    type(kKeyC, kEventFlagCommand);
    EXPECT_TRUE(pumpUntil([&] { return window.keys() == "-50 -37 +37 +118 -118 -37"; })) << window.keys();
  }
  EXPECT_EQ(held(), kNoEventFlags);
  typist.releasePhysically(KEY_LEFTSHIFT);
  typist.releasePhysically(KEY_LEFTCTRL);
  EXPECT_EQ(held(), kNoEventFlags);
  typist.pressPhysically(KEY_LEFTSHIFT);
  EXPECT_EQ(held(), kEventFlagShift);
  typist.releasePhysically(KEY_LEFTSHIFT);
  EXPECT_EQ(held(), kNoEventFlags);
}

TEST_F(SimulatedKeys, knowTheModifiersThatAreHeld) {
  struct Row {
    int key;
    EventFlags flag;
  };
  for (const Row& row : {Row{KEY_LEFTCTRL, kEventFlagCommand}, Row{KEY_RIGHTCTRL, kEventFlagCommand},
                         Row{KEY_LEFTSHIFT, kEventFlagShift}, Row{KEY_RIGHTSHIFT, kEventFlagShift},
                         Row{KEY_LEFTALT, kEventFlagOption}, Row{KEY_RIGHTALT, kEventFlagOption},
                         Row{KEY_LEFTMETA, kEventFlagControl}, Row{KEY_A, kNoEventFlags}}) {
    typist.press(row.key);
    EXPECT_EQ(held(), row.flag) << row.key;
    typist.release(row.key);
    EXPECT_EQ(held(), kNoEventFlags) << row.key;
  }
}

TEST_F(SimulatedKeys, doNotTakeLocksForHeldModifiers) {
  typist.lockModifiers(0xFF);
  EXPECT_EQ(held(), kNoEventFlags);
}

TEST_F(SimulatedKeys, areRefusedInATerminal) {
  for (const char* windowClass : {"XTerm", "URxvt", "Gnome-terminal", "konsole", "Alacritty", "kitty",
                                  "st-256color", "foot", "Terminator", "Xfce4-terminal", "Tilix",
                                  "org.wezfurlong.wezterm", "org.gnome.Console", "UXTerm", "qterminal"}) {
    FocusedWindow window(windowClass);
    EXPECT_FALSE(canMakeEvent()) << windowClass;
  }
  for (const char* windowClass : {"Mousepad", "firefox", "Gedit", "libreoffice-writer", "Studio", "kate"}) {
    FocusedWindow window(windowClass);
    EXPECT_TRUE(canMakeEvent()) << windowClass;
  }
}

TEST_F(SimulatedKeys, areRefusedWhenTheHostSaysSo) {
  mayPost = false;
  EXPECT_FALSE(canMakeEvent());
}

TEST_F(SimulatedKeys, tellOfARefusalAndOfNothingElse) {
  FocusedWindow terminal("XTerm");
  EXPECT_FALSE(canMakeEvent());
  EXPECT_EQ(refused, 1);
  FocusedWindow editor("Mousepad");
  EXPECT_TRUE(canMakeEvent());
  EXPECT_EQ(refused, 1);
}

TEST_F(SimulatedKeys, areRefusedForKeysThatDoNotExist) {
  EXPECT_EQ(keyEvents.createKeyboardEvent(nullptr, KeyCode{52}, true), nullptr);
}

TEST(KeyEventsWithoutDisplay, areRefused) {
  LinuxKeyEvents keyEvents(nullptr, [] { return true; });
  EXPECT_EQ(keyEvents.createSource(EventSourceState::hidSystem), nullptr);
  EXPECT_EQ(keyEvents.createKeyboardEvent(nullptr, kKeyC, true), nullptr);
  EXPECT_EQ(keyEvents.flagsState(EventSourceState::combinedSession), kNoEventFlags);
}

}  // namespace
}  // namespace lexwend::platform
