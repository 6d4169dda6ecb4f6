// SPDX-License-Identifier: MIT
#include <chrono>
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

using doubles::windows::Control;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

RecorderWindowLook exampleLook() {
  RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  look.title = "מקש קיצור";
  look.level = 3;
  look.centered = true;
  look.prompt = {.text = "לחץ",
                 .frame = {20, 170, 360, 20},
                 .alignment = TextAlignment::right,
                 .fontSize = 13,
                 .fontWeight = FontWeight::medium,
                 .background = {}};
  look.combination = {.text = "F2",
                      .frame = {20, 108, 360, 50},
                      .alignment = TextAlignment::center,
                      .fontSize = 30,
                      .fontWeight = FontWeight::semibold,
                      .background = ColorRole::quaternaryLabel,
                      .cornerRadius = 10};
  look.message = {.text = "הצירוף הנוכחי",
                  .frame = {20, 56, 360, 44},
                  .alignment = TextAlignment::right,
                  .fontSize = 11,
                  .color = ColorRole::secondaryLabel,
                  .wraps = true,
                  .background = {}};
  look.save = {.title = "שמור", .frame = {20, 14, 110, 32}, .enabled = false};
  look.cancel = {.title = "ביטול", .frame = {136, 14, 110, 32}};
  return look;
}

struct MacRecorderWindows : InMacApplication {
  std::vector<std::string> events;
  std::unique_ptr<RecorderWindow> window;

  RecorderWindowEvents recordingEvents() {
    return {.save = [this] { events.push_back("save"); },
            .cancel = [this] { events.push_back("cancel"); },
            .willClose = [this] { events.push_back("willClose"); }};
  }
  void open(const RecorderWindowLook& look = exampleLook()) {
    window = host->recorderWindows().create(look, recordingEvents());
  }
  static doubles::windows::Window seen() { return doubles::windows::all().at(0); }
  static Control control(std::size_t index) { return seen().controls.at(index); }

  void TearDown() override {
    window = nullptr;
    OnMac::TearDown();
  }
};

TEST_F(MacRecorderWindows, makesTheWindowAsTheLookSays) {
  open();
  const doubles::windows::Window made = seen();
  EXPECT_EQ(made.title, "מקש קיצור");
  EXPECT_EQ(made.contentRect, (doubles::Rect{0, 0, 400, 210}));
  EXPECT_EQ(made.styleMask, 3u);  // titled and closable
  EXPECT_EQ(made.backing, 2u);    // buffered
  EXPECT_FALSE(made.isDeferred);
  EXPECT_EQ(made.level, 3);
  EXPECT_FALSE(made.isReleasedWhenClosed);
  EXPECT_TRUE(made.isCentered);
  EXPECT_TRUE(made.hasController);
  EXPECT_FALSE(made.isVisible);
}

TEST_F(MacRecorderWindows, followsEveryFieldOfTheLook) {
  RecorderWindowLook look = exampleLook();
  look.titled = false;
  look.closable = false;
  look.resizable = true;
  look.miniaturizable = true;
  look.deferred = true;
  look.level = 0;
  look.centered = false;
  look.prompt.alignment = TextAlignment::natural;
  open(look);
  EXPECT_EQ(control(0).alignment, 4);
  const doubles::windows::Window made = seen();
  EXPECT_EQ(made.styleMask, 12u);  // resizable and miniaturizable
  EXPECT_TRUE(made.isDeferred);
  EXPECT_EQ(made.level, 0);
  EXPECT_FALSE(made.isCentered);
  look.titled = look.closable = true;
  open(look);
  EXPECT_EQ(doubles::windows::all().back().styleMask, 15u);
}

