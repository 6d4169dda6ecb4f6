// SPDX-License-Identifier: MIT
#include "hotkey/hot_key_recorder.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hotkey/hot_key_center.h"
#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

using platform::ColorRole;
using platform::FakeHost;
using platform::KeyDisposition;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr platform::Modifiers kCommand = platform::kCmdKey;
constexpr platform::Modifiers kShift = platform::kShiftKey;
constexpr platform::Modifiers kOption = platform::kOptionKey;
constexpr platform::Modifiers kControl = platform::kControlKey;

constexpr platform::KeyCode kA = platform::kKeyA;
constexpr platform::KeyCode kReturn = platform::kKeyReturn;
constexpr platform::KeyCode kEscape = platform::kKeyEscape;
constexpr platform::KeyCode kF5 = platform::kKeyF5;

const std::string kCurrent =
    "הצירוף הנוכחי. מקש F לבד, או מקש אחר יחד עם ⌘, ⌃ או ⌥. במקלדת מק, מקשי F נלחצים עם מקש הגלובוס.";
const std::string kCanSave = "אפשר לשמור. הצירוף יחליף את הקודם מיד.";
const std::string kPlainKey = "מקש רגיל לבד יחסום את ההקלדה שלו בכל המחשב. הוסף ⌘, ⌃ או ⌥, או בחר מקש F.";

std::string reservedMessage(const std::string& name) {
  return "הצירוף " + name + " שמור למערכת (העתקה, הדבקה, סגירה וכדומה). בחר צירוף אחר.";
}

/// A recorder on the screen.
struct Recorder {
  FakeHost host;
  platform::HostScope scope{host};
  std::vector<bool> done;
  std::shared_ptr<HotKeyRecorderWindowController> controller;

  explicit Recorder(const std::function<void(FakeHost&)>& prepare = {}) {
    if (prepare) prepare(host);
    controller = HotKeyRecorderWindowController::create([this](bool saved) { done.push_back(saved); });
    controller->present();
  }
  /// Fails the test that asks when no window is on the screen.
  platform::FakeRecorderState window() {
    const auto* const shown = host.recorderWindows().window();
    EXPECT_NE(shown, nullptr);
    return shown != nullptr ? *shown : platform::FakeRecorderState{};
  }
  bool isOpen() { return host.recorderWindows().window() != nullptr; }
  void press(platform::KeyCode keyCode, platform::Modifiers modifiers = platform::kNoModifiers) {
    EXPECT_EQ(host.userPresses(keyCode, modifiers), platform::KeyFate::ownWindow);
  }
  bool storesNothing() { return host.standardUserDefaults().all().empty(); }
  std::pair<std::int64_t, std::int64_t> stored() {
    const auto& all = host.standardUserDefaults().all();
    return {std::get<std::int64_t>(all.at("hotKeyCode")), std::get<std::int64_t>(all.at("hotKeyModifiers"))};
  }
  /// What the window says about the last combination.
  void expectShows(const std::string& combination, const std::string& message, ColorRole color,
                   bool canSave) {
    const auto shown = window();
    EXPECT_EQ(shown.combination, combination);
    EXPECT_EQ(shown.message, message);
    EXPECT_EQ(shown.messageColor, color);
    EXPECT_EQ(shown.saveEnabled, canSave);
  }
};

TEST(HotKeyRecorder, opensWithTheStoredCombination) {
  Recorder r([](FakeHost& host) {
    host.standardUserDefaults().put("hotKeyCode", std::int64_t{17});
    host.standardUserDefaults().put("hotKeyModifiers", std::int64_t{0x0900});
  });
  r.expectShows("⌥⌘T", kCurrent, ColorRole::secondaryLabel, false);
}

TEST(HotKeyRecorder, isNotShownBeforeItIsPresented) {
  FakeHost host;
  const platform::HostScope scope(host);
  const auto controller = HotKeyRecorderWindowController::create([](bool) { ADD_FAILURE(); });
  EXPECT_THAT(host.calls().all(), ElementsAre("recorderWindows.create"));
  EXPECT_EQ(host.recorderWindows().window(), nullptr);
}

TEST(HotKeyRecorder, presentsInOrder) {
  FakeHost host;
  const platform::HostScope scope(host);
  const auto controller = HotKeyRecorderWindowController::create([](bool) { ADD_FAILURE(); });
  host.calls().clear();
  controller->present();
  EXPECT_THAT(host.calls().all(), ElementsAre("keyMonitor.addLocalKeyDownMonitor",
                                              "application.activate true", "recorderWindow.showAndMakeKey"));
}

TEST(HotKeyRecorder, doesNotTouchTheHotKeyService) {
  Recorder r;
  r.press(kF5);
  r.press(kReturn);
  EXPECT_THAT(r.host.calls().of("hotKeys."), IsEmpty());
}

