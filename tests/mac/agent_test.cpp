// SPDX-License-Identifier: MIT
// The whole agent on the macOS host, from its entry to its end, with the system played by doubles.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/entry.h"
#include "hotkey/hot_key_center.h"
#include "platform/host.h"
#include "tests/mac/mac_desktop.h"

namespace lexwend {
namespace {

using namespace std::chrono_literals;
using doubles::bytesOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::uint32_t kF2 = 120;
constexpr std::uint16_t kKeyC = 8, kKeyK = 40, kReturn = 36, kEscape = 53;
constexpr std::uint64_t kCommandFlag = 0x100000, kOptionFlag = 0x80000, kControlFlag = 0x40000;
constexpr std::uint32_t kOptionControl = 0x1800;
constexpr std::uint32_t kSignature = 0x544B5652;
constexpr std::int32_t kHotKeyExists = -9878;

std::filesystem::path newHome() {
  std::string name = (std::filesystem::temp_directory_path() / "lexwend-home-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no home directory for the test");
  std::filesystem::create_directories(std::filesystem::path(name) / "Library" / "Logs");
  return name;
}

/// A user who has logged in, with the settings of a first run.
struct AgentOnMac : ::testing::Test {
  doubles::Session session;
  doubles::MacDesktop desktop;
  std::filesystem::path home = newHome();
  std::unique_ptr<platform::Host> host = platform::makeHost();
  std::ostringstream out, err;

  AgentOnMac() {
    doubles::process::setHomeDirectory(home.string());
    doubles::process::setIdentifier(4242);
    doubles::process::setBundleIdentifier("org.lexwend.Lexwend");
    doubles::process::setInfo("CFBundleShortVersionString", std::string("1.0"));
  }

