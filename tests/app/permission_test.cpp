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

TEST(PermissionPolling, startsAtTheLaunchAfterOnePrompt) {
  Untrusted a;
  a.launch();
  EXPECT_EQ(a.host.accessibility().prompts(), 1);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_THAT(a.host.workspace().openedUrls(), IsEmpty());
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

TEST(PermissionPolling, goesOnWithoutALimitAndChangesNothing) {
  Untrusted a;
  a.launch();
  a.host.advance(std::chrono::hours(1));
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrusted"), 1800U);
  EXPECT_EQ(a.host.calls().all().size(), 1800U);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
}

TEST(PermissionPolling, grantEndsItWithinTwoSecondsAndTheMenuFollows) {
  Untrusted a;
  a.launch();
  a.host.accessibility().grantAfter(milliseconds(2500));
  a.host.advance(milliseconds(3999));
  EXPECT_EQ(a.icon(), "keyboard.badge.ellipsis");
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · ממתין לאישור נגישות");
  EXPECT_FALSE(a.permissionItem().hidden);
  a.host.advance(milliseconds(1));
  EXPECT_EQ(a.icon(), "keyboard");
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה מהמערכת · פעיל");
  EXPECT_TRUE(a.permissionItem().hidden);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
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

TEST(PermissionPolling, startedTwiceLeavesOneTimerThatCountsAnew) {
  Untrusted a;
  a.launch();
  a.host.advance(milliseconds(1500));
  a.choose(kPermissionTitle);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  a.host.calls().clear();
  a.host.advance(milliseconds(1999));
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrusted"), 0U);
  a.host.advance(milliseconds(1));
  EXPECT_EQ(a.host.calls().count("accessibility.isProcessTrusted"), 1U);
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

/// Tells whether anybody still holds the last timer.
class WatchedRunLoop : public platform::FakeRunLoop {
 public:
  using FakeRunLoop::FakeRunLoop;
  platform::TimerRef scheduledRepeatingTimer(milliseconds interval,
                                             std::function<void(platform::Timer&)> handler) override {
    auto timer = FakeRunLoop::scheduledRepeatingTimer(interval, std::move(handler));
    last = timer;
    return timer;
  }
  std::weak_ptr<platform::Timer> last;
};

class HostWithWatchedTimers : public platform::FakeHost {
 public:
  WatchedRunLoop& runLoop() override { return watched_; }

 private:
  platform::FakeSystem system_;
  WatchedRunLoop watched_{system_};
};

TEST(PermissionPolling, endedTimerIsLetGo) {
  HostWithWatchedTimers host;
  const platform::HostScope scope(host);
  host.accessibility().setTrusted(false);
  HotKeyCenter center;
  const auto delegate = AppDelegate::create(center);
  delegate->applicationDidFinishLaunching();
  EXPECT_FALSE(host.runLoop().last.expired());
  host.accessibility().setTrusted(true);
  host.runLoop().advance(milliseconds(2000));
  EXPECT_EQ(host.runLoop().liveTimers(), 0U);
  EXPECT_TRUE(host.runLoop().last.expired());
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

TEST(PermissionItem, pollsEvenWhenTheSettingsPageIsUnknown) {
  Untrusted a;
  a.launch();
  a.host.failNext(FakeOperation::urlFromString);
  a.choose(kPermissionTitle);
  EXPECT_THAT(a.host.workspace().openedUrls(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
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

TEST(PermissionAlert, saysWhatItSays) {
  Alerted a;
  a.host.alerts().answer("ביטול");
  a.fixWithoutPermission();
  ASSERT_EQ(a.host.alerts().shown().size(), 1U);
  const auto& alert = a.host.alerts().shown().front();
  EXPECT_EQ(alert.messageText, "נדרש אישור נגישות");
  EXPECT_EQ(alert.informativeText,
            "כדי לתקן טקסט מסומן, האפליקציה צריכה אישור לשלוט במחשב דרך הנגישות. האישור ניתן פעם אחת בהגדרות "
            "המערכת. האפליקציה לא שומרת ולא שולחת שום הקלדה.");
  EXPECT_THAT(alert.buttons, ElementsAre("פתח הגדרות", "ביטול"));
}

TEST(PermissionAlert, comesToTheFrontFirst) {
  Alerted a;
  a.host.alerts().answer("ביטול");
  a.fixWithoutPermission();
  EXPECT_THAT(a.host.application().activations, ElementsAre(true));
  EXPECT_TRUE(inOrder(a.host.calls(), {"application.activate true", "alerts.runModal"}));
}

TEST(PermissionAlert, firstButtonOpensTheSettingsAndPolls) {
  Alerted a;
  a.host.alerts().answer("פתח הגדרות");
  a.fixWithoutPermission();
  EXPECT_THAT(a.host.workspace().openedUrls(), ElementsAre(kSettingsUrl));
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  EXPECT_TRUE(inOrder(a.host.calls(), {"workspace.open", "runLoop.timer 2000ms"}));
}

TEST(PermissionAlert, cancelLeavesTheAgentAsItWas) {
  Alerted a;
  a.host.alerts().answer("ביטול");
  a.fixWithoutPermission();
  EXPECT_THAT(a.host.workspace().openedUrls(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
  a.host.alerts().answer("ביטול");
  a.host.userPresses(kF2);  // the fix goes on reporting the missing permission
  EXPECT_EQ(a.host.alerts().shown().size(), 2U);
  EXPECT_EQ(a.lastLogLine(), "fix: no permission");
}

TEST(PermissionAlert, closingItIsACancel) {
  Alerted a;
  a.host.alerts().answerByClosing();
  a.fixWithoutPermission();
  EXPECT_THAT(a.host.workspace().openedUrls(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

// System events.

TEST(Wake, registersTheHotKeyAnewAndRefreshes) {
  Agent a;
  a.launch();
  a.host.hotKeyService().loseRegistrations();
  a.host.calls().clear();
  a.host.workspace().wake();
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
  EXPECT_THAT(a.host.logMessages(),
              ElementsAre("hotkey: register F2 ok=true", "hotkey: register F2 ok=true"));
  EXPECT_TRUE(inOrder(a.host.calls(), {"hotKeys.registerHotKey", "statusItem.setImage"}));
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

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

TEST(LayoutChange, rebuildsTheMapAndRefreshes) {
  Agent a;
  a.launch();
  a.host.inputSourceService().changeLayouts({platform::usLayout()});
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה קבועה · פעיל");
  a.host.inputSourceService().changeLayouts({platform::usLayout(), platform::hebrewLayout()});
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה מהמערכת · פעיל");
}

TEST(LayoutChange, rebuildsAndRefreshesWithoutThePermissionToo) {
  Untrusted a;
  a.launch();
  a.host.inputSourceService().changeLayouts({platform::usLayout()});
  EXPECT_GT(a.host.calls().count("inputSources.createInputSourceList"), 0U);
  EXPECT_EQ(a.host.calls().count("statusItem.setImage keyboard.badge.ellipsis"), 1U);
  a.host.accessibility().setTrusted(true);
  a.host.advance(milliseconds(2000));
  EXPECT_EQ(a.statusLine(), "גרסה 1.0 · פריסה קבועה · פעיל");
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

TEST(LoginItemFirstRun, failureIsSilentAndNotTriedAgain) {
  Agent a;
  a.host.failNext(FakeOperation::registerLoginItem);
  a.launch();
  EXPECT_EQ(a.host.standardUserDefaults().objectForKey("didRegisterLoginItem"),
            platform::DefaultsValue(true));
  EXPECT_EQ(a.host.application().beeps, 0);
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  EXPECT_THAT(a.host.logMessages(), ElementsAre("hotkey: register F2 ok=true"));
  EXPECT_FALSE(a.loginItem().checked);

  a.delegate = AppDelegate::create(a.center);
  a.launch();  // the second start
  EXPECT_EQ(a.host.calls().count("loginItem.registerItem"), 1U);
}

TEST(LoginItemFirstRun, laterStartsLeaveItAlone) {
  Agent a;
  a.host.standardUserDefaults().put("didRegisterLoginItem", true);
  a.launch();
  EXPECT_THAT(a.host.calls().of("loginItem."), IsEmpty());
  EXPECT_EQ(a.host.loginItem().status(), LoginItemStatus::notRegistered);
}

TEST(LoginItemToggle, unregistersOnlyWhenEnabledAndRegistersInEveryOtherState) {
  for (const auto status : {LoginItemStatus::notRegistered, LoginItemStatus::enabled,
                            LoginItemStatus::requiresApproval, LoginItemStatus::notFound}) {
    Agent a;
    a.host.standardUserDefaults().put("didRegisterLoginItem", true);
    a.launch();
    a.host.loginItem().setStatus(status);
    a.choose(kLoginTitle);
    const bool wasEnabled = status == LoginItemStatus::enabled;
    EXPECT_THAT(a.host.calls().of("loginItem."),
                ElementsAre(wasEnabled ? "loginItem.unregisterItem" : "loginItem.registerItem"));
    EXPECT_EQ(a.loginItem().checked, !wasEnabled);
    EXPECT_EQ(a.host.application().beeps, 0);
  }
}

TEST(LoginItemToggle, checkMarkShowsWhatTheSystemSays) {
  Agent a;
  a.host.standardUserDefaults().put("didRegisterLoginItem", true);
  a.host.loginItem().setStatusAfterRegister(LoginItemStatus::requiresApproval);
  a.launch();
  a.choose(kLoginTitle);
  EXPECT_FALSE(a.loginItem().checked);
  EXPECT_EQ(a.host.application().beeps, 0);
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

TEST(LoginItemToggle, refusedUnregistrationBeepsAndStaysChecked) {
  Agent a;
  a.launch();
  a.host.failNext(FakeOperation::unregisterLoginItem);
  a.choose(kLoginTitle);
  EXPECT_EQ(a.host.application().beeps, 1);
  EXPECT_TRUE(a.loginItem().checked);
}

}  // namespace
}  // namespace lexwend::tests
