// SPDX-License-Identifier: MIT
#include "support/log.h"

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

struct LogTest : testing::Test {
  platform::FakeHost host;
  platform::HostScope scope{host};
  const std::string path = "/Users/someone/Library/Logs/Lexwend.log";
};

using Log_ = LogTest;

TEST_F(Log_, liesUnderTheHomeDirectoryOfTheInstalledHost) {
  EXPECT_EQ(Log::url(), path);
  {
    platform::FakeHost other;
    other.files().home = "/";
    const platform::HostScope otherScope(other);
    EXPECT_EQ(Log::url(), "/Library/Logs/Lexwend.log");
  }
  EXPECT_EQ(Log::url(), path);
}

TEST_F(Log_, placeIsWorkedOutOnFirstUseAndKept) {
  Log::write("one");
  host.files().home = "/Users/elsewhere";
  host.files().addFolder("/Users/elsewhere/Library/Logs");
  Log::write("two");
  EXPECT_EQ(Log::url(), path);
  EXPECT_EQ(host.files().bytes(path), "2024-03-05 14:07:09.042 one\n2024-03-05 14:07:09.042 two\n");
}

TEST_F(Log_, emptyMessageIsTheTimestampAndOneBlank) {
  Log::write("");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 \n");
}

TEST_F(Log_, messageIsNotEscaped) {
  Log::write("two\nlines \"קצר\"");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 two\nlines \"קצר\"\n");
}

TEST_F(Log_, unreadableHomeDirectoryLosesTheLineSilently) {
  host.files().home = "";
  host.files().addFolder("/Library/Logs");
  Log::write("lost");
  EXPECT_EQ(Log::url(), "");
  EXPECT_EQ(host.files().fileCount(), 0u);
}

TEST_F(Log_, nothingStaysOpenBetweenCalls) {
  Log::write("one");
  Log::write("two");
  EXPECT_EQ(host.files().openHandles(), 0);
  EXPECT_EQ(host.dateFormatters().made(), 1u);
}

TEST_F(Log_, illFormedTextIsNotWritten) {
  Log::write("\xFF");
  Log::write("cut \xD7");
  EXPECT_EQ(host.files().fileCount(), 0u);
}

}  // namespace
}  // namespace lexwend
