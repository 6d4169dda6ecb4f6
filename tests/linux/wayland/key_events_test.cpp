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

}  // namespace
}  // namespace lexwend::platform
