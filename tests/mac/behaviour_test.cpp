// SPDX-License-Identifier: MIT
// What a real Mac does beyond the plain answers of its interfaces, that the agent lives with it, and what no
// script says of the whole agent.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "app/entry.h"
#include "hotkey/hot_key_center.h"
#include "platform/fake/fake_layouts.h"
#include "platform/pasteboard.h"
#include "platform/workspace.h"
#include "tests/mac/host_fixture.h"
#include "tests/mac/mac_desktop.h"

namespace lexwend::platform::mac {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::uint32_t kF2 = 120;
constexpr std::uint32_t kSignature = 0x544B5652;
constexpr std::uint16_t kKeyK = 40, kEscape = 53;
constexpr std::uint64_t kControlFlag = 0x40000;
constexpr long kFirst = 1000, kSecond = 1001;
constexpr long kAsk = 1, kAlwaysAllow = 2, kAlwaysDeny = 3;
constexpr const char* kFileUrl = "public.file-url";
constexpr const char* kChangeKey = "שנה מקש קיצור…";

/// The whole agent in a session of its own, with an editor in front that has garbled text selected.
struct AgentOnARealMac : ::testing::Test {
  doubles::Session session;
  std::filesystem::path home = newHome();
  std::unique_ptr<Host> host = makeHost();
  doubles::MacDesktop desktop;

  static std::filesystem::path newHome() {
    std::string name = (std::filesystem::temp_directory_path() / "lexwend-mac-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no home directory for the test");
    std::filesystem::create_directories(std::filesystem::path(name) / "Library" / "Logs");
    return name;
  }
  void SetUp() override {
    doubles::process::setHomeDirectory(home.string());
    desktop.openEditor("akuo");
  }
  void TearDown() override {
    host = nullptr;
    EXPECT_EQ(session.unbalancedObjects(), "");
    std::filesystem::remove_all(home);
  }