TEST_F(MacRecorderWindows, drawsThePromptTheCombinationAndTheMessage) {
  open();
  ASSERT_EQ(seen().controls.size(), 5u);
  const Control prompt = control(0);
  EXPECT_EQ(prompt.kind, "label");
  EXPECT_EQ(prompt.text, "לחץ");
  EXPECT_EQ(prompt.frame, (doubles::Rect{20, 170, 360, 20}));
  EXPECT_EQ(prompt.fontSize, 13);
  EXPECT_EQ(prompt.color, "labelColor");
  EXPECT_FALSE(prompt.hasLayer);
  const Control combination = control(1);
  EXPECT_EQ(combination.kind, "label");
  EXPECT_EQ(combination.text, "F2");
  EXPECT_EQ(combination.frame, (doubles::Rect{20, 108, 360, 50}));
  EXPECT_EQ(combination.fontSize, 30);
  EXPECT_TRUE(combination.hasLayer);
  EXPECT_EQ(combination.layerBackground, "quaternaryLabelColor");
  EXPECT_EQ(combination.cornerRadius, 10);
  const Control message = control(2);
  EXPECT_EQ(message.kind, "wrapping label");
  EXPECT_EQ(message.text, "הצירוף הנוכחי");
  EXPECT_EQ(message.frame, (doubles::Rect{20, 56, 360, 44}));
  EXPECT_EQ(message.fontSize, 11);
  EXPECT_EQ(message.color, "secondaryLabelColor");
  // The values of the two alignments differ by processor; these are those of x86-64.
  EXPECT_EQ(prompt.alignment, 1);       // right
  EXPECT_EQ(combination.alignment, 2);  // centre
  EXPECT_EQ(message.alignment, 1);
  EXPECT_LT(message.fontWeight, prompt.fontWeight);
  EXPECT_LT(prompt.fontWeight, combination.fontWeight);
}

TEST_F(MacRecorderWindows, drawsTheButtons) {
  open();
  const Control save = control(3);
  EXPECT_EQ(save.kind, "button");
  EXPECT_EQ(save.text, "שמור");
  EXPECT_EQ(save.frame, (doubles::Rect{20, 14, 110, 32}));
  EXPECT_EQ(save.bezelStyle, 1u);
  EXPECT_FALSE(save.isEnabled);
  const Control cancel = control(4);
  EXPECT_EQ(cancel.text, "ביטול");
  EXPECT_EQ(cancel.frame, (doubles::Rect{136, 14, 110, 32}));
  EXPECT_EQ(cancel.bezelStyle, 1u);
  EXPECT_TRUE(cancel.isEnabled);
}

TEST_F(MacRecorderWindows, changesTheCombinationTheMessageAndTheSaveButton) {
  open();
  window->setCombination("⌃⌥⇧⌘F5");
  window->setMessage("אפשר לשמור", ColorRole::systemRed);
  window->setSaveEnabled(true);
  EXPECT_EQ(control(1).text, "⌃⌥⇧⌘F5");
  EXPECT_EQ(control(2).text, "אפשר לשמור");
  EXPECT_EQ(control(2).color, "systemRedColor");
  EXPECT_TRUE(control(3).isEnabled);
  window->setMessage("עוד", ColorRole::secondaryLabel);
  window->setSaveEnabled(false);
  EXPECT_EQ(control(2).color, "secondaryLabelColor");
  EXPECT_FALSE(control(3).isEnabled);
}

TEST_F(MacRecorderWindows, showsTheWindowKeyAndFront) {
  open();
  doubles::forgetCalls();
  window->showAndMakeKey();
  EXPECT_TRUE(seen().isVisible);
  EXPECT_TRUE(seen().isKey);
  // Once by the controller, once more by the host itself, which does not rely on that.
  std::vector<std::string> calls;
  for (const doubles::Call& call : doubles::calls()) calls.push_back(call.name);
  EXPECT_THAT(calls, ElementsAre("-[NSWindowController showWindow:]", "-[NSWindow makeKeyAndOrderFront:]",
                                 "-[NSWindow makeKeyAndOrderFront:]"));
}

TEST_F(MacRecorderWindows, reportsItsButtons) {
  open();
  window->setSaveEnabled(true);
  window->showAndMakeKey();
  doubles::windows::click("שמור");
  doubles::windows::click("ביטול");
  EXPECT_THAT(events, ElementsAre("save", "cancel"));
}

TEST_F(MacRecorderWindows, reportsOnceThatItCloses) {
  open();
  window->showAndMakeKey();
  window->close();
  EXPECT_THAT(events, ElementsAre("willClose"));
  window->close();
  EXPECT_THAT(events, ElementsAre("willClose"));
  EXPECT_FALSE(seen().isVisible);
}

