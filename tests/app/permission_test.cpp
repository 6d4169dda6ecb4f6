// SPDX-License-Identifier: MIT
// The Accessibility permission, the system's events and the login item.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/agent.h"
#include "tests/call_order.h"

namespace lexwend::tests {
namespace {

using platform::FakeOperation;
using platform::LoginItemStatus;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSettingsUrl =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

/// An agent that was launched without the permission.
struct Untrusted : Agent {
  Untrusted() { host.accessibility().setTrusted(false); }
  void launch() {
    Agent::launch();
    host.calls().clear();
  }
};

TEST(KeyBinding, isAskedForOnceWhereAHotKeyTakesASettingOfTheUsers) {
  Agent a;
  a.host.hotKeyService().takeSettings();
  a.host.alerts().answer("הוסף");
  a.launch();
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  a.host.advance(milliseconds(3000));
  EXPECT_EQ(a.host.alerts().shown().size(), 1U);
  EXPECT_TRUE(a.host.hotKeyService().isAgreed());
}

TEST(KeyBinding, thatWasRefusedIsNotAskedForAgain) {
  Agent a;
  a.host.hotKeyService().takeSettings();
  a.host.standardUserDefaults().setBool(false, "mayBindKey");
  a.launch();
  a.host.advance(milliseconds(10000));
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_FALSE(a.host.hotKeyService().isAgreed());
}

TEST(KeyBinding, thatWasAgreedToIsMadeAtTheStart) {
  Agent a;
  a.host.hotKeyService().takeSettings();
  a.host.standardUserDefaults().setBool(true, "mayBindKey");
  a.launch();
  EXPECT_TRUE(a.host.hotKeyService().isAgreed());
}

TEST(Installation, isOfferedWhereMoreWorksByIt) {
  Agent a;
  a.host.application().gains = true;
  a.host.alerts().answer("הוסף");
  a.launch();
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  a.host.advance(milliseconds(3000));
  EXPECT_EQ(a.host.alerts().shown().size(), 1U);
  EXPECT_TRUE(a.host.application().installed);
}

TEST(Installation, thatWasRefusedIsNotOfferedAgain) {
  Agent a;
  a.host.application().gains = true;
  a.host.alerts().answer("לא עכשיו");
  a.launch();
  a.host.advance(milliseconds(3000));
  EXPECT_FALSE(a.host.application().installed);
  Agent again;
  again.host.application().gains = true;
  again.host.standardUserDefaults().setBool(a.host.standardUserDefaults().boolForKey("mayInstall"),
                                            "mayInstall");
  again.launch();
  again.host.advance(milliseconds(10000));
  EXPECT_THAT(again.host.alerts().shown(), IsEmpty());
}

TEST(Installation, thatFailsBeeps) {
  Agent a;
  a.host.application().gains = true;
  a.host.application().canBeInstalled = false;
  a.host.alerts().answer("הוסף");
  a.launch();
  a.host.advance(milliseconds(3000));
  EXPECT_EQ(a.host.application().beeps, 1);
}

TEST(Installation, isNotOfferedWhereEverythingWorks) {
  Agent a;
  a.launch();
  a.host.advance(milliseconds(10000));
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
}

TEST(PermissionPolling, doesNotRunWhenTrusted) {
  Agent a;
  a.launch();
  EXPECT_EQ(a.host.accessibility().prompts(), 0);
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrustedWithPrompt"), 0U);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

TEST(PermissionPolling, asksTheFirstTimeAfterTwoSecondsAndThenEveryTwo) {
  Untrusted a;
  a.launch();
  const auto asked = [&] { return a.host.calls().count("accessibility.isProcessTrusted"); };
  a.host.advance(milliseconds(1999));
  EXPECT_EQ(asked(), 0U);
  a.host.advance(milliseconds(1));
  EXPECT_EQ(asked(), 1U);
  a.host.advance(milliseconds(1999));
  EXPECT_EQ(asked(), 1U);
  a.host.advance(milliseconds(1));
  EXPECT_EQ(asked(), 2U);
}

TEST(PermissionPolling, lastTickInvalidatesThenRefreshes) {
  Untrusted a;
  a.launch();
  a.host.accessibility().setTrusted(true);
  a.host.advance(milliseconds(2000));
  EXPECT_THAT(a.host.calls().all(),
              ElementsAre("accessibility.isProcessTrusted", "timer.invalidate",
                          "accessibility.isProcessTrusted", "statusItem.setImage keyboard"));
}

TEST(PermissionPolling, stopsThePreviousTimerFirst) {
  Untrusted a;
  a.launch();
  a.choose(kPermissionTitle);
  EXPECT_TRUE(inOrder(a.host.calls(), {"timer.invalidate", "runLoop.timer 2000ms"}));
}

TEST(PermissionPolling, canStartAgainAfterItEnded) {
  Untrusted a;
  a.launch();
  a.host.accessibility().setTrusted(true);
  a.host.advance(milliseconds(2000));
  a.host.accessibility().setTrusted(false);
  a.host.workspace().wake();
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  EXPECT_EQ(a.host.calls().count("timer.invalidate"), 1U);
}

TEST(PermissionItem, promptsOpensTheSettingsAndPollsInOrder) {
  Untrusted a;
  a.launch();
  a.choose(kPermissionTitle);
  EXPECT_THAT(a.host.calls().all(),
              ElementsAre("accessibility.isProcessTrustedWithPrompt", "workspace.urlFromString",
                          "workspace.open", "timer.invalidate", "runLoop.timer 2000ms"));
  EXPECT_THAT(a.host.workspace().openedUrls(), ElementsAre(kSettingsUrl));
  EXPECT_EQ(a.host.accessibility().prompts(), 2);
}

// The explanatory alert.

/// The user presses the hot key after the permission was taken away.
struct Alerted : Agent {
  void fixWithoutPermission() {
    launch();
    openEditor("akuo");
    host.accessibility().setTrusted(false);
    host.calls().clear();
    host.userPresses(kF2);
  }
};

TEST(PermissionAlert, closingItIsACancel) {
  Alerted a;
  a.host.alerts().answerByClosing();
  a.fixWithoutPermission();
  EXPECT_THAT(a.host.workspace().openedUrls(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

// System events.

TEST(Wake, pollsAfterTheRefreshWhenUntrusted) {
  Agent a;
  a.launch();
  a.host.accessibility().setTrusted(false);
  a.host.calls().clear();
  a.host.workspace().wake();
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  EXPECT_EQ(a.icon(), "keyboard.badge.ellipsis");
  EXPECT_TRUE(inOrder(a.host.calls(), {"statusItem.setImage", "runLoop.timer 2000ms"}));
  EXPECT_EQ(a.host.accessibility().prompts(), 0);
}

TEST(Wake, whilePollingLeavesOneTimer) {
  Untrusted a;
  a.launch();
  a.host.workspace().wake();
  a.host.workspace().wake();
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
}

TEST(LayoutChange, doesNotTouchTheHotKeyOrTheTimer) {
  Untrusted a;
  a.launch();
  a.host.inputSourceService().changeLayouts({platform::usLayout()});
  EXPECT_THAT(a.host.calls().of("hotKeys."), IsEmpty());
  EXPECT_THAT(a.host.calls().of("timer."), IsEmpty());
  EXPECT_THAT(a.host.calls().of("runLoop."), IsEmpty());
}

TEST(SystemEvents, eachIsObservedOnce) {
  Agent a;
  a.launch();
  EXPECT_EQ(a.host.workspace().wakeObservers(), 1U);
  EXPECT_EQ(a.host.inputSourceService().observerCount(), 1U);
}

// Login item.

TEST(LoginItemFirstRun, flagIsStoredBeforeTheRegistration) {
  Agent a;
  a.launch();
  EXPECT_EQ(a.host.loginItem().status(), LoginItemStatus::enabled);
  EXPECT_TRUE(
      inOrder(a.host.calls(), {"userDefaults.setBool didRegisterLoginItem true", "loginItem.registerItem"}));
}

TEST(LoginItemToggle, unregistersOnlyWhenEnabledAndRegistersInEveryOtherState) {
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
                            LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
    Agent a;
    a.host.standardUserDefaults().put("didRegisterLoginItem", true);
    a.launch();
    EXPECT_THAT(a.host.calls().of("loginItem."), ElementsAre("loginItem.followProgram"));
    a.host.calls().clear();
    a.host.loginItem().setStatus(status);
    a.choose(kLoginTitle);
    const bool wasEnabled = status == LoginItemStatus::enabled;
    EXPECT_THAT(a.host.calls().of("loginItem."),
                ElementsAre(wasEnabled ? "loginItem.unregisterItem" : "loginItem.registerItem"));
    EXPECT_EQ(a.loginItem().checked, !wasEnabled);
    EXPECT_EQ(a.host.application().beeps, 0);
  }
}

TEST(LoginItemToggle, refusedRegistrationBeepsAndRefreshes) {
  Agent a;
  a.host.standardUserDefaults().put("didRegisterLoginItem", true);
  a.launch();
  a.host.failNext(FakeOperation::registerLoginItem);
  a.host.calls().clear();
  a.choose(kLoginTitle);
  EXPECT_THAT(a.host.calls().all(),
              ElementsAre("loginItem.registerItem", "application.beep", "accessibility.isProcessTrusted",
                          "statusItem.setImage keyboard"));
  EXPECT_FALSE(a.loginItem().checked);
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register F2 ok=true"));
}

}  // namespace
}  // namespace lexwend::tests