  void run(const std::function<void()>& whileRunning) {
    const HostScope scope(*host);
    HotKeyCenter center;
    std::ostringstream out, err;
    bool ran = false;
    doubles::app::setEventLoop([&] {
      ran = true;
      whileRunning();
    });
    EXPECT_EQ(runEntry({"/Applications/Lexwend.app/Contents/MacOS/Lexwend"}, center, out, err), 0);
    EXPECT_TRUE(ran);
  }
  std::string log() const {
    std::ifstream stream(home / "Library" / "Logs" / "Lexwend.log", std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  static std::string statusLine() { return doubles::status_bar::items().at(0).menu.value().at(8).title; }
  static std::string front() {
    doubles::time::advance(0ms);
    return frontNow();
  }
  static std::string frontNow() {
    const auto front = workspace().frontmostApplication();
    return front ? front->bundleIdentifier.value_or("?") : "?";
  }
  static std::string icon() { return doubles::status_bar::items().at(0).image.value().symbol; }
  static void openRecorder() { doubles::status_bar::choose(kChangeKey); }
  static doubles::windows::Window recorder() { return doubles::windows::all().at(0); }
};

TEST_F(AgentOnARealMac, launchesIntoTheMenuBarInItsOrder) {
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

TEST_F(AgentOnARealMac, standsInTheMenuBarUntilItIsToQuit) {
  run([&] {
    const auto item = doubles::status_bar::items().at(0);
    EXPECT_EQ(item.length, -2);
    EXPECT_FALSE(item.menuAutoenables);
    EXPECT_EQ(item.image, (doubles::status_bar::Image{"keyboard", "Lexwend", true}));
    doubles::status_bar::choose("יציאה");
    EXPECT_TRUE(doubles::app::isTerminated());
  });
}

TEST_F(AgentOnARealMac, goesOnWhileTheAlertOfAFixFromTheMenuIsOpen) {
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

// -------------------------------------------------------------------------------------------------------
// Another application is the active one nearly always

TEST_F(AgentOnARealMac, hearsOfAChangeOfTheLayoutsWhileItIsNotActive) {
  run([&] {
    ASSERT_FALSE(doubles::app::isActive());
    doubles::MacDesktop::installLayouts({usLayout()});
    doubles::input_sources::postEnabledSourcesChanged();
    doubles::time::advance(0ms);
    EXPECT_THAT(statusLine(), HasSubstr("פריסה קבועה"));
  });
}

TEST_F(AgentOnARealMac, hearsOfAChangeOfTheLayoutsWhileItsRecorderIsOpen) {
  run([&] {
    openRecorder();
    ASSERT_TRUE(doubles::app::isActive());
    doubles::MacDesktop::installLayouts({usLayout()});
    doubles::input_sources::postEnabledSourcesChanged();
    doubles::time::advance(0ms);
    EXPECT_THAT(statusLine(), HasSubstr("פריסה קבועה"));
    EXPECT_TRUE(doubles::windows::pressKey(kKeyK, kControlFlag));
    doubles::windows::click("שמור");
    EXPECT_EQ(doubles::hot_keys::registered().at(0).keyCode, kKeyK);
  });
}

struct LayoutObservers : OnMac {
  int changes = 0;
  Registration observer;

  void SetUp() override {
    takeApplication();
    observer = host->inputSourceService().observeEnabledLayoutsChanged([this] { ++changes; });
  }
};

TEST_F(LayoutObservers, hearAtOnceAndAgainWhenTheApplicationBecomesActive) {
  doubles::input_sources::postEnabledSourcesChanged();
  EXPECT_EQ(changes, 1);
  doubles::input_sources::postEnabledSourcesChanged();
  EXPECT_EQ(changes, 2);
  host->application().activate(true);
  doubles::time::advance(0ms);
  EXPECT_EQ(changes, 3) << "those held back become one";
}

TEST_F(LayoutObservers, areSilentOnceTheirRegistrationEnded) {
  observer.cancel();
  doubles::input_sources::postEnabledSourcesChanged();
  host->application().activate(true);
  doubles::time::advance(0ms);
  EXPECT_EQ(changes, 0);
}

TEST_F(LayoutObservers, hearNothingElseThatProgramsTellEachOther) {
  doubles::input_sources::postSelectedSourceChanged();
  host->application().activate(true);
  doubles::time::advance(0ms);
  EXPECT_EQ(changes, 0);
}

TEST_F(LayoutObservers, hearEachForItself) {
  int others = 0;
  const auto other = host->inputSourceService().observeEnabledLayoutsChanged([&] { ++others; });
  doubles::input_sources::postEnabledSourcesChanged();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(others, 1);
}

TEST_F(LayoutObservers, mayEndTheHostThatHoldsThem) {
  const auto held = std::make_shared<int>(0);
  host = makeHost();
  takeApplication();
  observer = host->inputSourceService().observeEnabledLayoutsChanged([this, &held, own = held] {
    const auto& outside = held;
    const auto& ended = host;
    if (ended != nullptr) host = nullptr;
    EXPECT_GE(outside.use_count(), 2) << "the handler went while it runs";
  });
  doubles::input_sources::postEnabledSourcesChanged();
  EXPECT_EQ(host, nullptr);
}

TEST_F(LayoutObservers, areGoneWithTheHostWhereTheyWouldBeCalledWithoutOne) {
  host = nullptr;
  doubles::input_sources::postEnabledSourcesChanged();
  EXPECT_EQ(changes, 0);
}

TEST_F(AgentOnARealMac, restoresThePasteboardInTimeWhenTheSystemWouldLetItNap) {
  doubles::defaults::set("compatMode", true);
  run([&] {
    doubles::pasteboard::otherAppCopiesText("mine");
    doubles::hot_keys::press(kF2, 0);
    EXPECT_EQ(doubles::process::activities(), 2u) << "for the restore and for the icon";
    doubles::time::advance(500ms);
    EXPECT_EQ(doubles::MacDesktop::pasteboardText(), "mine");
    doubles::time::advance(200ms);
    EXPECT_EQ(doubles::process::activities(), 0u) << "an agent that waits for nothing may nap";
  });
}

TEST_F(AgentOnARealMac, seesThePermissionInTimeWhenTheSystemWouldLetItNap) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    EXPECT_EQ(doubles::process::activities(), 1u);
    doubles::accessibility::setTrusted(true);
    doubles::time::advance(2s);
    EXPECT_THAT(statusLine(), HasSubstr("פעיל"));
    EXPECT_EQ(doubles::process::activities(), 0u);
  });
}

// -------------------------------------------------------------------------------------------------------
// The keyboard

TEST_F(AgentOnARealMac, givesTheKeyboardBackWhenItsRecorderCloses) {
  run([&] {
    for (const bool byEscape : {true, false}) {
      openRecorder();
      EXPECT_EQ(front(), "org.lexwend.Lexwend");
      if (byEscape) {
        doubles::windows::pressKey(kEscape, 0);
      } else {
        doubles::windows::closeByUser();
      }
      EXPECT_EQ(front(), "org.lexwend.Editor");
    }
    EXPECT_FALSE(doubles::app::isTerminated()) << "with its last window";
  });
}

TEST_F(AgentOnARealMac, keepsTheKeyboardForTheAlertThatFollowsTheRecorder) {
  doubles::hot_keys::takeByOther(kKeyK, 0x1000);
  run([&] {
    openRecorder();
    doubles::windows::pressKey(kKeyK, kControlFlag);
    std::string whileTheAlertStands;
    doubles::time::later(500ms, [&] { whileTheAlertStands = frontNow(); });
    doubles::alerts::answerNext(kFirst, 1s);
    doubles::windows::click("שמור");
    EXPECT_EQ(whileTheAlertStands, "org.lexwend.Lexwend");
    EXPECT_EQ(front(), "org.lexwend.Editor");
  });
}

TEST_F(AgentOnARealMac, keepsTheKeyboardForTheRecorderThatWasOpenedWhileAnAlertStood) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    doubles::time::later(500ms, [] { openRecorder(); });
    doubles::alerts::answerNext(kSecond, 1s);
    doubles::hot_keys::press(kF2, 0);
    EXPECT_EQ(front(), "org.lexwend.Lexwend");
    doubles::windows::pressKey(kEscape, 0);
    EXPECT_EQ(front(), "org.lexwend.Editor");
  });
}

