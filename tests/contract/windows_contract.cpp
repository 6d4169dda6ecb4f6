// SPDX-License-Identifier: MIT
// The recorder window, the monitor of its keys, and alerts: what the program shows and waits for.
#include "platform/alerts.h"
#include "platform/key_monitor.h"
#include "platform/recorder_window.h"
#include "platform/run_loop.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::KeyDisposition;
using platform::KeyDownEvent;
using Button = HostUnderTest::RecorderButton;

platform::RecorderWindowLook look() {
  platform::RecorderWindowLook made;
  made.contentRect = {0, 0, 400, 210};
  made.title = "מקש קיצור";
  made.level = 3;
  made.centered = true;
  made.prompt.text = "prompt";
  made.prompt.frame = {20, 170, 360, 20};
  made.combination.text = "F2";
  made.combination.frame = {20, 108, 360, 50};
  made.message.text = "message";
  made.message.frame = {20, 56, 360, 44};
  made.save.title = "שמור";
  made.save.frame = {20, 14, 110, 32};
  made.cancel.title = "ביטול";
  made.cancel.frame = {136, 14, 110, 32};
  return made;
}

class RecorderWindowContract : public ContractTest {
 protected:
  RecorderWindowContract() {
    platform::RecorderWindowEvents events;
    events.save = [this] { ++saves; };
    events.cancel = [this] { ++cancels; };
    events.willClose = [this] { ++closes; };
    window = host().recorderWindows().create(look(), std::move(events));
  }
  bool shows(const std::optional<std::string>& combination) {
    return underTest->waitUntil([&] { return underTest->shownCombination() == combination; });
  }
  void show() {
    window->showAndMakeKey();
    ASSERT_TRUE(shows("F2"));
  }

  int saves = 0, cancels = 0, closes = 0;
  std::unique_ptr<platform::RecorderWindow> window;
};

TEST_F(RecorderWindowContract, appearsOnlyWhenItIsShown) {
  EXPECT_EQ(underTest->shownCombination(), std::nullopt);
  show();
  window->setCombination("⌘K");
  EXPECT_TRUE(shows("⌘K"));
}

TEST_F(RecorderWindowContract, buttonsReportTheirClicks) {
  show();
  EXPECT_TRUE(underTest->clickRecorder(Button::save));
  EXPECT_TRUE(underTest->waitUntil([&] { return saves == 1; }));
  EXPECT_TRUE(underTest->clickRecorder(Button::cancel));
  EXPECT_TRUE(underTest->waitUntil([&] { return cancels == 1; }));
  EXPECT_EQ(closes, 0);
}

TEST_F(RecorderWindowContract, aDisabledSaveButtonCannotBeClicked) {
  show();
  window->setSaveEnabled(false);
  EXPECT_FALSE(underTest->clickRecorder(Button::save));
  underTest->waitUntil([] { return false; }, 50ms);
  EXPECT_EQ(saves, 0);
}

TEST_F(RecorderWindowContract, closeReportsOnceBeforeItReturnsAndTakesTheWindowAway) {
  show();
  window->close();
  EXPECT_EQ(closes, 1);
  window->close();
  EXPECT_EQ(closes, 1);
  EXPECT_TRUE(shows(std::nullopt));
}

TEST_F(RecorderWindowContract, theCloseBoxReportsOnce) {
  show();
  EXPECT_TRUE(underTest->clickRecorder(Button::closeBox));
  EXPECT_TRUE(underTest->waitUntil([&] { return closes == 1; }));
  window->close();
  EXPECT_EQ(closes, 1);
  EXPECT_TRUE(shows(std::nullopt));
}

TEST_F(RecorderWindowContract, anEventMayDestroyTheWindow) {
  std::unique_ptr<platform::RecorderWindow> own;
  int cancelled = 0;
  platform::RecorderWindowEvents events;
  events.cancel = [&] {
    ++cancelled;
    own->close();
    own.reset();
  };
  own = host().recorderWindows().create(look(), std::move(events));
  own->showAndMakeKey();
  ASSERT_TRUE(shows("F2"));
  EXPECT_TRUE(underTest->clickRecorder(Button::cancel));
  EXPECT_TRUE(underTest->waitUntil([&] { return cancelled == 1; }));
  EXPECT_EQ(own, nullptr);
  EXPECT_TRUE(shows(std::nullopt));
}

class KeyMonitorContract : public RecorderWindowContract {};

TEST_F(KeyMonitorContract, seesEveryKeyWhileTheWindowHasTheKeyboard) {
  std::vector<KeyDownEvent> seen;
  const auto token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent& event) {
    seen.push_back(event);
    return KeyDisposition::consumed;
  });
  show();
  underTest->userPresses(96, 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen.size() == 1; }));
  underTest->userPresses(0, 0x0100 | 0x0200);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen.size() == 2; }));
  ASSERT_EQ(seen.size(), 2U);
  constexpr platform::EventFlags kAll = platform::kEventFlagShift | platform::kEventFlagControl |
                                        platform::kEventFlagOption | platform::kEventFlagCommand;
  EXPECT_EQ(seen[0].keyCode, 96);
  EXPECT_EQ(seen[0].modifierFlags & kAll, 0U);
  EXPECT_EQ(seen[1].keyCode, 0);
  EXPECT_EQ(seen[1].modifierFlags & kAll, platform::kEventFlagCommand | platform::kEventFlagShift);
}

TEST_F(KeyMonitorContract, isSilentOnceItsTokenIsGone) {
  int seen = 0;
  auto token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    ++seen;
    return KeyDisposition::consumed;
  });
  show();
  token.reset();
  underTest->userPresses(96, 0);
  underTest->waitUntil([] { return false; }, 100ms);
  EXPECT_EQ(seen, 0);
}

TEST_F(KeyMonitorContract, mayRemoveItselfFromItsHandler) {
  int seen = 0;
  platform::KeyMonitorTokenRef token;
  token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    token.reset();
    ++seen;
    return KeyDisposition::consumed;
  });
  show();
  underTest->userPresses(96, 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen == 1; }));
  underTest->userPresses(96, 0);
  underTest->waitUntil([] { return false; }, 100ms);
  EXPECT_EQ(seen, 1);
}

class AlertsContract : public ContractTest {
 protected:
  const platform::Alert alert{"נדרש אישור נגישות", "informative", {"פתח הגדרות", "ביטול"}};
};

TEST_F(AlertsContract, theResponseSaysWhichButtonWasPressed) {
  underTest->answerNextAlert(0, 0ms);
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn);
  underTest->answerNextAlert(1, 0ms);
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn + 1);
}

TEST_F(AlertsContract, timersGoOnWhileAnAlertIsOpen) {
  int ticks = 0;
  const auto timer = host().runLoop().scheduledRepeatingTimer(10ms, [&](platform::Timer&) { ++ticks; });
  underTest->answerNextAlert(1, 1s);
  host().alerts().runModal(alert);
  EXPECT_GE(ticks, 3);
  timer->invalidate();
}

}  // namespace
}  // namespace lexwend::contract