TEST(HotKeyRecorder, returnWithAModifierIsRecorded) {
  Recorder r;
  r.press(kF5);
  r.press(kReturn, kControl);
  r.expectShows("⌃↩", kCanSave, ColorRole::secondaryLabel, true);
  EXPECT_THAT(r.done, IsEmpty());
}

TEST(HotKeyRecorder, theLastValidCombinationIsTheOneThatIsSaved) {
  Recorder r;
  r.press(kF5);
  r.press(kA);
  r.press(kA, kOption);
  r.expectShows("⌥A", kCanSave, ColorRole::secondaryLabel, true);
  r.host.recorderWindows().clickSave();
  EXPECT_EQ(r.stored(), std::make_pair(std::int64_t{0}, std::int64_t{number(kOption)}));
}

TEST(HotKeyRecorder, saveButtonWritesCodeThenMaskAndReports) {
  Recorder r;
  r.press(kF5, kControl | kOption | kShift | kCommand);
  r.host.calls().clear();
  EXPECT_TRUE(r.host.recorderWindows().clickSave());
  EXPECT_THAT(r.host.calls().all(), ElementsAre("userDefaults.setInteger hotKeyCode 96",
                                                "userDefaults.setInteger hotKeyModifiers 6912",
                                                "keyMonitor.remove", "recorderWindow.close"));
  EXPECT_THAT(r.done, ElementsAre(true));
  EXPECT_FALSE(r.isOpen());
}

TEST(HotKeyRecorder, closeBoxReportsExactlyOnce) {
  Recorder r;
  r.press(kF5);
  EXPECT_TRUE(r.host.recorderWindows().clickCloseBox());
  EXPECT_THAT(r.done, ElementsAre(false));
  EXPECT_TRUE(r.storesNothing());
  EXPECT_FALSE(r.isOpen());
  EXPECT_EQ(r.host.calls().count("recorderWindow.close"), 1U);
}

TEST(HotKeyRecorder, reportsLastWhenMonitorAndWindowAreGone) {
  FakeHost host;
  const platform::HostScope scope(host);
  bool reported = false;
  const auto controller = HotKeyRecorderWindowController::create([&](bool) {
    reported = true;
    EXPECT_THAT(host.calls().all(), ElementsAre("keyMonitor.remove", "recorderWindow.close"));
    EXPECT_EQ(host.recorderWindows().window(), nullptr);
  });
  controller->present();
  host.calls().clear();
  host.userPresses(kEscape);
  EXPECT_TRUE(reported);
  EXPECT_EQ(host.keyMonitor().installed(), 0U);
}

TEST(HotKeyRecorder, finishedIsFinal) {
  Recorder r;
  r.press(kF5);
  r.host.recorderWindows().clickSave();
  r.host.standardUserDefaults().put("hotKeyCode", std::int64_t{1});
  EXPECT_EQ(r.host.keyMonitor().deliver({kEscape, platform::kNoEventFlags}), KeyDisposition::passedOn);
  EXPECT_THAT(r.done, ElementsAre(true));
}

TEST(HotKeyRecorder, consumesEveryKeyWhileItIsOpen) {
  Recorder r;
  for (std::uint16_t code = 0; code <= 127; ++code) {
    const platform::KeyCode keyCode{code};
    if (keyCode == kEscape) continue;
    EXPECT_EQ(r.host.keyMonitor().deliver({keyCode, platform::kEventFlagCommand}), KeyDisposition::consumed);
    if (keyCode == kReturn) continue;  // would save what was just recorded
    EXPECT_EQ(r.host.keyMonitor().deliver({keyCode, platform::kNoEventFlags}), KeyDisposition::consumed);
  }
  EXPECT_EQ(r.host.keyMonitor().deliver({kA, platform::kNoEventFlags}), KeyDisposition::consumed);
  EXPECT_EQ(r.host.keyMonitor().deliver({kReturn, platform::kNoEventFlags}), KeyDisposition::consumed);
  EXPECT_TRUE(r.isOpen());
  EXPECT_EQ(r.host.keyMonitor().deliver({kEscape, platform::kNoEventFlags}), KeyDisposition::consumed);
  EXPECT_FALSE(r.isOpen());
}

TEST(HotKeyRecorder, eachEventFlagBecomesItsCarbonBit) {
  struct Case {
    platform::EventFlags flag;
    std::int64_t mask;
  };
  for (const auto& [flag, mask] :
       {Case{platform::EventFlags{0x100000}, 0x0100}, Case{platform::EventFlags{0x20000}, 0x0200},
        Case{platform::EventFlags{0x80000}, 0x0800}, Case{platform::EventFlags{0x40000}, 0x1000},
        Case{platform::EventFlags{0x1E0000}, 0x1B00}}) {
    Recorder r;
    r.host.keyMonitor().deliver({kF5, flag});
    r.host.recorderWindows().clickSave();
    EXPECT_EQ(r.stored(), std::make_pair(std::int64_t{number(kF5)}, mask));
  }
}