struct ClosedRecorder : InMacApplication {
  /// A recorder that was shown in front. Its owner keeps it.
  std::unique_ptr<RecorderWindow> shown() {
    RecorderWindowLook look;
    look.contentRect = {0, 0, 400, 210};
    const auto nothing = [] {};
    auto window =
        host->recorderWindows().create(look, {.save = nothing, .cancel = nothing, .willClose = nothing});
    host->application().activate(true);
    window->showAndMakeKey();
    return window;
  }
};

TEST_F(ClosedRecorder, givesTheKeyboardBackThoughItsOwnerKeepsIt) {
  const auto window = shown();
  window->close();
  doubles::time::advance(0ms);
  EXPECT_FALSE(doubles::app::isActive());
}

TEST_F(ClosedRecorder, keepsTheKeyboardWhileTheMenuIsOpen) {
  const StatusItemRef item = host->statusBar().statusItem(kSquareStatusItemLength);
  item->setMenu(host->statusBar().makeMenu());
  const auto window = shown();
  doubles::status_bar::openMenu();
  window->close();
  doubles::time::advance(1s);
  EXPECT_TRUE(doubles::app::isActive()) << "hiding would take the menu from under the pointer";
  doubles::status_bar::closeMenu();
  doubles::time::advance(0ms);
  EXPECT_FALSE(doubles::app::isActive());
}

TEST_F(AgentOnARealMac, leavesTheKeyboardWithTheSettingsThatItsAlertOpens) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    doubles::alerts::answerNext(kFirst);
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(0ms);
    EXPECT_TRUE(doubles::callsNamed("-[NSApplication hide:]").empty());
    doubles::app::userSwitchesToOther();
    doubles::alerts::answerNext(kSecond);
    doubles::hot_keys::press(kF2, 0);
    EXPECT_EQ(front(), "org.lexwend.Editor");
  });
}

TEST_F(AgentOnARealMac, hidesNothingWhenTheUserHasGoneElsewhereMeanwhile) {
  run([&] {
    openRecorder();
    doubles::app::userSwitchesToOther();
    doubles::windows::click("ביטול");
    doubles::app::userSwitchesToOther();
    doubles::time::advance(0ms);
    EXPECT_TRUE(doubles::callsNamed("-[NSApplication hide:]").empty());
  });
}

TEST_F(AgentOnARealMac, showsTheRecorderWhenItIsNotLetToTheFront) {
  doubles::app::refuseActivation();
  run([&] {
    for (int round = 0; round < 2; ++round) {
      openRecorder();
      EXPECT_TRUE(recorder().isInFront);
      EXPECT_FALSE(doubles::app::isActive());
      EXPECT_FALSE(doubles::windows::pressKey(kKeyK, kControlFlag)) << "the key goes to the editor";
      doubles::windows::clickInto();
      EXPECT_TRUE(doubles::windows::pressKey(kKeyK, kControlFlag));
      EXPECT_EQ(recorder().controls.at(1).text, "⌃K");
      doubles::windows::closeByUser();
      EXPECT_EQ(front(), "org.lexwend.Editor");
    }
  });
}

TEST_F(AgentOnARealMac, showsTheAlertWhenItIsNotLetToTheFront) {
  doubles::app::refuseActivation();
  doubles::accessibility::setTrusted(false);
  run([&] {
    for (int round = 0; round < 2; ++round) {
      doubles::alerts::answerNext(kSecond);
      doubles::hot_keys::press(kF2, 0);
      EXPECT_EQ(front(), "org.lexwend.Editor");
    }
    EXPECT_EQ(doubles::alerts::shown().size(), 2u);
  });
}