TEST_F(MacRecorderWindows, reportsItsCloseBoxOnceEvenWhenItIsClosedFromThere) {
  window = host->recorderWindows().create(exampleLook(), {.save = [] {},
                                                          .cancel = [] {},
                                                          .willClose =
                                                              [this] {
                                                                events.push_back("willClose");
                                                                window->close();
                                                              }});
  window->showAndMakeKey();
  doubles::windows::closeByUser();
  EXPECT_THAT(events, ElementsAre("willClose"));
}

TEST_F(MacRecorderWindows, maybeDestroyedByAnyOfItsEvents) {
  const auto destroying = [this](const char* name) {
    return [this, name] {
      events.push_back(name);
      window = nullptr;
    };
  };
  const RecorderWindowEvents all = {
      .save = destroying("save"), .cancel = destroying("cancel"), .willClose = destroying("willClose")};
  RecorderWindowLook look = exampleLook();
  look.save.enabled = true;
  // In an event of its own, at whose end nobody but the window's owner keeps it.
  const auto show = [&] {
    host->runLoop().dispatchAfter(0ms, [&] {
      window = host->recorderWindows().create(look, all);
      window->showAndMakeKey();
    });
    doubles::time::advance(0ms);
  };
  show();
  doubles::windows::click("שמור");
  show();
  doubles::windows::click("ביטול");
  show();
  doubles::windows::closeByUser();
  show();
  window->close();
  EXPECT_THAT(events, ElementsAre("save", "cancel", "willClose", "willClose"));
}

TEST_F(MacRecorderWindows, takesTheWindowAwayWithoutATellingWhenItIsDestroyed) {
  open();
  window->showAndMakeKey();
  window = nullptr;
  EXPECT_TRUE(events.empty());
  for (const auto& left : doubles::windows::all()) EXPECT_FALSE(left.isVisible);
}

TEST_F(MacRecorderWindows, goesOnWhenAnEventThrows) {
  const auto throwing = [] { throw std::runtime_error("from the event"); };
  RecorderWindowLook look = exampleLook();
  look.save.enabled = true;
  window =
      host->recorderWindows().create(look, {.save = throwing, .cancel = throwing, .willClose = throwing});
  window->showAndMakeKey();
  doubles::windows::click("שמור");
  doubles::windows::click("ביטול");
  window->close();
  EXPECT_FALSE(seen().isVisible);
}

struct MacAlertsService : InMacApplication {
  Alerts& service = host->alerts();
};

TEST_F(MacAlertsService, showsTextsAndButtonsAndGivesEachAnswer) {
  const Alert alert = {
      .messageText = "נדרש אישור נגישות", .informativeText = "כדי לתקן", .buttons = {"פתח הגדרות", "ביטול"}};
  doubles::alerts::answerNext(1000);
  EXPECT_EQ(service.runModal(alert), kAlertFirstButtonReturn);
  doubles::alerts::answerNext(1001);
  EXPECT_EQ(service.runModal(alert), kAlertFirstButtonReturn + 1);
  const auto shown = doubles::alerts::shown();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].messageText, "נדרש אישור נגישות");
  EXPECT_EQ(shown[0].informativeText, "כדי לתקן");
  EXPECT_THAT(shown[0].buttons, ElementsAre("פתח הגדרות", "ביטול"));
}

TEST_F(MacAlertsService, hearsReturnForTheFirstButtonAndEscapeForTheLastOfSeveral) {
  Alert alert = {.messageText = "שאלה", .informativeText = "", .buttons = {"כן"}};
  doubles::alerts::answerNextWithReturn();
  EXPECT_EQ(service.runModal(alert), kAlertFirstButtonReturn);
  alert.buttons.emplace_back("לא");
  doubles::alerts::answerNextWithReturn();
  EXPECT_EQ(service.runModal(alert), kAlertFirstButtonReturn);
  doubles::alerts::answerNextWithEscape();
  EXPECT_EQ(service.runModal(alert), kAlertFirstButtonReturn + 1);
}

}  // namespace
}  // namespace lexwend::platform::mac
