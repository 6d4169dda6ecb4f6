// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/agent.h"

namespace lexwend::tests {
namespace {

using platform::FakeOperation;
using platform::LoginItemStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Construction and launch.

TEST(AgentConstruction, buildsTheLayoutMapAndShowsNothingYet) {
  Agent a;
  a.delegate = AppDelegate::create(a.center);
  EXPECT_EQ(a.host.statusBar().item(), nullptr);
  EXPECT_GT(a.host.calls().count("inputSources.createInputSourceList"), 0U);
  EXPECT_THAT(a.host.calls().of("hotKeys."), IsEmpty());
  EXPECT_THAT(a.host.logMessages(), IsEmpty());
}

/// The calls that mark the steps of the launch.
std::vector<std::string> launchSteps(const platform::FakeCallLog& calls) {
  static const std::set<std::string> kSteps = {"statusBar.statusItem",
                                               "statusItem.setMenu",
                                               "hotKeys.registerHotKey",
                                               "userDefaults.setBool didRegisterLoginItem true",
                                               "loginItem.registerItem",
                                               "workspace.observeDidWake",
                                               "inputSources.observeEnabledLayoutsChanged",
                                               "accessibility.isProcessTrusted",
                                               "accessibility.isProcessTrustedWithPrompt",
                                               "runLoop.timer 2000ms",
                                               "statusItem.setImage keyboard",
                                               "statusItem.setImage keyboard.badge.ellipsis"};
  std::vector<std::string> steps;
  for (const auto& call : calls.all()) {
    const auto step =
        call.starts_with("hotKeys.registerHotKey") ? std::string("hotKeys.registerHotKey") : call;
    if (kSteps.contains(step)) steps.push_back(step);
  }
  return steps;
}

TEST(AgentLaunch, goesStepByStepWhenTrusted) {
  Agent a;
  a.launch();
  EXPECT_THAT(launchSteps(a.host.calls()),
              ElementsAre("statusBar.statusItem", "statusItem.setImage keyboard", "statusItem.setMenu",
                          "hotKeys.registerHotKey", "userDefaults.setBool didRegisterLoginItem true",
                          "loginItem.registerItem", "workspace.observeDidWake",
                          "inputSources.observeEnabledLayoutsChanged", "accessibility.isProcessTrusted",
                          "accessibility.isProcessTrusted", "statusItem.setImage keyboard"));
}

TEST(AgentLaunch, promptsAndPollsBeforeTheRefreshWhenNotTrusted) {
  Agent a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  EXPECT_THAT(launchSteps(a.host.calls()),
              ElementsAre("statusBar.statusItem", "statusItem.setImage keyboard", "statusItem.setMenu",
                          "hotKeys.registerHotKey", "userDefaults.setBool didRegisterLoginItem true",
                          "loginItem.registerItem", "workspace.observeDidWake",
                          "inputSources.observeEnabledLayoutsChanged", "accessibility.isProcessTrusted",
                          "accessibility.isProcessTrustedWithPrompt", "runLoop.timer 2000ms",
                          "accessibility.isProcessTrusted", "statusItem.setImage keyboard.badge.ellipsis"));
}

TEST(AgentLaunch, registersTheStoredHotKey) {
  Agent a;
  a.host.standardUserDefaults().put("hotKeyCode", std::int64_t{49});
  a.host.standardUserDefaults().put("hotKeyModifiers", std::int64_t{0x1900});
  a.launch();
  EXPECT_TRUE(a.host.hotKeyService().holds(platform::KeyCode{49}, platform::Modifiers{0x1900}));
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register ⌃⌥⌘  ok=true"));
  EXPECT_EQ(a.fixItem().title, "תקן טקסט מסומן    ⌃⌥⌘ ");
}

class BarWithoutItems : public platform::FakeStatusBar {
 public:
  using FakeStatusBar::FakeStatusBar;
  platform::StatusItemRef statusItem(double) override { return nullptr; }
};

class HostWithoutStatusItems : public platform::FakeHost {
 public:
  platform::FakeStatusBar& statusBar() override { return bar_; }

