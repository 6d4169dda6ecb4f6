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

TEST(AgentLaunch, registersTheFactoryHotKeyAndLogsIt) {
  Agent a;
  a.launch();
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register F2 ok=true"));
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

TEST(AgentLaunch, refusedHotKeyIsOnlyLoggedAndTheMenuWorks) {
  Agent a;
  a.host.hotKeyService().otherAppTakes(kF2, platform::kNoModifiers);
  a.launch();
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register F2 ok=false"));
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_EQ(a.host.application().beeps, 0);
  EXPECT_EQ(a.fixItem().title, kFixTitle);
  const auto editor = a.openEditor("akuo");
  a.chooseFix();
  a.host.advance(std::chrono::milliseconds(250));
  EXPECT_EQ(editor->focus()->text(), "שלום");
}

TEST(AgentLaunchDeathTest, storedHotKeyOutsideOf32BitsStopsTheProcess) {
  Agent a;
  a.host.standardUserDefaults().put("hotKeyCode", std::int64_t{4294967296});
  EXPECT_DEATH(a.launch(), "hot-key number");
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

TEST(AgentMenu, hasItsItemsInOrder) {
  Agent a;
  a.launch();
  std::vector<std::string> titles;
  for (const auto& item : a.host.statusBar().menu()->items) {
    titles.push_back(item->separator ? "-" : item->title);
  }
  EXPECT_THAT(titles, ElementsAre("תקן טקסט מסומן    F2", "שנה מקש קיצור…", "-", "החלף שפת מקלדת אחרי תיקון",
                                  "הפעל עם הכניסה למחשב", "מצב תאימות (דרך הלוח)", "-", "נדרש אישור נגישות…",
                                  "גרסה 1.0 · פריסה מהמערכת · פעיל", "-", "יציאה"));
}

TEST(AgentMenu, enablesNothingByItselfAndOnlyTheStatusLineIsDisabled) {
  Agent a;
  a.launch();
  const auto menu = a.host.statusBar().menu();
  EXPECT_FALSE(menu->autoenablesItems);
  for (std::size_t place = 0; place < menu->items.size(); ++place) {
    EXPECT_EQ(menu->items[place]->enabled, place != 8) << place;
  }
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
  a.host.failNext(FakeOperation::symbolImage, -1, 2);
  a.launch();
  EXPECT_EQ(a.host.statusBar().item()->image, nullptr);
}

// What the menu shows.

TEST(AgentMenuState, freshInstallationSwitchesLayoutsAndDoesNotForceTheClipboard) {
  Agent a;
  a.launch();
  EXPECT_TRUE(a.switchItem().checked);
  EXPECT_FALSE(a.compatItem().checked);
  EXPECT_TRUE(a.loginItem().checked);  // registered by the first launch
  EXPECT_FALSE(a.fixItem().checked);
}

TEST(AgentMenuState, followsTheSettings) {
  Agent a;
  a.host.standardUserDefaults().put("switchLayoutAfterFix", false);
  a.host.standardUserDefaults().put("compatMode", true);
  a.launch();
  EXPECT_FALSE(a.switchItem().checked);
  EXPECT_TRUE(a.compatItem().checked);
}

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

TEST(AgentMenuState, waitsWithoutThePermission) {
  Agent a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · ממתין לאישור נגישות");
  EXPECT_EQ(a.icon(), "keyboard.badge.ellipsis");
  EXPECT_TRUE(a.host.statusBar().item()->image->isTemplate);
  EXPECT_EQ(a.host.statusBar().item()->image->accessibilityDescription, "Lexwend");
  EXPECT_FALSE(a.permissionItem().hidden);
}

TEST(AgentMenuState, becomesActiveAtTheRefreshAfterThePermissionIsGranted) {
  Agent a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  a.host.accessibility().setTrusted(true);
  EXPECT_EQ(a.icon(), "keyboard.badge.ellipsis");  // not before a refresh
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה מהמערכת · פעיל");
  EXPECT_EQ(a.icon(), "keyboard");
  EXPECT_TRUE(a.permissionItem().hidden);
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

TEST(AgentMenuState, namesTheFixedLayoutWhenTheSystemHasNone) {
  Agent a;
  a.host.inputSourceService().setLayouts({platform::usLayout()});
  a.launch();
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה קבועה · פעיל");
}

TEST(AgentMenuState, waitingLineNamesNoLayout) {
  Agent a;
  a.host.accessibility().setTrusted(false);
  a.host.inputSourceService().setLayouts({platform::usLayout()});
  a.launch();
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · ממתין לאישור נגישות");
}

TEST(AgentMenuState, missingVersionLeavesItsPlaceEmpty) {
  Agent a;
  a.host.application().version = std::nullopt;
  a.launch();
  EXPECT_EQ(a.statusLine(), "גרסה  · פריסה מהמערכת · פעיל");
  a.host.accessibility().setTrusted(false);
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.statusLine(), "גרסה  · ממתין לאישור נגישות");
}

TEST(AgentMenuState, readsTheTrustOncePerRefresh) {
  Agent a;
  a.launch();
  a.host.calls().clear();
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrusted"), 1U);
}

// Toggles.

TEST(AgentToggles, switchingLayoutsOffAndOn) {
  Agent a;
  a.launch();
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.host.standardUserDefaults().objectForKey("switchLayoutAfterFix"),
            platform::DefaultsValue(false));
  EXPECT_FALSE(a.switchItem().checked);
  a.choose(kSwitchTitle);
  EXPECT_EQ(a.host.standardUserDefaults().objectForKey("switchLayoutAfterFix"),
            platform::DefaultsValue(true));
  EXPECT_TRUE(a.switchItem().checked);
  EXPECT_FALSE(a.compatItem().checked);
}

TEST(AgentToggles, compatibilityModeOnAndOff) {
  Agent a;
  a.launch();
  a.choose(kCompatTitle);
  EXPECT_EQ(a.host.standardUserDefaults().objectForKey("compatMode"), platform::DefaultsValue(true));
  EXPECT_TRUE(a.compatItem().checked);
  a.choose(kCompatTitle);
  EXPECT_EQ(a.host.standardUserDefaults().objectForKey("compatMode"), platform::DefaultsValue(false));
  EXPECT_FALSE(a.compatItem().checked);
  EXPECT_TRUE(a.switchItem().checked);
}

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

TEST(AgentHotKeyChange, takesTheHotKeyAwayWhileTheRecorderIsOpen) {
  Agent a;
  a.launch();
  a.openEditor("akuo");
  a.choose(kChangeKeyTitle);
  EXPECT_TRUE(a.host.hotKeyService().registered().empty());
  EXPECT_EQ(a.host.userPresses(kF2), platform::KeyFate::ownWindow);
  EXPECT_EQ(a.host.recorderWindows().window()->combination, "F2");
  EXPECT_THAT(a.fixLines(), IsEmpty());
}

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

TEST(AgentHotKeyChange, savingRegistersTheNewCombinationAtOnce) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(platform::kKeyA, platform::Modifiers{0x1900});
  a.host.userPresses(kReturn);
  EXPECT_EQ(a.storedHotKey(), "0 6400");
  EXPECT_EQ(a.host.hotKeyService().registered().size(), 1U);
  EXPECT_TRUE(a.host.hotKeyService().holds(platform::KeyCode{0}, platform::Modifiers{0x1900}));
  EXPECT_EQ(a.fixItem().title, "תקן טקסט מסומן    ⌃⌥⌘A");
  EXPECT_THAT(a.host.logMessages(),
              ElementsAre("hotkey: register F2 ok=true", "hotkey: register ⌃⌥⌘A ok=true"));
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
}

