// SPDX-License-Identifier: MIT
#include "support/log.h"

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

using platform::FakeOperation;

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

TEST_F(Log_, firstCallCreatesTheFileWithExactlyOneLine) {
  Log::write("fix: no permission");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 fix: no permission\n");
}

TEST_F(Log_, appendsAfterTheLastByteEvenWithoutALineFeed) {
  host.files().put(path, "unfinished");
  Log::write("one");
  Log::write("two");
  EXPECT_EQ(host.logFile(), "unfinished2024-03-05 14:07:09.042 one\n2024-03-05 14:07:09.042 two\n");
}

TEST_F(Log_, emptyMessageIsTheTimestampAndOneBlank) {
  Log::write("");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 \n");
}

TEST_F(Log_, messageIsNotEscaped) {
  Log::write("two\nlines \"קצר\"");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 two\nlines \"קצר\"\n");
}

TEST_F(Log_, missingFolderLosesTheLineSilently) {
  host.files().removeFolder("/Users/someone/Library/Logs");
  Log::write("lost");
  EXPECT_EQ(host.files().fileCount(), 0u);
}

TEST_F(Log_, unreadableHomeDirectoryLosesTheLineSilently) {
  host.files().home = "";
  host.files().addFolder("/Library/Logs");
  Log::write("lost");
  EXPECT_EQ(Log::url(), "");
  EXPECT_EQ(host.files().fileCount(), 0u);
}

TEST_F(Log_, readOnlyFileKeepsItsContents) {
  host.files().put(path, "kept\n");
  host.files().setReadOnly(path, true);
  Log::write("lost");
  EXPECT_EQ(host.files().bytes(path), "kept\n");
}

TEST_F(Log_, fileThatCannotBeOpenedIsReplaced) {
  host.files().put(path, "old\n");
  host.failNext(FakeOperation::openFile);
  Log::write("new");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 new\n");
}

TEST_F(Log_, failedWriteLosesThatLineOnly) {
  host.files().put(path, "");
  host.failNext(FakeOperation::writeFile);
  Log::write("lost");
  Log::write("kept");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 kept\n");
}

TEST_F(Log_, failedCloseAndFailedCreationAreSilent) {
  host.failNext(FakeOperation::writeWholeFile);
  Log::write("lost");
  EXPECT_EQ(host.files().fileCount(), 0u);
  host.files().put(path, "");
  host.failNext(FakeOperation::closeFile);
  Log::write("kept");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:09.042 kept\n");
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

TEST_F(Log_, timestampIsTheMomentOfTheCall) {
  host.advance(std::chrono::milliseconds(958));
  Log::write("later");
  EXPECT_EQ(host.logFile(), "2024-03-05 14:07:10.000 later\n");
}

}  // namespace
}  // namespace lexwend
