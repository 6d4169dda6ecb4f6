// SPDX-License-Identifier: MIT
#include <string>

#include "platform/run_loop.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

class RunLoopContract : public ContractTest {
 protected:
  platform::RunLoop& loop() { return host().runLoop(); }
};

TEST_F(RunLoopContract, deferredWorkRunsOnceAndNotBeforeItsTime) {
  int runs = 0;
  // Long before: a loaded machine may take a while for the short wait.
  loop().dispatchAfter(2s, [&] { ++runs; });
  EXPECT_EQ(runs, 0);
  EXPECT_FALSE(underTest->waitUntil([&] { return runs > 0; }, 20ms));
  EXPECT_TRUE(underTest->waitUntil([&] { return runs > 0; }));
  underTest->waitUntil([] { return false; }, 150ms);
  EXPECT_EQ(runs, 1);
}

TEST_F(RunLoopContract, deferredWorkRunsInTheOrderOfItsTime) {
  std::string order;
  loop().dispatchAfter(60ms, [&] { order += 'c'; });
  loop().dispatchAfter(10ms, [&] { order += 'a'; });
  loop().dispatchAfter(35ms, [&] { order += 'b'; });
  EXPECT_TRUE(underTest->waitUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, "abc");
}

TEST_F(RunLoopContract, deferredWorkThatASleepHeldUpRunsInTheOrderOfItsTime) {
  std::string order;
  loop().dispatchAfter(60ms, [&] { order += 'c'; });
  loop().dispatchAfter(10ms, [&] { order += 'a'; });
  loop().dispatchAfter(35ms, [&] { order += 'b'; });
  loop().sleep(100ms);
  EXPECT_TRUE(underTest->waitUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, "abc");
}

TEST_F(RunLoopContract, deferredWorkMayDeferMore) {
  bool inner = false;
  loop().dispatchAfter(1ms, [&] { loop().dispatchAfter(1ms, [&] { inner = true; }); });
  EXPECT_TRUE(underTest->waitUntil([&] { return inner; }));
}

TEST_F(RunLoopContract, sleepRunsNoDeferredWorkAndNoTimer) {
  bool ran = false;
  loop().dispatchAfter(1ms, [&] { ran = true; });
  auto timer = loop().scheduledRepeatingTimer(1ms, [&] { ran = true; });
  loop().sleep(40ms);
  EXPECT_FALSE(ran);
  timer.cancel();
  EXPECT_TRUE(underTest->waitUntil([&] { return ran; })) << "what sleep held up runs afterwards";
}

TEST_F(RunLoopContract, timerRepeatsUntilItsHandlerEndsIt) {
  int ticks = 0;
  platform::Registration timer;
  timer = loop().scheduledRepeatingTimer(5ms, [&] {
    if (++ticks == 3) timer.cancel();
  });
  EXPECT_EQ(ticks, 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return ticks == 3; }));
  underTest->waitUntil([] { return false; }, 60ms);
  EXPECT_EQ(ticks, 3);
}

TEST_F(RunLoopContract, timerThatIsLetGoNeverFires) {
  int ticks = 0;
  static_cast<void>(loop().scheduledRepeatingTimer(5ms, [&] { ++ticks; }));
  auto cancelled = loop().scheduledRepeatingTimer(5ms, [&] { ++ticks; });
  cancelled.cancel();
  cancelled.cancel();
  underTest->waitUntil([] { return false; }, 40ms);
  EXPECT_EQ(ticks, 0);
}

TEST_F(RunLoopContract, endOfATimerLetsGoOfWhatItsHandlerHolds) {
  const auto held = std::make_shared<int>(0);
  auto timer = loop().scheduledRepeatingTimer(5ms, [held] {});
  EXPECT_GT(held.use_count(), 1);
  timer.cancel();
  EXPECT_TRUE(underTest->waitUntil([&] { return held.use_count() == 1; }));
}

}  // namespace
}  // namespace lexwend::contract
