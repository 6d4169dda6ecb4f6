// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/key_events.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace lexwend::platform {
namespace {

constexpr std::uint16_t kFocusKey = 240;

struct Desktop {
  std::vector<std::string> happened;
  std::optional<FrontWindow> front = FrontWindow{7, 42U, "editor"};
  int playedBeforeFailure = 100;

  void add(std::string what) { happened.push_back(std::move(what)); }
};

class RecordingPlayer : public KeyPlayer {
 public:
  explicit RecordingPlayer(Desktop& desktop) : desktop_(desktop) {}
  bool play(std::uint16_t evdevKey, bool down, std::uint32_t /*modifiersAfter*/) override {
    desktop_.add(std::to_string(evdevKey) + (down ? " down" : " up"));
    return --desktop_.playedBeforeFailure >= 0;
  }
  bool settle() override {
    desktop_.add("settled");
    return true;
  }

 private:
  Desktop& desktop_;
};

struct ShortcutsOfWayland : testing::Test {
  WaylandKeyEvents eventsWith(bool hasFocusKey) {
    WaylandKeyEvents::Needs needs;
    needs.frontWindow = [this] {
      desktop.add("look");
      return desktop.front;
    };
    needs.mayCopy = [] { return true; };
    needs.mayPaste = [this] {
      desktop.add("asked");
      return true;
    };
    if (hasFocusKey) {
      needs.focusKey = [this](std::int64_t window) {
        desktop.add("focus key of " + std::to_string(window));
        return FocusKey{kFocusKey, Registration([this] { desktop.add("no focus key"); })};
      };
    }
    return {std::move(needs), std::make_unique<RecordingPlayer>(desktop)};
  }
  static PostResult press(WaylandKeyEvents& events, KeyCode key) {
    const auto event =
        events.createKeyboardEvent(events.createSource(EventSourceState::hidSystem), key, /*keyDown=*/true);
    event->setFlags(kEventFlagCommand);
    return events.post(EventTap::hid, *event);
  }
  std::vector<std::string> happenedAtPaste(WaylandKeyEvents& events) {
    EXPECT_EQ(press(events, kKeyC), PostResult::posted);
    desktop.happened.clear();
    EXPECT_EQ(press(events, kKeyV), PostResult::posted);
    return desktop.happened;
  }
  std::string shiftDown = std::to_string(KEY_LEFTSHIFT) + " down";
  std::string insertDown = std::to_string(KEY_INSERT) + " down";
  Desktop desktop;
};

TEST_F(ShortcutsOfWayland, giveTheWindowTheKeyboardRightBeforeAPaste) {
  auto events = eventsWith(true);
  EXPECT_EQ(happenedAtPaste(events),
            (std::vector<std::string>{"focus key of 7", "asked", "look", "240 down", "240 up", shiftDown,
                                      insertDown, "settled", "no focus key"}));
}

TEST_F(ShortcutsOfWayland, lookAtTheWindowLastBeforeAPaste) {
  auto events = eventsWith(false);
  EXPECT_EQ(happenedAtPaste(events),
            (std::vector<std::string>{"asked", "look", shiftDown, insertDown, "settled"}));
}

TEST_F(ShortcutsOfWayland, pasteNothingIntoAnotherWindow) {
  auto events = eventsWith(true);
  EXPECT_EQ(press(events, kKeyC), PostResult::posted);
  desktop.front->id = 8;
  desktop.happened.clear();
  EXPECT_EQ(press(events, kKeyV), PostResult::refused);
  EXPECT_EQ(desktop.happened, (std::vector<std::string>{"focus key of 7", "asked", "look", "no focus key"}));
}

TEST_F(ShortcutsOfWayland, endWithTheFirstKeyThatIsNotTaken) {
  auto events = eventsWith(false);
  desktop.playedBeforeFailure = 0;
  EXPECT_EQ(press(events, kKeyC), PostResult::refused);
  EXPECT_EQ(desktop.happened.size(), 2U) << "the look and one key";
}

/// Remembers the keys: "+29 +110 -110 -29" (evdev codes).
class RememberingPlayer : public KeyPlayer {
 public:
  explicit RememberingPlayer(std::string& keys) : keys_(keys) {}
  bool play(std::uint16_t evdevKey, bool down, std::uint32_t) override {
    keys_ += (keys_.empty() ? "" : " ") + std::string(down ? "+" : "-") + std::to_string(evdevKey);
    return true;
  }
  bool settle() override { return true; }

 private:
  std::string& keys_;
};

struct WaylandShortcuts : testing::Test {
  WaylandKeyEvents make(bool refusesUnknownWindows) {
    return {{[this] { return front; },
             [this] {
               ++questions;
               return true;
             },
             [] { return true; },
             refusesUnknownWindows,
             {}},
            std::make_unique<RememberingPlayer>(keys)};
  }
  static PostResult press(WaylandKeyEvents& keyEvents, KeyCode key) {
    const auto event = keyEvents.createKeyboardEvent(nullptr, key, true);
    event->setFlags(kEventFlagCommand);
    return keyEvents.post(EventTap::hid, *event);
  }

  std::optional<FrontWindow> front = FrontWindow{1, 1, "editor"};
  int questions = 0;
  std::string keys;
};

TEST_F(WaylandShortcuts, goToTheWindowThatWasCopiedFrom) {
  WaylandKeyEvents keyEvents = make(false);
  EXPECT_EQ(press(keyEvents, kKeyC), PostResult::posted);
  ASSERT_TRUE(keyEvents.lastCopy());
  EXPECT_EQ(keyEvents.lastCopy()->process, 1);
  front->id = 2;
  EXPECT_EQ(press(keyEvents, kKeyV), PostResult::refused);
  EXPECT_FALSE(keyEvents.lastPaste());
  front->id = 1;
  EXPECT_EQ(press(keyEvents, kKeyV), PostResult::posted);
  ASSERT_TRUE(keyEvents.lastPaste());
  EXPECT_EQ(keyEvents.lastPaste()->process, 1);
  EXPECT_EQ(keys, "+29 +110 +42 +110");
}

TEST_F(WaylandShortcuts, doNotGoToATerminal) {
  WaylandKeyEvents keyEvents = make(false);
  front->windowClass = "foot";
  EXPECT_EQ(press(keyEvents, kKeyC), PostResult::refused);
  EXPECT_EQ(keys, "");
  EXPECT_EQ(questions, 0);
}

TEST_F(WaylandShortcuts, goToAnUnknownWindowExceptWhereThoseAreRefused) {
  front.reset();
  WaylandKeyEvents refusing = make(true);
  EXPECT_EQ(press(refusing, kKeyC), PostResult::refused);
  EXPECT_EQ(keys, "");
  EXPECT_FALSE(refusing.lastCopy());
  WaylandKeyEvents other = make(false);
  EXPECT_EQ(press(other, kKeyC), PostResult::posted);
  EXPECT_EQ(keys, "+29 +110");
}

}  // namespace
}  // namespace lexwend::platform
