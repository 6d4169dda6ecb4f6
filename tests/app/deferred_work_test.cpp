// SPDX-License-Identifier: MIT
// What the system still holds of the agent when the agent is gone: nothing of it runs, nothing of it leaks.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/agent.h"

namespace lexwend::tests {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

/// An agent that can go away, and what it did afterwards.
struct Leaving : Agent {
  /// Lets go of the delegate. It must be gone at once, and its recorder with it: nothing that waits holds
  /// them.
  void leave() {
    letGoOfTheDelegate();
    EXPECT_EQ(host.recorderWindows().alive(), 0U);
  }
  void letGoOfTheDelegate() {
    const std::weak_ptr<AppDelegate> weak = delegate;
    delegate.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(host.statusBar().item(), nullptr);
    EXPECT_EQ(host.keyMonitor().installed(), 0U);
    host.calls().clear();
    logAtLeave = host.logFile();
    settingsAtLeave = host.standardUserDefaults().all();
  }
  void expectNothingWasLogged() { EXPECT_EQ(host.logFile(), logAtLeave); }
  void expectNothingWasStored() { EXPECT_EQ(host.standardUserDefaults().all(), settingsAtLeave); }

  std::string logAtLeave;
  std::map<std::string, platform::DefaultsValue, std::less<>> settingsAtLeave;
};

TEST(DeferredWork, menuFixDoesNotStart) {
  Leaving a;
  a.launch();
  const auto editor = a.openEditor("akuo");
  a.chooseFix();
  EXPECT_EQ(a.host.runLoop().pendingWork(), 1U);
  a.leave();
  a.host.advance(seconds(10));
  EXPECT_EQ(editor->focus()->text(), "akuo");
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
}

TEST(DeferredWork, iconResetDoesNotRun) {
  Leaving a;
  a.launch();
  a.openEditor("123");
  a.host.userPresses(kF2);
  EXPECT_EQ(a.host.runLoop().pendingWork(), 1U);
  a.leave();
  a.host.advance(seconds(10));
  EXPECT_EQ(a.host.runLoop().pendingWork(), 0U);
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
}

TEST(DeferredWork, permissionTimerEndsItselfAtItsNextTick) {
  Leaving a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  a.leave();
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  a.host.advance(milliseconds(1999));
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  a.host.advance(milliseconds(1));
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
  a.host.advance(seconds(10));
  EXPECT_THAT(a.host.calls().all(), ElementsAre("timer.invalidate"));
}

TEST(DeferredWork, hotKeyDoesNothing) {
  Leaving a;
  a.launch();
  const auto editor = a.openEditor("akuo");
  a.leave();
  EXPECT_TRUE(a.host.hotKeyService().press(kF2, platform::kNoModifiers));  // the center still holds it
  EXPECT_EQ(editor->focus()->text(), "akuo");
  a.expectNothingWasLogged();
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
}

TEST(DeferredWork, wakeObserverDoesNothing) {
  Leaving a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  a.leave();
  a.host.workspace().wake();
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);  // the one from the launch, none anew
}

TEST(DeferredWork, layoutObserverDoesNothing) {
  Leaving a;
  a.launch();
  a.leave();
  a.host.inputSourceService().changeLayouts({platform::usLayout()});
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
}

TEST(DeferredWork, menuItemsDoNothing) {
  Leaving a;
  a.host.accessibility().setTrusted(false);
  a.launch();
  const auto items = a.host.statusBar().menu()->items;  // a menu that is still open holds them
  a.leave();
  int actions = 0;
  for (const auto& item : items) {
    if (!item->action) continue;
    item->action();
    ++actions;
  }
  EXPECT_EQ(actions, 6);
  EXPECT_THAT(a.host.calls().all(), IsEmpty());
  EXPECT_EQ(a.host.runLoop().pendingWork(), 0U);
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
  a.expectNothingWasStored();
}

TEST(DeferredWork, openRecorderGoesWithItsOwnerWithoutReporting) {
  Leaving a;
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.userPresses(kF5);
  a.leave();
  EXPECT_EQ(a.host.recorderWindows().window(), nullptr);
  EXPECT_EQ(a.host.userPresses(kReturn), platform::KeyFate::nobody);
  a.expectNothingWasLogged();
  a.expectNothingWasStored();
  EXPECT_TRUE(a.host.hotKeyService().registered().empty());
}