TEST(HotKeyRecorder, capsLockFunctionAndOtherFlagsDoNotCount) {
  constexpr platform::EventFlags kNoise = ~platform::EventFlags{0x1E0000};
  Recorder r;
  r.host.keyMonitor().deliver({kA, kNoise | platform::kEventFlagOption});
  r.expectShows("⌥A", kCanSave, ColorRole::secondaryLabel, true);
  r.host.keyMonitor().deliver({kF5, kNoise});
  r.expectShows("F5", kCanSave, ColorRole::secondaryLabel, true);
  r.host.keyMonitor().deliver({kReturn, kNoise});
  EXPECT_THAT(r.done, ElementsAre(true));
  EXPECT_EQ(r.stored(), std::make_pair(std::int64_t{number(kF5)}, std::int64_t{0}));
}

TEST(HotKeyRecorder, capsLockedEscapeStillCancels) {
  Recorder r;
  r.host.keyMonitor().deliver({kEscape, platform::kEventFlagCapsLock});
  EXPECT_THAT(r.done, ElementsAre(false));
}

/// Every way in which the recorder ends.
const std::vector<std::pair<std::string, std::function<void(FakeHost&)>>>& endings() {
  static const std::vector<std::pair<std::string, std::function<void(FakeHost&)>>> kEndings = {
      {"Escape",
       [](FakeHost& host) {
         host.keyMonitor().deliver({kEscape, platform::kNoEventFlags});
       }},
      {"Return",
       [](FakeHost& host) {
         host.keyMonitor().deliver({kReturn, platform::kNoEventFlags});
       }},
      {"save", [](FakeHost& host) { host.recorderWindows().clickSave(); }},
      {"cancel", [](FakeHost& host) { host.recorderWindows().clickCancel(); }},
      {"close box", [](FakeHost& host) { host.recorderWindows().clickCloseBox(); }}};
  return kEndings;
}

TEST(HotKeyRecorder, mayBeLetGoInItsOwnCompletion) {
  for (const auto& [name, end] : endings()) {
    SCOPED_TRACE(name);
    Recorder r;
    int told = 0;
    std::shared_ptr<HotKeyRecorderWindowController> controller =
        HotKeyRecorderWindowController::create([&controller, &told](bool) {
          ++told;
          controller.reset();
        });
    r.controller.reset();
    controller->present();
    const std::weak_ptr<HotKeyRecorderWindowController> weak = controller;
    r.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
    end(r.host);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(r.host.recorderWindows().alive(), 0U);
    EXPECT_EQ(r.host.keyMonitor().installed(), 0U);
  }
}

TEST(HotKeyRecorder, letGoWhileOpenTakesMonitorAndWindowAlongAndReportsNothing) {
  Recorder r;
  r.press(kF5);
  r.controller.reset();
  EXPECT_EQ(r.host.keyMonitor().installed(), 0U);
  EXPECT_EQ(r.host.recorderWindows().alive(), 0U);
  EXPECT_THAT(r.done, IsEmpty());
  EXPECT_TRUE(r.storesNothing());
}

/// A system that goes on calling whom it was told to call, whatever was taken back since.
class ForgetfulHost : public FakeHost {
 public:
  class Monitor : public platform::FakeKeyMonitor {
   public:
    using FakeKeyMonitor::FakeKeyMonitor;
    [[nodiscard]] platform::Registration addLocalKeyDownMonitor(
        std::function<KeyDisposition(const platform::KeyDownEvent&)> handler) override {
      kept = handler;
      return FakeKeyMonitor::addLocalKeyDownMonitor(std::move(handler));
    }
    std::function<KeyDisposition(const platform::KeyDownEvent&)> kept;
  };
  class Windows : public platform::FakeRecorderWindows {
   public:
    using FakeRecorderWindows::FakeRecorderWindows;
    std::unique_ptr<platform::RecorderWindow> create(const platform::RecorderWindowLook& look,
                                                     platform::RecorderWindowEvents events) override {
      kept = events;
      return FakeRecorderWindows::create(look, std::move(events));
    }
    platform::RecorderWindowEvents kept;
  };
  Monitor& keyMonitor() override { return monitor_; }
  Windows& recorderWindows() override { return windows_; }

 private:
  platform::FakeSystem system_;
  Monitor monitor_{system_};
  Windows windows_{system_};
};