  /// Runs the agent until it has nothing more to do; `whileRunning` happens once, in its event loop.
  void run(const std::function<void()>& whileRunning) {
    int loops = 0;
    EXPECT_EQ(start(
                  [&] {
                    ++loops;
                    whileRunning();
                  },
                  {}),
              0);
    EXPECT_EQ(loops, 1);
  }
  /// Runs the program where it is to leave before it has an event loop.
  int runWithoutLoop(const std::vector<std::string>& options = {}) {
    return start([] { ADD_FAILURE() << "no event loop was expected"; }, options);
  }
  int start(const std::function<void()>& eventLoop, const std::vector<std::string>& options) {
    const platform::HostScope scope(*host);
    HotKeyCenter center;
    doubles::app::setEventLoop(eventLoop);
    std::vector<std::string> arguments = {"/Applications/Lexwend.app/Contents/MacOS/Lexwend"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runEntry(arguments, center, out, err);
  }

  std::string log() const {
    std::ifstream stream(home / "Library" / "Logs" / "Lexwend.log", std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  static std::string icon() { return doubles::status_bar::items().at(0).image.value().symbol; }
  static doubles::status_bar::MenuItem entry(std::size_t index) {
    return doubles::status_bar::items().at(0).menu.value().at(index);
  }
  static std::string statusLine() { return entry(8).title; }
  static doubles::windows::Control recorderControl(std::size_t index) {
    return doubles::windows::all().at(0).controls.at(index);
  }
  static void openRecorder() { doubles::status_bar::choose("שנה מקש קיצור…"); }

  void TearDown() override {
    host = nullptr;
    EXPECT_EQ(session.unbalancedObjects(), "");
    std::filesystem::remove_all(home);
  }
};

TEST_F(AgentOnMac, reportsTheSelfTestWithoutBecomingAnApplication) {
  EXPECT_EQ(runWithoutLoop({"--selftest"}), 0);
  EXPECT_THAT(out.str(), HasSubstr("source: system layouts\ncurrent layout is Hebrew: false\n"));
  EXPECT_THAT(out.str(), EndsWith("\nALL PASSED\n"));
  EXPECT_FALSE(doubles::app::exists());
  EXPECT_EQ(log(), "");
}

TEST_F(AgentOnMac, leavesSilentlyWhenAnotherInstanceRuns) {
  doubles::workspace::setRunning({{"org.lexwend.Lexwend", 4242}, {"org.lexwend.Lexwend", 99}});
  EXPECT_EQ(runWithoutLoop(), 0);
  EXPECT_FALSE(doubles::app::exists());
  EXPECT_EQ(log(), "");
}

TEST_F(AgentOnMac, doesNotCountItselfAsAnotherInstance) {
  doubles::workspace::setRunning({{"org.lexwend.Lexwend", 4242}});
  run([] { EXPECT_TRUE(doubles::app::exists()); });
}

TEST_F(AgentOnMac, launchesIntoTheMenuBarInItsOrder) {
  run([&] {
    EXPECT_EQ(doubles::app::activationPolicy(), 1);
    std::vector<std::string> steps;
    for (const doubles::Call& call : doubles::calls()) {
      for (const char* step : {"+[NSApplication sharedApplication]", "-[NSApplication setDelegate:]",
                               "-[NSApplication setActivationPolicy:]", "-[NSApplication run]",
                               "-[NSStatusBar statusItemWithLength:]", "RegisterEventHotKey",
                               "-[SMAppService registerAndReturnError:]"}) {
        if (call.name == step) steps.push_back(call.name);
      }
    }
    EXPECT_THAT(steps, ElementsAre("+[NSApplication sharedApplication]", "-[NSApplication setDelegate:]",
                                   "-[NSApplication setActivationPolicy:]", "-[NSApplication run]",
                                   "-[NSStatusBar statusItemWithLength:]", "RegisterEventHotKey",
                                   "-[SMAppService registerAndReturnError:]"));
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 1}));
    EXPECT_EQ(doubles::workspace::observers(), 2u);
    EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
    EXPECT_EQ(doubles::accessibility::promptsShown(), 0);
  });
  EXPECT_THAT(log(), HasSubstr(" hotkey: register F2 ok=true\n"));
}

TEST_F(AgentOnMac, showsItsMenu) {
  run([&] {
    const auto item = doubles::status_bar::items().at(0);
    EXPECT_EQ(item.length, -2);
    EXPECT_FALSE(item.menuAutoenables);
    EXPECT_EQ(item.image, (doubles::status_bar::Image{"keyboard", "Lexwend", true}));
    std::vector<std::string> titles;
    for (const auto& each : item.menu.value()) titles.push_back(each.isSeparator ? "---" : each.title);
    EXPECT_THAT(titles,
                ElementsAre("תקן טקסט מסומן    F2", "שנה מקש קיצור…", "---", "החלף שפת מקלדת אחרי תיקון",
                            "הפעל עם הכניסה למחשב", "מצב תאימות (דרך הלוח)", "---", "נדרש אישור נגישות…",
                            "גרסה 1.0 · פריסה מהמערכת · פעיל", "---", "יציאה"));
    EXPECT_EQ(entry(3).state, 1);
    EXPECT_EQ(entry(4).state, 1);
    EXPECT_EQ(entry(5).state, 0);
    EXPECT_TRUE(entry(7).isHidden);
    EXPECT_FALSE(entry(8).isEnabled);
    EXPECT_EQ(entry(10).keyEquivalent, "q");
    doubles::status_bar::choose("יציאה");
    EXPECT_TRUE(doubles::app::isTerminated());
  });
}

TEST_F(AgentOnMac, fixesASelectionThroughAccessibility) {
  run([&] {
    desktop.openEditor("akuo nv akunl");
    EXPECT_EQ(doubles::hot_keys::press(kF2, 0), 0);
    EXPECT_EQ(desktop.editorText(), "שלום מה שלומך");
    EXPECT_EQ(doubles::input_sources::currentLayout(), 1u);
    EXPECT_EQ(icon(), "checkmark");
    doubles::time::advance(700ms);
    EXPECT_EQ(icon(), "keyboard");
  });
  EXPECT_THAT(log(), HasSubstr(" fix: front=org.lexwend.Editor currentHebrew=false\n"));
  EXPECT_THAT(log(), HasSubstr(" AX path: done\n"));
  EXPECT_THAT(log(), HasSubstr(" fix: success target=he\n"));
  EXPECT_TRUE(doubles::key_events::posted().empty());
}

TEST_F(AgentOnMac, fixesBackToEnglishFromTheMenuAfterAMoment) {
  run([&] {
    doubles::input_sources::setCurrentLayout(1);
    desktop.openEditor("יקךךם");
    doubles::status_bar::choose("תקן טקסט מסומן    F2");
    EXPECT_EQ(desktop.editorText(), "יקךךם");
    doubles::time::advance(250ms);
    EXPECT_EQ(desktop.editorText(), "hello");
    EXPECT_EQ(doubles::input_sources::currentLayout(), 0u);
  });
}

TEST_F(AgentOnMac, fixesThroughTheClipboardAndPutsItBackItemByItem) {
  const std::vector<doubles::pasteboard::Item> before = {
      {{"public.rtf", bytesOf("{\\rtf1}")}, {"public.utf8-plain-text", bytesOf("mine"), true}},
      {{"public.png", bytesOf("picture")}, {"org.example.gone", std::nullopt}}};
  run([&] {
    desktop.openEditorWithoutAccessibility("akuo");
    doubles::pasteboard::otherAppCopies(before);
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(100ms);
    EXPECT_EQ(desktop.editorText(), "שלום");
    EXPECT_EQ(doubles::MacDesktop::pasteboardText(), "שלום");
    doubles::time::advance(400ms);
    const auto after = doubles::pasteboard::contents();
    ASSERT_EQ(after.size(), 2u);
    ASSERT_EQ(after[0].size(), 2u);
    EXPECT_EQ(after[0][0].data, bytesOf("{\\rtf1}"));
    EXPECT_EQ(after[0][1].data, bytesOf("mine"));
    EXPECT_FALSE(after[0][1].isPromised);
    ASSERT_EQ(after[1].size(), 1u);
    EXPECT_EQ(after[1][0].type, "public.png");
    EXPECT_EQ(after[1][0].data, bytesOf("picture"));
  });
  using doubles::key_events::Posted;
  EXPECT_THAT(
      doubles::key_events::posted(),
      ElementsAre(Posted{8, true, kCommandFlag, 0, 1}, Posted{8, false, kCommandFlag, 0, 1},
                  Posted{9, true, kCommandFlag, 0, 1, 50ms}, Posted{9, false, kCommandFlag, 0, 1, 50ms}));
  EXPECT_THAT(log(), HasSubstr(" clipboard: copied 4 chars after 20ms (attempt 1)\n"));
  EXPECT_THAT(log(), HasSubstr(" clipboard: pasted 4 chars\n"));
}

TEST_F(AgentOnMac, reportsNoSelectionWhenNoKeyEventCanBeMade) {
  run([&] {
    desktop.openEditorWithoutAccessibility("akuo");
    doubles::key_events::failEventCreation(1, 4);
    doubles::hot_keys::press(kF2, 0);
    EXPECT_TRUE(doubles::key_events::posted().empty());
    EXPECT_EQ(icon(), "xmark");
    EXPECT_EQ(doubles::app::beeps(), 1);
  });
  EXPECT_THAT(log(), HasSubstr(" fix: failed noSelection\n"));
}

TEST_F(AgentOnMac, refusesAPasswordField) {
  run([&] {
    desktop.focusPasswordField();
    doubles::hot_keys::press(kF2, 0);
    EXPECT_EQ(icon(), "xmark");
    EXPECT_EQ(doubles::app::beeps(), 1);
  });
  EXPECT_THAT(log(), HasSubstr(" fix: failed secureInput\n"));
  EXPECT_THAT(doubles::callsNamed("AXUIElementCopyAttributeValue"), ElementsAre());
}

TEST_F(AgentOnMac, asksForThePermissionAndNoticesTheGrantWithinTwoSeconds) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    EXPECT_EQ(doubles::accessibility::promptsShown(), 1);
    EXPECT_EQ(icon(), "keyboard.badge.ellipsis");
    EXPECT_EQ(statusLine(), "גרסה 1.0 · ממתין לאישור נגישות");
    EXPECT_FALSE(entry(7).isHidden);
    doubles::time::advance(60s);
    EXPECT_EQ(doubles::time::scheduledTimers(), 1u);
    doubles::accessibility::setTrusted(true);
    doubles::time::advance(2s);
    EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
    EXPECT_EQ(icon(), "keyboard");
    EXPECT_EQ(statusLine(), "גרסה 1.0 · פריסה מהמערכת · פעיל");
    EXPECT_TRUE(entry(7).isHidden);
  });
}

