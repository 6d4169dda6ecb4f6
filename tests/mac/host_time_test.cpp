// SPDX-License-Identifier: MIT
// The run loop and the observers of the system.
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

using namespace std::chrono_literals;

struct MacRunLoopService : OnMac {
  RunLoop& service = host->runLoop();
};

TEST_F(MacRunLoopService, runsDeferredWorkOnceAndNotTooEarly) {
  int runs = 0;
  service.dispatchAfter(500ms, [&] { ++runs; });
  doubles::time::advance(499ms);
  EXPECT_EQ(runs, 0);
  doubles::time::advance(1ms);
  EXPECT_EQ(runs, 1);
  doubles::time::advance(10s);
  EXPECT_EQ(runs, 1);
}

TEST_F(MacRunLoopService, letsGoOfDeferredWorkOnceItRan) {
  const auto held = std::make_shared<int>(0);
  service.dispatchAfter(250ms, [held] { ++*held; });
  EXPECT_EQ(held.use_count(), 2);
  doubles::time::advance(250ms);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(MacRunLoopService, firesATimerEveryIntervalUntilItIsInvalidated) {
  int ticks = 0;
  Registration timer = service.scheduledRepeatingTimer(2000ms, [&] { ++ticks; });
  doubles::time::advance(1999ms);
  EXPECT_EQ(ticks, 0);
  doubles::time::advance(1ms);
  EXPECT_EQ(ticks, 1);
  doubles::time::advance(4s);
  EXPECT_EQ(ticks, 3);
  timer.cancel();
  timer.cancel();
  doubles::time::advance(10s);
  EXPECT_EQ(ticks, 3);
  EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
}

TEST_F(MacRunLoopService, firesATimerUntilItsHandlerEndsIt) {
  int ticks = 0;
  Registration timer;
  timer = service.scheduledRepeatingTimer(2000ms, [&] {
    if (++ticks == 2) timer.cancel();
  });
  doubles::time::advance(60s);
  EXPECT_EQ(ticks, 2);
  EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
}

TEST_F(MacRunLoopService, letsATimersHandlerFinishAfterItInvalidatedItsTimer) {
  const auto held = std::make_shared<int>(0);
  Registration timer;
  timer = service.scheduledRepeatingTimer(2000ms, [&held, &timer, own = held] {
    const auto& outside = held;
    timer.cancel();
    EXPECT_EQ(outside.use_count(), 2) << "the handler went while it runs";
    ++*outside;
  });
  doubles::time::advance(2s);
  EXPECT_EQ(*held, 1);
  host = nullptr;
  EXPECT_EQ(session.unbalancedObjects(), "");
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(MacRunLoopService, schedulesATimerThatGoesOnWhileAnAlertIsOpen) {
  int ticks = 0;
  Registration timer = service.scheduledRepeatingTimer(2000ms, [&] { ++ticks; });
  doubles::time::advanceInModalPanel(4s);
  EXPECT_EQ(ticks, 2);
  const auto scheduled = doubles::callsNamed("+[NSTimer scheduledTimerWithTimeInterval:repeats:block:]");
  ASSERT_EQ(scheduled.size(), 1u);
  EXPECT_EQ(scheduled[0].arguments, "2, repeats=true");
  timer.cancel();
}

TEST_F(MacRunLoopService, goesOnWhileWorkHasAnAlertOpen) {
  int ticks = 0, wakes = 0, runs = 0;
  Registration timer = service.scheduledRepeatingTimer(2000ms, [&] { ++ticks; });
  const auto observer = host->workspace().observeDidWake([&] { ++wakes; });
  service.dispatchAfter(1ms, [&] {
    service.dispatchAfter(1s, [&] { ++runs; });
    doubles::time::later(3s, [] { doubles::workspace::postDidWake(); });
    doubles::time::advanceInModalPanel(5s);
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(runs, 1);
  });
  doubles::time::advance(1s);
  EXPECT_EQ(ticks, 2);
  timer.cancel();
}

TEST_F(MacRunLoopService, blocksWhileItSleeps) {
  bool ran = false;
  service.dispatchAfter(10ms, [&] { ran = true; });
  bool outside = false;
  doubles::time::later(15ms, [&] { outside = true; });
  service.sleep(20ms);
  EXPECT_EQ(doubles::time::slept(), 20ms);
  EXPECT_TRUE(outside);
  EXPECT_FALSE(ran);
  doubles::time::advance(0ms);
  EXPECT_TRUE(ran);
}

TEST_F(MacRunLoopService, goesOnWhenWorkOrATickThrows) {
  int ticks = 0;
  ::testing::internal::CaptureStderr();
  service.dispatchAfter(1ms, [] { throw std::runtime_error("from the work"); });
  Registration timer = service.scheduledRepeatingTimer(2ms, [&] {
    ++ticks;
    throw std::runtime_error("from the tick");
  });
  doubles::time::advance(1ms);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "lexwend: an exception ended in a callback of the system\n");
  doubles::time::advance(3ms);
  EXPECT_EQ(ticks, 2);
  timer.cancel();
}

struct MacWorkspaceService : OnMac {
  Workspace& service = host->workspace();
};

TEST_F(MacWorkspaceService, namesTheFrontmostApplication) {
  doubles::workspace::setFrontmost(doubles::workspace::Running{"com.apple.TextEdit", 5});
  EXPECT_EQ(service.frontmostApplication().value().bundleIdentifier, "com.apple.TextEdit");
  doubles::workspace::setFrontmost(doubles::workspace::Running{std::nullopt, 5});
  EXPECT_EQ(service.frontmostApplication().value().bundleIdentifier, std::nullopt);
  doubles::workspace::setFrontmost(std::nullopt);
  EXPECT_FALSE(service.frontmostApplication().has_value());
}

TEST_F(MacWorkspaceService, opensAUrl) {
  const char* settings = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
  const UrlRef url = service.urlFromString(settings);
  ASSERT_NE(url, nullptr);
  EXPECT_TRUE(doubles::workspace::openedUrls().empty());
  service.open(url);
  EXPECT_EQ(doubles::workspace::openedUrls(), std::vector<std::string>{settings});
}

TEST_F(MacWorkspaceService, givesNothingForWhatIsNoUrl) {
  EXPECT_EQ(service.urlFromString(""), nullptr);
  EXPECT_EQ(service.urlFromString("\xFF"), nullptr);
  EXPECT_EQ(service.urlFromString("http://example.com:port"), nullptr);
}

TEST_F(MacWorkspaceService, tellsOnTheMainQueueAfterEachWake) {
  int wakes = 0;
  auto observer = service.observeDidWake([&] { ++wakes; });
  EXPECT_THAT(argumentsOf("-[NSNotificationCenter addObserverForName:object:queue:usingBlock:]"),
              ::testing::EndsWith(", object=nil, queue=main"));
  EXPECT_EQ(doubles::workspace::observers(), 1u);
  doubles::workspace::postDidWake();
  doubles::time::advance(0ms);
  doubles::workspace::postDidWake();
  doubles::time::advance(0ms);
  EXPECT_EQ(wakes, 2);
  doubles::input_sources::postEnabledSourcesChanged();
  doubles::time::advance(0ms);
  EXPECT_EQ(wakes, 2);
  observer.cancel();
  doubles::workspace::postDidWake();
  doubles::time::advance(0ms);
  EXPECT_EQ(wakes, 2);
  EXPECT_EQ(doubles::workspace::observers(), 1u) << "the system's observer stays, and does nothing";
}

TEST_F(MacWorkspaceService, goesOnWhenAWakeHandlerThrows) {
  int wakes = 0;
  const auto throwing = service.observeDidWake([] { throw std::runtime_error("from the handler"); });
  const auto counting = service.observeDidWake([&] { ++wakes; });
  doubles::workspace::postDidWake();
  doubles::time::advance(0ms);
  EXPECT_EQ(wakes, 1);
}

}  // namespace
}  // namespace lexwend::platform::mac