TEST(HotKeyRecorder, callsThatComeTooLateDoNothing) {
  ForgetfulHost host;
  const platform::HostScope scope(host);
  int told = 0;
  auto controller = HotKeyRecorderWindowController::create([&](bool) { ++told; });
  controller->present();
  EXPECT_EQ(host.keyMonitor().kept({kF5, platform::kNoEventFlags}), KeyDisposition::consumed);
  controller.reset();
  for (const platform::KeyCode keyCode : {kF5, kReturn, kEscape}) {
    EXPECT_EQ(host.keyMonitor().kept({keyCode, platform::kNoEventFlags}), KeyDisposition::passedOn);
  }
  host.recorderWindows().kept.save();
  host.recorderWindows().kept.cancel();
  host.recorderWindows().kept.willClose();
  EXPECT_EQ(told, 0);
  EXPECT_TRUE(host.standardUserDefaults().all().empty());
}

TEST(HotKeyRecorder, saveWithoutAValidCombinationDoesNothingEvenIfTheButtonFires) {
  ForgetfulHost host;
  const platform::HostScope scope(host);
  int told = 0;
  const auto controller = HotKeyRecorderWindowController::create([&](bool) { ++told; });
  controller->present();
  host.recorderWindows().kept.save();
  EXPECT_EQ(told, 0);
  EXPECT_NE(host.recorderWindows().window(), nullptr);
  EXPECT_TRUE(host.standardUserDefaults().all().empty());
}

// The rules, restated by key codes: no display name is looked at.

enum class Verdict { valid, plainKey, reserved };

Verdict verdict(std::uint32_t code, platform::Modifiers mods) {
  static const std::set<std::uint32_t> kFunctionCodes = {122, 120, 99,  118, 96,  97,  98, 100, 101, 109,
                                                         103, 111, 105, 107, 113, 106, 64, 79,  80};
  // Q W C V X Z A S N T H M , and Space
  static const std::set<std::uint32_t> kReservedCodes = {12, 13, 8, 9, 7, 6, 0, 1, 45, 17, 4, 46, 43, 49};
  if (kFunctionCodes.contains(code)) return Verdict::valid;
  const bool command = overlap(mods, kCommand);
  const bool shift = overlap(mods, kShift);
  const bool option = overlap(mods, kOption);
  const bool control = overlap(mods, kControl);
  if (!command && !option && !control) return Verdict::plainKey;
  if (command && !shift && !option && !control && kReservedCodes.contains(code)) return Verdict::reserved;
  return Verdict::valid;
}

TEST(HotKeyRecorderRules, agreeWithThePlainRestatementForEveryKeyAndMask) {
  platform::FakeHost host;
  const platform::HostScope scope(host);
  constexpr platform::Modifiers kOtherBit{0x0400};  // caps lock: no part of a combination
  int counts[3] = {};
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    for (unsigned bits = 0; bits < 32; ++bits) {
      // The codes of real keyboards end at 127; above, one pass without the extra bit is enough.
      if (code > 255 && bits >= 16) break;
      platform::Modifiers mods = platform::kNoModifiers;
      if ((bits & 1) != 0) mods |= kCommand;
      if ((bits & 2) != 0) mods |= kShift;
      if ((bits & 4) != 0) mods |= kOption;
      if ((bits & 8) != 0) mods |= kControl;
      if ((bits & 16) != 0) mods |= kOtherBit;
      const platform::KeyCode key{code};
      const std::string name = HotKeyCenter::displayName(key, mods);
      const auto error = HotKeyRecorderWindowController::validate(key, mods, name);
      const Verdict expected = verdict(code, mods);
      ++counts[static_cast<int>(expected)];
      switch (expected) {
        case Verdict::valid:
          ASSERT_EQ(error, std::nullopt) << code << ' ' << number(mods);
          break;
        case Verdict::plainKey:
          ASSERT_EQ(error, kPlainKey) << code << ' ' << number(mods);
          break;
        case Verdict::reserved:
          ASSERT_EQ(error, reservedMessage(name)) << code << ' ' << number(mods);
          break;
      }
    }
  }
  EXPECT_EQ(counts[static_cast<int>(Verdict::reserved)], 14 * 2);
  EXPECT_GT(counts[static_cast<int>(Verdict::plainKey)], 100000);
}

TEST(HotKeyRecorderRules, reservedIsDecidedByTheNameThatIsGiven) {
  platform::FakeHost host;
  const platform::HostScope scope(host);
  EXPECT_EQ(HotKeyRecorderWindowController::validate(kA, kCommand, "⌘Q"), reservedMessage("⌘Q"));
  EXPECT_EQ(HotKeyRecorderWindowController::validate(kA, kCommand, "⌘B"), std::nullopt);
  EXPECT_EQ(HotKeyRecorderWindowController::validate(kA, kShift, "⌘Q"), kPlainKey);
  EXPECT_EQ(HotKeyRecorderWindowController::validate(kF5, platform::kNoModifiers, "⌘Q"), std::nullopt);
}

}  // namespace
}  // namespace lexwend