TEST(AgentHotKeyChange, theNewCombinationFixes) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(kF5);
  a.host.recorderWindows().clickSave();
  const auto editor = a.openEditor("akuo");
  EXPECT_EQ(a.host.userPresses(kF5), platform::KeyFate::ownHotKey);
  EXPECT_EQ(editor->focus()->text(), "שלום");
}

TEST(AgentHotKeyChange, cancellingRegistersTheUnchangedCombinationWithoutAnAlert) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(kF5);
  a.host.userPresses(kEscape);
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
  EXPECT_FALSE(a.host.standardUserDefaults().all().contains("hotKeyCode"));
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_THAT(a.host.logMessages(),
              ElementsAre("hotkey: register F2 ok=true", "hotkey: register F2 ok=true"));
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
  EXPECT_EQ(a.fixItem().title, kFixTitle);
}

TEST(AgentHotKeyChange, failedRegistrationAfterACancelIsOnlyLogged) {
  Agent a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.hotKeyService().otherAppTakes(kF2, platform::kNoModifiers);
  a.host.recorderWindows().clickCloseBox();
  EXPECT_EQ(a.lastLogLine(), "hotkey: register F2 ok=false");
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_FALSE(a.host.standardUserDefaults().all().contains("hotKeyCode"));
}

TEST(AgentHotKeyChange, refusedCombinationIsRolledBackWithOneAlert) {
  Agent a;
  a.host.standardUserDefaults().put("hotKeyCode", std::int64_t{17});
  a.host.standardUserDefaults().put("hotKeyModifiers", std::int64_t{0x0900});
  a.host.hotKeyService().otherAppTakes(kF5, platform::kNoModifiers);
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
  a.host.alerts().answer("אישור");
  a.host.recorderWindows().clickSave();

  EXPECT_EQ(a.storedHotKey(), "17 2304");
  EXPECT_TRUE(a.host.hotKeyService().holds(platform::KeyCode{17}, platform::Modifiers{0x0900}));
  EXPECT_EQ(a.fixItem().title, "תקן טקסט מסומן    ⌥⌘T");
  EXPECT_THAT(a.host.logMessages(),
              ElementsAre("hotkey: register ⌥⌘T ok=true", "hotkey: register F5 ok=false",
                          "hotkey: register ⌥⌘T ok=true"));
  ASSERT_EQ(a.host.alerts().shown().size(), 1U);
  const auto& alert = a.host.alerts().shown().front();
  EXPECT_EQ(alert.messageText, "הצירוף תפוס");
  EXPECT_EQ(alert.informativeText,
            "המערכת לא אפשרה לרשום את הצירוף הזה, כנראה אפליקציה אחרת כבר משתמשת בו. חזרנו לצירוף הקודם.");
  EXPECT_THAT(alert.buttons, ElementsAre("אישור"));
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
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

TEST(AgentHotKeyChange, rollBackThatIsRefusedTooIsOnlyLogged) {
  Agent a;
  a.host.hotKeyService().otherAppTakes(kF5, platform::kNoModifiers);
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.hotKeyService().otherAppTakes(kF2, platform::kNoModifiers);
  a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
  a.host.alerts().answer("אישור");
  a.host.recorderWindows().clickSave();
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register F2 ok=true", "hotkey: register F5 ok=false",
                                                "hotkey: register F2 ok=false"));
  EXPECT_EQ(a.storedHotKey(), "120 0");
  EXPECT_EQ(a.host.alerts().shown().size(), 1U);
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