 private:
  platform::FakeSystem system_;
  BarWithoutItems bar_{system_, [] {}};
};

TEST(AgentLaunchDeathTest, missingStatusItemStopsTheProcess) {
  HostWithoutStatusItems host;
  const platform::HostScope scope(host);
  HotKeyCenter center;
  const auto delegate = AppDelegate::create(center);
  EXPECT_DEATH(delegate->applicationDidFinishLaunching(), "no status item");
}

// The menu.

TEST(AgentMenu, enablesNothingByItselfAndOnlyTheStatusLineIsDisabled) {
  Agent a;
  a.launch();
  const auto menu = a.host.statusBar().menu();
  EXPECT_FALSE(menu->autoenablesItems);
  for (std::size_t place = 0; place < menu->items.size(); ++place) {
    EXPECT_EQ(menu->items[place]->enabled, place != 8) << place;
  }
}

TEST(AgentMenu, statusLineExplainsWhyTheLayoutCannotFollow) {
  const auto toolTipWith = [](std::vector<platform::FakeLayout> layouts) {
    Agent a;
    a.host.inputSourceService().setLayouts(std::move(layouts));
    a.launch();
    return a.item(8).toolTip;
  };
  platform::FakeLayout russian = platform::usLayout();
  russian.id = "com.apple.keylayout.Russian";
  russian.languages = std::vector<std::string>{"ru"};
  EXPECT_EQ(toolTipWith({platform::usLayout(), platform::hebrewLayout()}), "");
  EXPECT_THAT(toolTipWith({platform::usLayout()}), HasSubstr("לא תוחלף לעברית"));
  EXPECT_THAT(toolTipWith({platform::hebrewLayout()}), HasSubstr("לא תוחלף לאנגלית"));
  EXPECT_THAT(toolTipWith({russian, platform::usLayout()}), HasSubstr("לא תוחלף לעברית"));
  EXPECT_THAT(toolTipWith({russian}), HasSubstr("של עברית ושל אנגלית"));
}

TEST(StatusLine, saysWhatDoesNotWorkInTheSession) {
  Agent a;
  a.host.application().sessionLimitation = "something is missing";
  a.launch();
  EXPECT_EQ(a.item(8).toolTip, "something is missing");
}

TEST(AgentMenu, statusLineExplainsNothingWhenTheLayoutIsNotToFollow) {
  Agent a;
  a.host.inputSourceService().setLayouts({platform::usLayout()});
  a.launch();
  EXPECT_NE(a.item(8).toolTip, "");
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.item(8).toolTip, "");
}

TEST(AgentMenu, onlyQuitHasAKeyAndItTerminates) {
  Agent a;
  a.launch();
  const auto& items = a.host.statusBar().menu()->items;
  for (std::size_t place = 0; place < items.size(); ++place) {
    EXPECT_EQ(items[place]->keyEquivalent, place == 10 ? "q" : "") << place;
    EXPECT_EQ(items[place]->terminatesApplication, place == 10) << place;
  }
  EXPECT_FALSE(a.host.application().terminated);
  a.choose("יציאה");
  EXPECT_TRUE(a.host.application().terminated);
}

TEST(AgentMenu, everyCommandHasAnActionAndTheStatusLineHasNone) {
  Agent a;
  a.launch();
  const std::set<std::size_t> kCommands = {0, 1, 3, 4, 5, 7};
  for (std::size_t place = 0; place < 11; ++place) {
    EXPECT_EQ(static_cast<bool>(a.item(place).action), kCommands.contains(place)) << place;
  }
}

TEST(AgentMenu, statusItemIsSquareWithATemplateSymbolNamedAfterTheApplication) {
  Agent a;
  a.launch();
  const auto item = a.host.statusBar().item();
  EXPECT_EQ(item->length, -2.0);
  ASSERT_NE(item->image, nullptr);
  EXPECT_EQ(item->image->name, "keyboard");
  EXPECT_TRUE(item->image->isTemplate);
  EXPECT_EQ(item->image->accessibilityDescription, "Lexwend");
}

TEST(AgentMenu, missingSymbolClearsTheIcon) {
  Agent a;
  a.host.failNext(FakeOperation::symbolImage, {.times = 2});
  a.launch();
  EXPECT_EQ(a.host.statusBar().item()->image, nullptr);
}

// What the menu shows.

TEST(AgentMenuState, loginItemIsCheckedOnlyWhenEnabled) {
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
                            LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
    Agent a;
    a.host.standardUserDefaults().put("didRegisterLoginItem", true);
    a.host.loginItem().setStatus(status);
    a.launch();
    EXPECT_EQ(a.loginItem().checked, status == LoginItemStatus::enabled) << static_cast<int>(status);
  }
}