TEST_F(AgentOnMac, explainsTheMissingPermissionAndOpensTheSettingsOnlyWhenTold) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    desktop.openEditor("akuo");
    doubles::alerts::answerNext(1001);
    doubles::hot_keys::press(kF2, 0);
    EXPECT_TRUE(doubles::workspace::openedUrls().empty());
    doubles::alerts::answerNext(1000);
    doubles::hot_keys::press(kF2, 0);
    EXPECT_THAT(doubles::workspace::openedUrls(),
                ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"));
    EXPECT_EQ(doubles::app::activations(), 2);
    EXPECT_EQ(doubles::app::beeps(), 0);
    const auto alert = doubles::alerts::shown().at(0);
    EXPECT_EQ(alert.messageText, "נדרש אישור נגישות");
    EXPECT_THAT(alert.buttons, ElementsAre("פתח הגדרות", "ביטול"));
    EXPECT_EQ(desktop.editorText(), "akuo");
  });
}

TEST_F(AgentOnMac, goesOnWhileTheAlertOfAFixFromTheMenuIsOpen) {
  doubles::accessibility::setTrusted(false);
  run([] {
    doubles::forgetCalls();
    doubles::time::later(10s, [] { doubles::workspace::postDidWake(); });
    doubles::time::later(20s, [] {
      EXPECT_EQ(doubles::callsNamed("RegisterEventHotKey").size(), 1u);
      doubles::accessibility::setTrusted(true);
    });
    doubles::time::later(30s, [] { EXPECT_EQ(icon(), "keyboard"); });
    doubles::alerts::answerNext(1001, 1min);
    doubles::status_bar::choose("תקן טקסט מסומן    F2");
    doubles::time::advance(300ms);
    EXPECT_EQ(doubles::alerts::shown().size(), 1u);
    EXPECT_GT(doubles::time::now(), 1min);
  });
}

