// SPDX-License-Identifier: MIT
#include "platform/linux/pipes/pipe_transfers.h"

#include <array>
#include <csignal>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/pipes/own_pipes.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;
using Clock = PipeTransfers::Clock;

constexpr std::size_t kSmallestPipe = 4096;

ClipboardTarget target(const char* name, std::size_t size) {
  return {name, name, 8, Bytes(std::vector<std::byte>(size, std::byte{'a'}))};
}
ClipboardTarget text(std::size_t size = 5) {
  return target("UTF8_STRING", size);
}

bool isOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

/// A program that fetches: it holds the reading end.
class Fetcher {
 public:
  Fetcher() {
    EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC | O_NONBLOCK), 0);
    fcntl(ends_[1], F_SETPIPE_SZ, kSmallestPipe);
    fcntl(ends_[1], F_SETFL, 0);  // a program passes a pipe that blocks
  }
  ~Fetcher() { goes(); }
  Fetcher(const Fetcher&) = delete;
  Fetcher& operator=(const Fetcher&) = delete;

  int pipe() const { return ends_[1]; }
  std::size_t reads() const {
    std::array<char, 4 * kSmallestPipe> buffer{};
    const ssize_t got = read(ends_[0], buffer.data(), buffer.size());
    return got < 0 ? 0 : static_cast<std::size_t>(got);
  }
  void goes() {
    if (ends_[0] >= 0) close(ends_[0]);
    ends_[0] = -1;
  }

 private:
  std::array<int, 2> ends_{-1, -1};
};

struct PipeTransfersTest : testing::Test {
  PipeTransfersTest() { signal(SIGPIPE, SIG_IGN); }

  PipeTransfers transfers;
  Fetcher fetcher;
  const Clock::time_point start = Clock::now();
  testing::MockFunction<void(bool)> ended;
};

TEST_F(PipeTransfersTest, writeNothingBeforeTheyProceed) {
  transfers.start(fetcher.pipe(), text(), start);
  EXPECT_EQ(fetcher.reads(), 0U);
  transfers.proceed();
  EXPECT_EQ(fetcher.reads(), 5U);
}

TEST_F(PipeTransfersTest, closeThePipeBeforeTheyTellTheEnd) {
  transfers.start(fetcher.pipe(), text(), start, ended.AsStdFunction());
  EXPECT_CALL(ended, Call(true)).WillOnce([&] { EXPECT_FALSE(isOpen(fetcher.pipe())); });
  transfers.proceed();
  EXPECT_TRUE(transfers.empty());
}

TEST_F(PipeTransfersTest, writeWhatAPipeTakesWithoutWaiting) {
  transfers.start(fetcher.pipe(), text(kSmallestPipe + 7), start, ended.AsStdFunction());
  transfers.proceed();
  EXPECT_THAT(transfers.pipes(), testing::ElementsAre(fetcher.pipe()));
  EXPECT_EQ(fetcher.reads(), kSmallestPipe);
  EXPECT_CALL(ended, Call(true));
  transfers.proceed();
  EXPECT_EQ(fetcher.reads(), 7U);
}

TEST_F(PipeTransfersTest, endWhenTheOtherProgramGoes) {
  transfers.start(fetcher.pipe(), text(kSmallestPipe + 7), start, ended.AsStdFunction());
  transfers.proceed();
  fetcher.goes();
  EXPECT_CALL(ended, Call(false));
  transfers.proceed();
  EXPECT_TRUE(transfers.empty());
  EXPECT_FALSE(transfers.anySince(start));
}

TEST_F(PipeTransfersTest, endWhenTheOtherProgramTakesNothingForTooLong) {
  PipeTransfers impatient{0ms};
  impatient.start(fetcher.pipe(), text(2 * kSmallestPipe), start, ended.AsStdFunction());
  EXPECT_CALL(ended, Call(false));
  impatient.proceed();
  EXPECT_FALSE(isOpen(fetcher.pipe()));
}

TEST_F(PipeTransfersTest, haveNewPatienceAfterEachPiece) {
  transfers.start(fetcher.pipe(), text(3 * kSmallestPipe), start);
  transfers.proceed();
  const auto first = transfers.earlier(std::nullopt);
  fetcher.reads();
  transfers.proceed();
  const auto second = transfers.earlier(std::nullopt);
  ASSERT_TRUE(first && second);
  EXPECT_GE(*first, start + PipeTransfers::kPatience);
  EXPECT_GT(*second, *first);
}

TEST_F(PipeTransfersTest, areWaitedForNoLongerThanTheirPatience) {
  EXPECT_EQ(transfers.earlier(std::nullopt), std::nullopt);
  EXPECT_EQ(transfers.earlier(start + 1h), start + 1h);
  transfers.start(fetcher.pipe(), text(2 * kSmallestPipe), start);
  EXPECT_LT(transfers.earlier(start + 1h), start + 1h);
  EXPECT_EQ(transfers.earlier(start), start);
}