TEST(DeferredWork, recorderThatOutlivesItsOwnerReportsToNobody) {
  for (const bool saves : {true, false}) {
    SCOPED_TRACE(saves);
    Leaving a;
    a.host.hotKeyService().otherAppTakes(kF5,
                                         platform::kNoModifiers);  // a report of it would end in an alert
    a.launch();
    a.choose(kChangeKeyTitle);
    a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
    a.host.recorderWindows().whileClosing([&] {
      a.letGoOfTheDelegate();
      EXPECT_EQ(a.host.recorderWindows().alive(), 1U);  // kept by the click that ends it
    });
    saves ? a.host.recorderWindows().clickSave() : a.host.recorderWindows().clickCancel();
    ASSERT_EQ(a.delegate, nullptr);
    EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
    EXPECT_TRUE(a.host.hotKeyService().registered().empty());
    EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
    EXPECT_THAT(a.host.calls().all(), IsEmpty());
    a.expectNothingWasLogged();
    a.expectNothingWasStored();
  }
}

TEST(DeferredWork, reportOfTheRecorderIsCarriedOutBeforeTheDelegateGoes) {
  Leaving a;
  a.host.hotKeyService().otherAppTakes(kF5, platform::kNoModifiers);
  a.launch();
  a.choose(kChangeKeyTitle);
  a.host.keyMonitor().deliver({kF5, platform::kNoEventFlags});
  a.host.alerts().answer("אישור", [&] { a.delegate.reset(); });
  a.host.recorderWindows().clickSave();
  EXPECT_EQ(a.storedHotKey(), "120 0");
  EXPECT_TRUE(a.host.hotKeyService().holds(kF2, platform::kNoModifiers));
  EXPECT_EQ(a.host.calls().all().back(), "statusItem.setImage keyboard");  // the refresh, the last step
  EXPECT_EQ(a.host.statusBar().item(), nullptr);
  EXPECT_EQ(a.host.recorderWindows().alive(), 0U);
}

TEST(DeferredWork, pasteboardIsPutBackWithoutTheAgent) {
  Leaving a;
  a.host.standardUserDefaults().put("compatMode", true);
  a.host.pasteboard().otherAppCopies("what the user had");
  a.launch();
  const auto editor = a.openEditor("akuo");
  a.host.userPresses(kF2);
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(a.host.pasteboard().plainText(), "שלום");
  a.leave();
  a.host.advance(milliseconds(500));
  EXPECT_EQ(a.host.pasteboard().plainText(), "what the user had");
}

TEST(DeferredWork, everythingPendingAtOnce) {
  Leaving a;
  a.host.accessibility().setTrusted(false);
  a.host.standardUserDefaults().put("compatMode", true);
  a.host.pasteboard().otherAppCopies("what the user had");
  a.launch();  // a timer, two observers, a hot key
  a.host.accessibility().setTrusted(true);
  const auto editor = a.openEditor("akuo");
  a.host.userPresses(kF2);  // the pasteboard's restore and the icon's reset
  a.chooseFix();            // a fix to come
  a.choose(kChangeKeyTitle);
  const auto items = a.host.statusBar().menu()->items;
  EXPECT_EQ(a.host.runLoop().pendingWork(), 3U);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  a.leave();

  a.host.advance(seconds(10));
  a.host.workspace().wake();
  a.host.inputSourceService().changeLayouts({platform::usLayout()});
  for (const auto& item : items) {
    if (item->action) item->action();
  }
  for (const std::uint32_t id : {1U, 2U}) a.host.hotKeyService().dispatch({0x544B5652, id});
  a.host.advance(seconds(10));

  EXPECT_EQ(a.host.runLoop().pendingWork(), 0U);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(a.host.pasteboard().plainText(), "what the user had");
  EXPECT_EQ(a.host.application().beeps, 0);
  EXPECT_THAT(a.host.alerts().shown(), IsEmpty());
  a.expectNothingWasLogged();
  a.expectNothingWasStored();
  for (const auto& call : a.host.calls().all()) {
    EXPECT_TRUE(call == "timer.invalidate" || call.starts_with("pasteboard.")) << call;
  }
}

TEST(DeferredWork, delegateMayGoWhileAnAlertOfItsOwnIsOpen) {
  Leaving a;
  a.launch();
  a.openEditor("akuo");
  a.host.accessibility().setTrusted(false);
  a.host.alerts().answer("פתח הגדרות", [&] { a.delegate.reset(); });
  a.host.userPresses(kF2);
  // The hot key's call holds the delegate until it returns; the timer that it started ends itself.
  EXPECT_EQ(a.host.statusBar().item(), nullptr);
  EXPECT_EQ(a.host.runLoop().liveTimers(), 1U);
  a.host.advance(seconds(2));
  EXPECT_EQ(a.host.runLoop().liveTimers(), 0U);
}

}  // namespace
}  // namespace lexwend::tests