TEST_F(AgentOnMac, recordsANewHotKey) {
  run([&] {
    openRecorder();
    EXPECT_TRUE(doubles::hot_keys::registered().empty());
    EXPECT_EQ(recorderControl(1).text, "F2");
    EXPECT_TRUE(doubles::windows::pressKey(kKeyC, kCommandFlag));
    EXPECT_EQ(recorderControl(1).text, "⌘C");
    EXPECT_EQ(recorderControl(2).color, "systemRedColor");
    EXPECT_FALSE(recorderControl(3).isEnabled);
    EXPECT_TRUE(doubles::windows::pressKey(kReturn, 0));
    EXPECT_TRUE(doubles::windows::pressKey(kKeyK, kControlFlag | kOptionFlag | 0x10000));
    EXPECT_EQ(recorderControl(1).text, "⌃⌥K");
    EXPECT_EQ(recorderControl(2).color, "secondaryLabelColor");
    EXPECT_TRUE(recorderControl(3).isEnabled);
    EXPECT_TRUE(doubles::windows::pressKey(kReturn, 0));
    EXPECT_EQ(doubles::windows::localMonitors(), 0u);
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kKeyK, kOptionControl, kSignature, 2}));
    EXPECT_EQ(entry(0).title, "תקן טקסט מסומן    ⌃⌥K");
    EXPECT_EQ(std::get<std::int64_t>(doubles::defaults::get("hotKeyCode").value()), kKeyK);
    EXPECT_EQ(std::get<std::int64_t>(doubles::defaults::get("hotKeyModifiers").value()), kOptionControl);
  });
}

TEST_F(AgentOnMac, keepsTheHotKeyWhenTheRecorderIsLeft) {
  run([&] {
    openRecorder();
    EXPECT_TRUE(doubles::windows::pressKey(kEscape, 0));
    openRecorder();
    doubles::windows::click("ביטול");
    openRecorder();
    doubles::windows::closeByUser();
    EXPECT_EQ(doubles::windows::localMonitors(), 0u);
    EXPECT_FALSE(doubles::windows::pressKey(kKeyK, kControlFlag));
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 4}));
    EXPECT_FALSE(doubles::defaults::get("hotKeyCode").has_value());
  });
}

TEST_F(AgentOnMac, goesBackWhenTheSystemRefusesTheNewHotKey) {
  run([&] {
    openRecorder();
    doubles::windows::pressKey(kKeyK, kControlFlag);
    doubles::hot_keys::failNextRegistration(kHotKeyExists);
    doubles::alerts::answerNext(1000);
    doubles::windows::click("שמור");
    EXPECT_EQ(doubles::alerts::shown().at(0).messageText, "הצירוף תפוס");
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 3}));
    EXPECT_EQ(entry(0).title, "תקן טקסט מסומן    F2");
  });
  EXPECT_THAT(log(), HasSubstr(" hotkey: register ⌃K ok=false\n"));
}

