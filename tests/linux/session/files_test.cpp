// SPDX-License-Identifier: MIT
#include "platform/linux/session/files.h"

#include <gtest/gtest.h>

#include "platform/linux/session/user_folders.h"
#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

struct UsersFiles : ::testing::Test {
  test::TemporaryFolder folder;
  std::string path = folder.file("a.log");
  LinuxFiles files;
};

TEST_F(UsersFiles, areWrittenInPlaceAndAtTheEnd) {
  test::putContents(path, "abc");
  auto handle = files.fileHandleForWriting(path);
  ASSERT_NE(handle, nullptr);
  handle->write("X");
  handle->seekToEndOfFile();
  handle->write("\n");
  EXPECT_TRUE(handle->close());
  EXPECT_FALSE(handle->close());
  EXPECT_EQ(test::contentsOf(path), "Xbc\n");
}

TEST_F(UsersFiles, onAFullDiskReportFailure) {
  EXPECT_FALSE(files.writeWholeFile("/dev/full", "x"));
}

TEST(HomeFolder, isTheEnvironmentsElseTheAccounts) {
  {
    const test::EnvironmentVariable home("HOME", "/home/someone");
    EXPECT_EQ(user_folders::homeDirectory(), "/home/someone");
  }
  const test::EnvironmentVariable home("HOME", nullptr);
  EXPECT_EQ(user_folders::homeDirectory().substr(0, 1), "/");
}

}  // namespace
}  // namespace lexwend::platform
