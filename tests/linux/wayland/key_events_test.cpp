// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/key_events.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

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
             [] { return true; }, refusesUnknownWindows},
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
  EXPECT_TRUE(keyEvents.lastCopy());
  front->id = 2;
  EXPECT_EQ(press(keyEvents, kKeyV), PostResult::refused);
  EXPECT_FALSE(keyEvents.lastPaste());
  front->id = 1;
  EXPECT_EQ(press(keyEvents, kKeyV), PostResult::posted);
  EXPECT_TRUE(keyEvents.lastPaste());
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