TEST_F(PipeTransfersTest, countAFetchByTheTimeOfItsQuestionAndTellItsEnd) {
  transfers.start(fetcher.pipe(), text(kSmallestPipe + 7), start);
  transfers.proceed();
  EXPECT_EQ(transfers.firstTextSince(start), std::nullopt);
  EXPECT_FALSE(transfers.anySince(start));
  fetcher.reads();
  const Clock::time_point before = Clock::now();
  transfers.proceed();
  EXPECT_TRUE(isOpen(fetcher.pipe()));
  EXPECT_FALSE(transfers.anySince(start)) << "the last piece was not read";
  fetcher.reads();
  transfers.proceed();
  EXPECT_FALSE(isOpen(fetcher.pipe())) << "whoever reads meets the end";
  EXPECT_TRUE(transfers.anySince(start));
  ASSERT_TRUE(transfers.firstTextSince(start));
  EXPECT_GE(*transfers.firstTextSince(start), before);
  EXPECT_EQ(transfers.firstTextSince(start + 1ns), std::nullopt);
  EXPECT_FALSE(transfers.anySince(start + 1ns));
}

TEST_F(PipeTransfersTest, countNoFetchOfAProgramThatGoesWithoutReading) {
  transfers.start(fetcher.pipe(), text(), start);
  transfers.proceed();
  EXPECT_THAT(transfers.pipes(), testing::IsEmpty());
  EXPECT_LT(transfers.earlier(std::nullopt), Clock::now() + 50ms) << "nobody tells when it goes";
  fetcher.goes();
  transfers.proceed();
  EXPECT_TRUE(transfers.empty());
  EXPECT_FALSE(transfers.anySince(start));
}

TEST_F(PipeTransfersTest, tellTextFromOtherContents) {
  transfers.start(fetcher.pipe(), target("image/png", 5), start);
  transfers.proceed();
  fetcher.reads();
  transfers.proceed();
  EXPECT_TRUE(transfers.anySince(start));
  EXPECT_EQ(transfers.firstTextSince(start), std::nullopt);
}

TEST_F(PipeTransfersTest, tellNoFetchWhileAnotherIsUnderWay) {
  const Fetcher slow;
  transfers.start(fetcher.pipe(), text(), start);
  transfers.start(slow.pipe(), text(2 * kSmallestPipe), start);
  transfers.proceed();
  EXPECT_EQ(transfers.pipes().size(), 1U);
  EXPECT_FALSE(transfers.anySince(start));
  EXPECT_EQ(transfers.firstTextSince(start), std::nullopt);
}

TEST_F(PipeTransfersTest, forgetFetches) {
  transfers.start(fetcher.pipe(), text(), start);
  transfers.proceed();
  fetcher.reads();
  transfers.proceed();
  transfers.forgetFetches();
  EXPECT_FALSE(transfers.anySince(start));
}

TEST_F(PipeTransfersTest, forgetWhatNobodyReadsAnyMore) {
  const Fetcher another;
  transfers.start(fetcher.pipe(), text(), start);
  transfers.proceed();
  transfers.forgetFetches();
  transfers.start(another.pipe(), text(), start);
  transfers.proceed();
  another.reads();
  transfers.proceed();
  EXPECT_TRUE(transfers.anySince(start));
}

TEST_F(PipeTransfersTest, countNoFetchOfThisProcess) {
  const OwnPipe own(fetcher.pipe());
  transfers.start(fetcher.pipe(), text(), start);
  transfers.proceed();
  fetcher.reads();
  transfers.proceed();
  EXPECT_FALSE(transfers.anySince(start));
}

TEST_F(PipeTransfersTest, keepTheNewestFetches) {
  for (int second = 0; second < 300; ++second) {
    const Fetcher each;
    transfers.start(each.pipe(), target(second == 0 ? "UTF8_STRING" : "image/png", 1),
                    start + std::chrono::seconds(second));
    transfers.proceed();
    each.reads();
    transfers.proceed();
  }
  EXPECT_EQ(transfers.firstTextSince(start), std::nullopt);
  EXPECT_TRUE(transfers.anySince(start + 299s));
}

TEST_F(PipeTransfersTest, areAbandonedWithoutAWord) {
  EXPECT_CALL(ended, Call).Times(0);
  transfers.start(fetcher.pipe(), text(), start, ended.AsStdFunction());
  transfers.abandon();
  EXPECT_FALSE(isOpen(fetcher.pipe()));
  transfers.proceed();
  EXPECT_TRUE(transfers.empty());
}

}  // namespace
}  // namespace lexwend::platform
