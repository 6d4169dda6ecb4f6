// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/key_events.h"

#include <functional>
#include <optional>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <unistd.h>

#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

struct SimulatedKeys : testing::Test {
  VirtualDisplay display;
  Typist typist;
  std::shared_ptr<X11Connection> x11 = X11Connection::open();
  bool mayCopy = true;
  bool mayPaste = true;
  std::function<void()> meanwhile = [] {};
  LinuxKeyEvents keyEvents{x11, [this] { return mayCopy; },
                           [this] {
                             meanwhile();
                             return mayPaste;
                           }};

  SimulatedKeys() { display.setLayouts("us,il"); }
  EventFlags held() { return keyEvents.flagsState(EventSourceState::combinedSession); }
  void type(KeyCode keyCode, EventFlags flags) {
    for (const bool down : {true, false}) {
      const auto event =
          keyEvents.createKeyboardEvent(keyEvents.createSource(EventSourceState::hidSystem), keyCode, down);
      ASSERT_NE(event, nullptr);
      event->setFlags(flags);
      EXPECT_EQ(keyEvents.post(EventTap::hid, *event), PostResult::posted);
    }
    x11->inputFocus();  // the server has handled the keys
  }
  /// Presses Command with the key, and releases it where it was pressed.
  PostResult play(KeyCode keyCode) {
    const auto press = keyEvents.createKeyboardEvent(nullptr, keyCode, true);
    press->setFlags(kEventFlagCommand);
    const PostResult result = keyEvents.post(EventTap::hid, *press);
    if (result == PostResult::posted) {
      const auto release = keyEvents.createKeyboardEvent(nullptr, keyCode, false);
      release->setFlags(kEventFlagCommand);
      keyEvents.post(EventTap::hid, *release);
    }
    x11->inputFocus();  // the server has handled the keys
    return result;
  }
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
    EXPECT_EQ(play(kKeyC), PostResult::refused) << windowClass;
    EXPECT_EQ(window.keys(), "");
  }
  for (const char* windowClass : {"Mousepad", "firefox", "Gedit", "libreoffice-writer", "Studio", "kate"}) {
    FocusedWindow window(windowClass);
    EXPECT_EQ(play(kKeyC), PostResult::posted) << windowClass;
  }
}

TEST_F(SimulatedKeys, areRefusedInPasswordPromptsAndWhereCopyingEndsTheSelection) {
  for (const char* windowClass :
       {"Pinentry-gtk-2", "Gcr-prompter", "ssh-askpass", "Emacs", "Gvim", "nvim-qt"}) {
    FocusedWindow window(windowClass);
    EXPECT_EQ(play(kKeyC), PostResult::refused) << windowClass;
    EXPECT_EQ(window.keys(), "");
  }
}

TEST_F(SimulatedKeys, copyNothingWhenTheHostSaysSo) {
  mayCopy = false;
  FocusedWindow window("Mousepad");
  EXPECT_EQ(play(kKeyC), PostResult::refused);
  EXPECT_EQ(window.keys(), "");
  EXPECT_FALSE(keyEvents.lastCopy());
}

TEST_F(SimulatedKeys, pasteNothingWhenTheHostSaysSo) {
  FocusedWindow window("Mousepad");
  EXPECT_EQ(play(kKeyC), PostResult::posted);
  EXPECT_TRUE(pumpUntil([&] { return window.keys() == "+37 +118 -118 -37"; })) << window.keys();
  mayPaste = false;
  EXPECT_EQ(play(kKeyV), PostResult::refused);
  EXPECT_EQ(window.keys(), "+37 +118 -118 -37");
  EXPECT_FALSE(keyEvents.lastPaste());
}

TEST_F(SimulatedKeys, arePastedOnlyWhereTheyWereCopied) {
  FocusedWindow window("Mousepad");
  EXPECT_EQ(play(kKeyC), PostResult::posted);
  EXPECT_EQ(play(kKeyV), PostResult::posted);
  EXPECT_EQ(play(kKeyC), PostResult::posted);
  window.keys();
  {
    FocusedWindow other("Mousepad");
    EXPECT_EQ(play(kKeyV), PostResult::refused);
    EXPECT_EQ(other.keys(), "");
  }
  window.focus();
  EXPECT_EQ(play(kKeyV), PostResult::posted);
}

TEST_F(SimulatedKeys, areNotPastedWhereTheFocusGoesInTheLastMoment) {
  FocusedWindow window("Mousepad");
  EXPECT_EQ(play(kKeyC), PostResult::posted);
  std::optional<FocusedWindow> other;
  meanwhile = [&] { other.emplace("Mousepad"); };
  EXPECT_EQ(play(kKeyV), PostResult::refused);
  ASSERT_TRUE(other);
  EXPECT_EQ(other->keys(), "");
  EXPECT_FALSE(keyEvents.lastPaste());
}

TEST_F(SimulatedKeys, useTheKeyThatTypesInsertWhereverItIs) {
  for (const char* typed : {"Delete", "BackSpace", "Return"}) {
    ASSERT_EQ(runProgram(std::string("xmodmap -e 'keycode 118 = ") + typed + "' -e 'keycode 127 = Insert'"),
              0);
    FocusedWindow window;
    type(kKeyC, kEventFlagCommand);
    type(kKeyV, kEventFlagCommand);
    EXPECT_EQ(window.keys(), "+37 +127 -127 -37 +50 +127 -127 -50") << typed;
  }
}

TEST_F(SimulatedKeys, areRefusedWhereNoKeyTypesInsertInEveryLayout) {
  for (const char* keys : {"keycode 118 = Delete", "keycode 118 = Insert Delete Insert Delete",
                           "keycode 118 = Insert Insert Delete Delete"}) {
    ASSERT_EQ(runProgram(std::string("xmodmap -e '") + keys + "'"), 0);
    FocusedWindow window;
    EXPECT_EQ(play(kKeyC), PostResult::refused) << keys;
    EXPECT_EQ(window.keys(), "") << keys;
  }
}

TEST_F(SimulatedKeys, knowWhoGotThem) {
  const auto before = std::chrono::steady_clock::now();
  FocusedWindow window;
  EXPECT_EQ(play(kKeyC), PostResult::posted);
  ASSERT_TRUE(keyEvents.lastCopy());
  EXPECT_EQ(keyEvents.lastCopy()->window, window.id());
  EXPECT_EQ(keyEvents.lastCopy()->application.process, static_cast<std::uint32_t>(getpid()));
  EXPECT_EQ(keyEvents.lastCopy()->process, static_cast<std::uint32_t>(getpid()));
  EXPECT_GE(keyEvents.lastCopy()->time, before);
  EXPECT_FALSE(keyEvents.lastPaste());
}

TEST_F(SimulatedKeys, areRefusedForKeysThatDoNotExist) {
  EXPECT_EQ(keyEvents.createKeyboardEvent(nullptr, KeyCode{52}, true), nullptr);
}

TEST(KeyEventsWithoutDisplay, areRefused) {
  LinuxKeyEvents keyEvents(nullptr);
  EXPECT_EQ(keyEvents.createSource(EventSourceState::hidSystem), nullptr);
  EXPECT_EQ(keyEvents.createKeyboardEvent(nullptr, kKeyC, true), nullptr);
  EXPECT_EQ(keyEvents.flagsState(EventSourceState::combinedSession), kNoEventFlags);
}

}  // namespace
}  // namespace lexwend::platform