TEST_F(AgentOnARealMac, takesEscapeForTheSecondButtonOfItsAlert) {
  doubles::accessibility::setTrusted(false);
  run([&] {
    doubles::alerts::answerNextWithEscape();
    doubles::hot_keys::press(kF2, 0);
    EXPECT_TRUE(doubles::workspace::openedUrls().empty());
  });
}

TEST_F(AgentOnARealMac, dropsThePressesThatWaitedForItsMenuToClose) {
  run([&] {
    doubles::status_bar::openMenu();
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(1s);
    doubles::hot_keys::press(kF2, 0);
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(1s);
    doubles::status_bar::closeMenu();
    EXPECT_EQ(desktop.editorText(), "akuo");
    EXPECT_THAT(log(), Not(HasSubstr("fix:")));
    doubles::time::advance(1ms);
    EXPECT_EQ(doubles::hot_keys::press(kF2, 0), 0);
    EXPECT_EQ(desktop.editorText(), "שלום");
  });
}

TEST_F(AgentOnARealMac, dropsThePressThatWaitedForAFixToEnd) {
  doubles::defaults::set("compatMode", true);
  run([&] {
    doubles::time::later(3ms, [] { doubles::hot_keys::press(kF2, 0); });
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(1s);
    EXPECT_EQ(desktop.editorText(), "שלום");
    EXPECT_EQ(doubles::callsNamed("GetEventParameter").size(), 1u);
  });
}

// -------------------------------------------------------------------------------------------------------
// The pasteboard

struct RefusedPasteboard : AgentOnARealMac {
  const std::vector<doubles::pasteboard::Item> picture = {{{"public.png", doubles::bytesOf("picture")}}};

  void SetUp() override {
    AgentOnARealMac::SetUp();
    doubles::defaults::set("compatMode", true);
    doubles::pasteboard::otherAppCopies(picture);
  }
  static std::string typeThere() { return doubles::pasteboard::contents().at(0).at(0).type; }
};

TEST_F(RefusedPasteboard, isLeftAsItIs) {
  for (const long behavior : {kAlwaysDeny, kAsk, 0L}) {
    doubles::pasteboard::setAccessBehavior(behavior);
    doubles::pasteboard::refuseReading(true);
    const std::int64_t count = doubles::pasteboard::changeCount();
    run([&] {
      doubles::hot_keys::press(kF2, 0);
      doubles::time::advance(1s);
    });
    EXPECT_EQ(doubles::pasteboard::changeCount(), count);
    EXPECT_EQ(typeThere(), "public.png");
    EXPECT_EQ(desktop.editorText(), "akuo");
    doubles::process::end();
    host = makeHost();
  }
  EXPECT_THAT(log(), HasSubstr("clipboard: the system refuses to let the clipboard be read\n"));
  EXPECT_THAT(log(), HasSubstr("fix: failed noSelection\n"));
  EXPECT_THAT(log(), Not(HasSubstr("copy produced nothing")));
}

TEST_F(RefusedPasteboard, isReadOnceThePersonHasAllowedIt) {
  doubles::pasteboard::setAccessBehavior(kAsk);
  for (const bool isAllowed : {false, true}) {
    doubles::pasteboard::askBeforeReading(30s, isAllowed);
    run([&] {
      doubles::hot_keys::press(kF2, 0);
      doubles::time::advance(1s);
    });
    EXPECT_EQ(desktop.editorText(), isAllowed ? "שלום" : "akuo");
    EXPECT_EQ(doubles::pasteboard::contents().at(0).at(0).data, picture.at(0).at(0).data);
    doubles::process::end();
    host = makeHost();
  }
}

TEST_F(RefusedPasteboard, isTakenForOneThatCannotBeHadWhereNobodyRefuses) {
  doubles::pasteboard::otherAppCopies({{{"public.png", std::nullopt}}});
  doubles::pasteboard::setAccessBehavior(kAlwaysAllow);
  run([&] { doubles::hot_keys::press(kF2, 0); });
  EXPECT_EQ(desktop.editorText(), "akuo") << "the paste takes a moment";
  doubles::time::advance(10ms);
  EXPECT_EQ(desktop.editorText(), "שלום");
}