TEST_F(AgentOnMac, registersTheHotKeyAgainAfterWake) {
  run([&] {
    doubles::workspace::postDidWake();
    doubles::time::advance(0ms);
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 2}));
    EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
    doubles::accessibility::setTrusted(false);
    doubles::workspace::postDidWake();
    doubles::time::advance(0ms);
    EXPECT_EQ(doubles::time::scheduledTimers(), 1u);
    EXPECT_EQ(icon(), "keyboard.badge.ellipsis");
  });
}

TEST_F(AgentOnMac, rebuildsItsMapWhenTheEnabledLayoutsChange) {
  run([&] {
    doubles::MacDesktop::installLayouts({platform::usLayout()});
    doubles::input_sources::postEnabledSourcesChanged();
    doubles::time::advance(0ms);
    EXPECT_EQ(statusLine(), "גרסה 1.0 · פריסה קבועה · פעיל");
    doubles::MacDesktop::installLayouts({platform::abcLayout(), platform::hebrewLayout()});
    doubles::input_sources::postEnabledSourcesChanged();
    doubles::time::advance(0ms);
    EXPECT_EQ(statusLine(), "גרסה 1.0 · פריסה מהמערכת · פעיל");
  });
}

TEST_F(AgentOnMac, switchesTheLoginItemAndBeepsWhenTheSystemRefuses) {
  run([&] {
    EXPECT_EQ(doubles::login_item::status(), 1);
    doubles::status_bar::choose("הפעל עם הכניסה למחשב");
    EXPECT_EQ(doubles::login_item::status(), 0);
    EXPECT_EQ(entry(4).state, 0);
    doubles::login_item::failNext(1);
    doubles::status_bar::choose("הפעל עם הכניסה למחשב");
    EXPECT_EQ(doubles::app::beeps(), 1);
    EXPECT_EQ(entry(4).state, 0);
    doubles::login_item::setStatus(2);
    doubles::status_bar::choose("הפעל עם הכניסה למחשב");
    EXPECT_EQ(doubles::login_item::status(), 1);
    EXPECT_EQ(entry(4).state, 1);
  });
}

TEST_F(AgentOnMac, triesTheLoginItemOnceEvenWhenTheSystemRefuses) {
  doubles::login_item::failNext(1);
  run([&] {
    EXPECT_EQ(doubles::login_item::status(), 0);
    EXPECT_EQ(std::get<bool>(doubles::defaults::get("didRegisterLoginItem").value()), true);
  });
}

TEST_F(AgentOnMac, leavesTheLoginItemAloneOnLaterRuns) {
  doubles::defaults::set("didRegisterLoginItem", true);
  run([&] { EXPECT_EQ(doubles::login_item::status(), 0); });
}

TEST_F(AgentOnMac, takesTheDefaultForASettingOfTheWrongType) {
  doubles::defaults::set("hotKeyCode", std::string("96"));
  doubles::defaults::set("switchLayoutAfterFix", std::string("no"));
  doubles::defaults::set("compatMode", std::vector<std::string>{"yes"});
  run([&] {
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 1}));
    EXPECT_EQ(entry(3).state, 1);
    EXPECT_EQ(entry(5).state, 0);
  });
}

TEST_F(AgentOnMac, keepsItsSwitches) {
  run([&] {
    doubles::status_bar::choose("החלף שפת מקלדת אחרי תיקון");
    doubles::status_bar::choose("מצב תאימות (דרך הלוח)");
    EXPECT_EQ(std::get<bool>(doubles::defaults::get("switchLayoutAfterFix").value()), false);
    EXPECT_EQ(std::get<bool>(doubles::defaults::get("compatMode").value()), true);
    EXPECT_EQ(entry(3).state, 0);
    EXPECT_EQ(entry(5).state, 1);
    desktop.openEditor("akuo");
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(1s);
    EXPECT_EQ(desktop.editorText(), "שלום");
    EXPECT_EQ(doubles::input_sources::currentLayout(), 0u);
  });
  EXPECT_THAT(log(), Not(HasSubstr("AX path:")));
}

}  // namespace
}  // namespace lexwend
