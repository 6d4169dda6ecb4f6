// SPDX-License-Identifier: MIT
#include "platform/linux/session/run_loop.h"

#include <string>

#include <glib.h>
#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

struct GLibRunLoop : ::testing::Test {
  LinuxRunLoop loop;
  std::string order;

  void runUntil(const std::function<bool()>& done) const {
    bool late = false;
    const auto limit = [](gpointer flag) -> gboolean {
      *static_cast<bool*>(flag) = true;
      return G_SOURCE_REMOVE;
    };
    const guint source = g_timeout_add_seconds(10, limit, &late);
    while (!done() && !late) g_main_context_iteration(nullptr, TRUE);
    ASSERT_FALSE(late);
    g_source_remove(source);
  }
};

TEST_F(GLibRunLoop, runsDeferredWorkOnceAndWhenItIsDue) {
  const auto start = std::chrono::steady_clock::now();
  loop.dispatchAfter(30ms, [&] { order += 'b'; });
  loop.dispatchAfter(10ms, [&] { order += 'a'; });
  EXPECT_EQ(order, "");
  runUntil([&] { return order.size() == 2; });
  EXPECT_EQ(order, "ab");
  EXPECT_GE(std::chrono::steady_clock::now() - start, 29ms);
}

TEST_F(GLibRunLoop, firesATimerUntilItIsInvalidatedInItsHandler) {
  int fired = 0;
  std::weak_ptr<Timer> weak = loop.scheduledRepeatingTimer(2ms, [&](Timer& timer) {
    if (++fired == 3) {
      timer.invalidate();
      timer.invalidate();
    }
  });
  EXPECT_FALSE(weak.expired());
  runUntil([&] { return weak.expired(); });
  bool later = false;
  loop.dispatchAfter(20ms, [&] { later = true; });
  runUntil([&] { return later; });
  EXPECT_EQ(fired, 3);
}

TEST_F(GLibRunLoop, doesNotRunWorkWhileItSleeps) {
  loop.dispatchAfter(1ms, [&] { order += 'a'; });
  const auto start = std::chrono::steady_clock::now();
  loop.sleep(20ms);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
  EXPECT_EQ(order, "");
}

TEST_F(GLibRunLoop, finishesPendingWorkAtItsOwnTimeAndWhatThatDefers) {
  const auto start = std::chrono::steady_clock::now();
  loop.dispatchAfter(40ms, [&] {
    order += 'a';
    loop.dispatchAfter(10ms, [&] { order += 'b'; });
  });
  loop.finishPending(5s);
  EXPECT_EQ(order, "ab");
  EXPECT_GE(std::chrono::steady_clock::now() - start, 49ms);
}

TEST_F(GLibRunLoop, finishesWhatWorkDefersThatTookLong) {
  loop.dispatchAfter(10ms, [&] {
    order += 'a';
    loop.sleep(100ms);  // more than what is waited for, as a fix may be
    loop.dispatchAfter(40ms, [&] { order += 'b'; });
  });
  loop.finishPending(50ms);
  EXPECT_EQ(order, "ab");
}

TEST_F(GLibRunLoop, doesNotWaitForWorkBeyondTheLimit) {
  loop.dispatchAfter(1h, [&] { order += 'a'; });
  loop.finishPending(10ms);
  EXPECT_EQ(order, "");
}

TEST_F(GLibRunLoop, hasNothingToWakeUpForWhenNothingIsDeferred) {
  gint timeout = 0;
  gint priority = 0;
  GMainContext* context = g_main_context_default();
  const auto timer = loop.scheduledRepeatingTimer(1ms, [](Timer&) {});
  timer->invalidate();
  ASSERT_TRUE(g_main_context_acquire(context));
  g_main_context_prepare(context, &priority);
  g_main_context_query(context, G_MAXINT, &timeout, nullptr, 0);
  g_main_context_release(context);
  EXPECT_EQ(timeout, -1);
}

TEST(GLibRunLoopsEnd, dropsWorkAndTimers) {
  auto held = std::make_shared<int>(0);
  TimerRef timer;
  {
    LinuxRunLoop loop;
    loop.dispatchAfter(1h, [held] {});
    timer = loop.scheduledRepeatingTimer(1h, [held](Timer&) {});
  }
  timer->invalidate();
  timer.reset();
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace lexwend::platform