TEST_F(RefusedPasteboard, ofAnOlderSystemIsNotAskedWhatItDoesNotKnow) {
  EXPECT_FALSE(host->generalPasteboard()->mayRefuseReading());
  run([&] { doubles::hot_keys::press(kF2, 0); });
  doubles::time::advance(10ms);
  EXPECT_EQ(desktop.editorText(), "שלום");
}

TEST_F(AgentOnARealMac, restoresThreeCopiedFilesAndDataOfEveryKind) {
  doubles::defaults::set("compatMode", true);
  const std::vector<doubles::pasteboard::Item> files = {
      {{kFileUrl, doubles::bytesOf("file:///a")},
       {"public.utf8-plain-text", doubles::bytesOf("\xEF\xBB\xBF"
                                                   "a")}},
      {{kFileUrl, doubles::bytesOf("file:///b")}, {"org.lexwend.empty", doubles::bytesOf("")}},
      {{kFileUrl, doubles::bytesOf("file:///c")},
       {"public.utf16-plain-text", doubles::bytesOf("\xFF\xFE"
                                                    "c")}}};
  doubles::pasteboard::otherAppCopies(files);
  run([&] {
    doubles::hot_keys::press(kF2, 0);
    doubles::time::advance(1s);
  });
  const auto restored = doubles::pasteboard::contents();
  ASSERT_EQ(restored.size(), files.size());
  for (std::size_t item = 0; item < files.size(); ++item) {
    ASSERT_EQ(restored[item].size(), 2u);
    for (std::size_t type = 0; type < 2; ++type) {
      EXPECT_EQ(restored[item][type].type, files[item][type].type);
      EXPECT_EQ(restored[item][type].data, files[item][type].data);
    }
  }
}

TEST_F(AgentOnARealMac, keepsAByteOrderMarkThatIsPartOfTheText) {
  constexpr const char* kMarked =
      "\xEF\xBB\xBF"
      "akuo";
  const HostScope scope(*host);
  generalPasteboard()->clearContents();
  generalPasteboard()->setString(kMarked);
  EXPECT_EQ(doubles::MacDesktop::pasteboardText(), kMarked);
  EXPECT_EQ(generalPasteboard()->string(), kMarked);
}

// -------------------------------------------------------------------------------------------------------
// Looks, time and layouts

TEST_F(AgentOnARealMac, drawsItsRecorderAnewWhenTheAppearanceChanges) {
  run([&] {
    doubles::app::setDark(true);
    openRecorder();
    EXPECT_EQ(recorder().controls.at(1).layerBackground, "quaternaryLabelColor (dark)");
    doubles::app::setDark(false);
    EXPECT_EQ(recorder().controls.at(1).layerBackground, "quaternaryLabelColor");
    doubles::app::setDark(true);
    EXPECT_EQ(recorder().controls.at(1).layerBackground, "quaternaryLabelColor (dark)");
    doubles::windows::closeByUser();
  });
}

TEST_F(AgentOnARealMac, readsItsMenuFromRightToLeftOnAnEnglishSystem) {
  run([&] { EXPECT_TRUE(doubles::status_bar::items().at(0).menuReadsRightToLeft); });
}

TEST_F(AgentOnARealMac, writesItsLogInTheUsersTimeZoneAndCalendar) {
  doubles::process::setLocalTime(5h + 45min, 543);
  doubles::time::setWallClock(1709647629.042);
  run([] {});
  EXPECT_THAT(log(), HasSubstr("2567-03-05 19:52:09.042 hotkey: register F2 ok=true\n"));
}

TEST_F(AgentOnARealMac, looksBehindAnInputMethodForTheLayout) {
  desktop.openEditor("יקךךם");
  doubles::input_sources::setCurrentLayout(1);
  doubles::input_sources::setInputMethodInFront();
  run([&] { doubles::hot_keys::press(kF2, 0); });
  EXPECT_THAT(log(), HasSubstr(" currentHebrew=true\n"));
  EXPECT_EQ(desktop.editorText(), "hello");
  EXPECT_EQ(doubles::input_sources::currentLayout(), 0u);
}

TEST_F(AgentOnARealMac, doesWithoutALayoutWhoseDataIsEmpty) {
  doubles::input_sources::clear();
  doubles::input_sources::install({.id = std::string("com.apple.keylayout.Hebrew"),
                                   .languages = std::vector<std::string>{"he"},
                                   .unicodeKeyLayoutData = doubles::Bytes{}});
  run([&] {
    EXPECT_THAT(statusLine(), HasSubstr("פריסה קבועה"));
    doubles::hot_keys::press(kF2, 0);
  });
  EXPECT_EQ(desktop.editorText(), "שלום");
}

}  // namespace
}  // namespace lexwend::platform::mac