TEST(AgentMenuState, revokedPermissionIsSeenAtTheNextRefresh) {
  Agent a;
  a.launch();
  a.host.accessibility().setTrusted(false);
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · ממתין לאישור נגישות");
  EXPECT_EQ(a.icon(), "keyboard.badge.ellipsis");
  EXPECT_FALSE(a.permissionItem().hidden);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

TEST(AgentMenuState, readsTheTrustOncePerRefresh) {
  Agent a;
  a.launch();
  a.host.calls().clear();
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrusted"), 1U);
}

// Toggles.

TEST(AgentToggles, writeThenRefreshAndTouchNothingElse) {
  Agent a;
  a.launch();
  a.host.calls().clear();
  a.choose(kCompatTitle);
  EXPECT_THAT(a.host.calls().all(),
              ElementsAre("userDefaults.setBool compatMode true", "accessibility.isProcessTrusted",
                          "statusItem.setImage keyboard"));
}

// Change of the hot key.

TEST(AgentHotKeyChange, unregistersBeforeTheRecorderIsMade) {
  Agent a;
  a.launch();
  a.host.calls().clear();
  a.choose(kChangeKeyTitle);
  EXPECT_THAT(
      a.host.calls().all(),
      ElementsAre("hotKeys.unregisterHotKey", "recorderWindows.create", "keyMonitor.addLocalKeyDownMonitor",
                  "application.activate true", "recorderWindow.showAndMakeKey"));
}

TEST(AgentHotKeyChange, rollsBackInOrder) {
  Agent a;
  a.host.hotKeyService().otherAppTakes(kF5, platform::kNoModifiers);
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
  a.host.alerts().answer("אישור", [&] {
    // The alert stands while the recorder is still held and the menu is still the old one.
    EXPECT_EQ(a.host.recorderWindows().alive(), 1U);
    a.host.calls().add("the alert is open");
  });
  a.host.calls().clear();
  a.host.recorderWindows().clickSave();
  std::vector<std::string> calls;
  for (const auto& call : a.host.calls().all()) {
    if (!call.starts_with("file")) calls.push_back(call);
  }
  EXPECT_THAT(calls, ElementsAre("userDefaults.setInteger hotKeyCode 96",
                                 "userDefaults.setInteger hotKeyModifiers 0", "keyMonitor.remove",
                                 "recorderWindow.close", testing::StartsWith("hotKeys.registerHotKey 96"),
                                 "userDefaults.setInteger hotKeyCode 120",
                                 "userDefaults.setInteger hotKeyModifiers 0",
                                 testing::StartsWith("hotKeys.registerHotKey 120"),
                                 "application.activate true", "alerts.runModal", "the alert is open",
                                 "accessibility.isProcessTrusted", "statusItem.setImage keyboard"));
}

TEST(AgentHotKeyChange, aRecorderOpenedWhileTheAlertStandsStaysOpen) {
  Agent a;
  a.host.hotKeyService().otherAppTakes(kF5, platform::kNoModifiers);
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
  a.host.alerts().answer("אישור", [&] { a.choose(kChangeKeyTitle); });
  a.host.recorderWindows().clickSave();
  EXPECT_EQ(a.host.recorderWindows().alive(), 1U);
  a.host.userPresses(kEscape);
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
}

TEST(AgentHotKeyChange, openingTheRecorderAnewReplacesTheEarlierOne) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(kF5);
  a.choose(kChangeKeyTitle);
  EXPECT_EQ(a.host.recorderWindows().made(), 2U);
  EXPECT_EQ(a.host.recorderWindows().alive(), 1U);
  EXPECT_EQ(a.host.keyMonitor().installed(), 1U);
  EXPECT_EQ(a.host.recorderWindows().window()->combination, "F2");
  a.host.userPresses(kEscape);
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
  EXPECT_THAT(a.host.logMessages(),
              ElementsAre("hotkey: register F2 ok=true", "hotkey: register F2 ok=true"));
}

TEST(AgentHotKey, aSecondRecorderAfterAFirstStartsAnew) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(kF5);
  a.host.userPresses(kReturn);
  a.choose(kChangeKeyTitle);
  EXPECT_EQ(a.host.recorderWindows().window()->combination, "F5");
  EXPECT_FALSE(a.host.recorderWindows().window()->saveEnabled);
  a.host.userPresses(kEscape);
  EXPECT_TRUE(a.host.hotKeyService().holds(kF5, platform::kNoModifiers));
}

}  // namespace
}  // namespace lexwend::tests
