// SPDX-License-Identifier: MIT
// The recorder window, the monitor of its keys, and alerts: what the program shows and waits for.
#include <set>

#include "platform/alerts.h"
#include "platform/key_monitor.h"
#include "platform/recorder_window.h"
#include "platform/run_loop.h"
#include "platform/workspace.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::KeyDisposition;
using platform::KeyDownEvent;
using Button = HostUnderTest::RecorderButton;

using platform::kKeyF5;
using platform::kKeySpace;
using platform::kNoModifiers;

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
    return underTest->waitUntil([&] {
      const auto shown = underTest->shownRecorder();
      return shown.has_value() == combination.has_value() && (!shown || shown->combination == *combination);
    });
  }
  void show() {
    window->showAndMakeKey();
    ASSERT_TRUE(shows("F2"));
  }

  int saves = 0, cancels = 0, closes = 0;
  std::unique_ptr<platform::RecorderWindow> window;
};

TEST_F(RecorderWindowContract, appearsOnlyWhenItIsShown) {
  EXPECT_FALSE(underTest->shownRecorder().has_value());
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

TEST_F(RecorderWindowContract, theMessageIsShownInTheColorOfItsRole) {
  using platform::ColorRole;
  show();
  std::set<std::string> colors;
  const auto color = [&](ColorRole role, std::string_view text) {
    window->setMessage(text, role);
    EXPECT_TRUE(underTest->waitUntil([&] {
      const auto shown = underTest->shownRecorder();
      return shown && shown->message == text;
    }));
    const auto shown = underTest->shownRecorder();
    return shown ? shown->messageColor : "(no window)";
  };
  const auto red = color(ColorRole::systemRed, "שגיאה");
  for (const auto role : {ColorRole::label, ColorRole::secondaryLabel, ColorRole::quaternaryLabel}) {
    colors.insert(color(role, "message " + std::to_string(static_cast<int>(role))));
  }
  colors.insert(red);
  EXPECT_EQ(colors.size(), 4U) << "a color for each role";
  EXPECT_EQ(color(ColorRole::systemRed, "again"), red);
}

class DestroyedRecorderWindow : public RecorderWindowContract {
 protected:
  void showAnother(platform::RecorderWindowEvents events) {
    destructions = 0;
    window = host().recorderWindows().create(look(), std::move(events));
    show();
  }
  void expectDestroyed() {
    EXPECT_TRUE(underTest->waitUntil([&] { return destructions == 1; }));
    EXPECT_TRUE(shows(std::nullopt));
    EXPECT_EQ(destructions, 1) << "nothing is reported of a window that is gone";
  }
  int destructions = 0;
  const std::function<void()> destroy = [this] {
    ++destructions;
    window.reset();
  };
};

TEST_F(DestroyedRecorderWindow, mayGoAtEachOfTheUsersClicks) {
  for (const auto button : {Button::save, Button::cancel, Button::closeBox}) {
    SCOPED_TRACE(static_cast<int>(button));
    showAnother({destroy, destroy, destroy});
    EXPECT_TRUE(underTest->clickRecorder(button));
    expectDestroyed();
  }
}

TEST_F(DestroyedRecorderWindow, mayGoWhileAClickClosesIt) {
  showAnother({{}, [this] { window->close(); }, destroy});
  EXPECT_TRUE(underTest->clickRecorder(Button::cancel));
  expectDestroyed();
}

class KeyMonitorContract : public RecorderWindowContract {};

TEST_F(KeyMonitorContract, seesEveryKeyWhileTheWindowHasTheKeyboard) {
  std::vector<KeyDownEvent> seen;
  const auto token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent& event) {
    seen.push_back(event);
    return KeyDisposition::consumed;
  });
  show();
  underTest->userPresses(kKeyF5, kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen.size() == 1; }));
  underTest->userPresses(platform::kKeyA, platform::kCmdKey | platform::kShiftKey);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen.size() == 2; }));
  ASSERT_EQ(seen.size(), 2U);
  constexpr platform::EventFlags kAll = platform::kEventFlagShift | platform::kEventFlagControl |
                                        platform::kEventFlagOption | platform::kEventFlagCommand;
  EXPECT_EQ(seen[0].keyCode, kKeyF5);
  EXPECT_EQ(seen[0].modifierFlags & kAll, platform::kNoEventFlags);
  EXPECT_EQ(seen[1].keyCode, platform::kKeyA);
  EXPECT_EQ(seen[1].modifierFlags & kAll, platform::kEventFlagCommand | platform::kEventFlagShift);
}

TEST_F(KeyMonitorContract, aKeyThatIsPassedOnReachesTheControlAndAConsumedOneDoesNot) {
  // The space bar presses the button that has the focus.
  auto disposition = KeyDisposition::passedOn;
  int seen = 0;
  const auto token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    ++seen;
    return disposition;
  });
  show();
  const int tabs = underTest->tabsToTheFirstButton();
  for (int i = 0; i < tabs; ++i) underTest->userPresses(platform::kKeyTab, kNoModifiers);
  underTest->userPresses(kKeyF5, kNoModifiers);  // once it is here, the one before it has been handled
  ASSERT_TRUE(underTest->waitUntil([&] { return seen == tabs + 1; }));
  seen = 0;
  disposition = KeyDisposition::consumed;
  underTest->userPresses(kKeySpace, kNoModifiers);
  underTest->userPresses(kKeyF5, kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen == 2; }));
  EXPECT_EQ(saves, 0);
  disposition = KeyDisposition::passedOn;
  underTest->userPresses(kKeySpace, kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return saves == 1; }));
  EXPECT_EQ(seen, 3);
}

TEST_F(KeyMonitorContract, isSilentOnceItsTokenIsGone) {
  int seen = 0;
  auto token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    ++seen;
    return KeyDisposition::consumed;
  });
  show();
  token.cancel();
  underTest->userPresses(kKeyF5, kNoModifiers);
  underTest->waitUntil([] { return false; }, 100ms);
  EXPECT_EQ(seen, 0);
}

TEST_F(KeyMonitorContract, mayRemoveItselfFromItsHandler) {
  int seen = 0;
  platform::Registration token;
  token = host().keyMonitor().addLocalKeyDownMonitor([&](const KeyDownEvent&) {
    token.cancel();
    ++seen;
    return KeyDisposition::consumed;
  });
  show();
  underTest->userPresses(kKeyF5, kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return seen == 1; }));
  underTest->userPresses(kKeyF5, kNoModifiers);
  underTest->waitUntil([] { return false; }, 100ms);
  EXPECT_EQ(seen, 1);
}

class AlertsContract : public ContractTest {
 protected:
  const platform::Alert alert{"נדרש אישור נגישות", "informative", {"פתח הגדרות", "ביטול"}};
};

TEST_F(AlertsContract, theResponseSaysWhichButtonWasPressed) {
  underTest->answerNextAlert(0);
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn);
  underTest->answerNextAlert(1);
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn + 1);
}

TEST_F(AlertsContract, closingTheWindowIsTheLastButtonsResponse) {
  underTest->answerNextAlert(std::nullopt);
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn + 1);
  underTest->answerNextAlert(std::nullopt);
  EXPECT_EQ(host().alerts().runModal({"one", "button", {"only"}}), platform::kAlertFirstButtonReturn);
}

TEST_F(AlertsContract, timersAndObserversGoOnWhileAnAlertIsOpen) {
  int ticks = 0;
  int wakes = 0;
  const auto observer = host().workspace().observeDidWake([&] { ++wakes; });
  auto timer = host().runLoop().scheduledRepeatingTimer(10ms, [&] {
    if (++ticks == 1) underTest->wakeFromSleep();
  });
  underTest->answerNextAlert(0, [&] { return ticks >= 3 && wakes > 0; });
  EXPECT_EQ(host().alerts().runModal(alert), platform::kAlertFirstButtonReturn);
  EXPECT_GE(ticks, 3);
  EXPECT_EQ(wakes, 1);
  timer.cancel();
}

}  // namespace
}  // namespace lexwend::contract
