// SPDX-License-Identifier: MIT
#include "platform/linux/session/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/session/user_folders.h"
#include "tests/linux/testing/file_troubles.h"
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
  const test::FullDisk disk(1);
  EXPECT_FALSE(files.writeWholeFile(path, "xyz"));
}

TEST_F(UsersFiles, areReadableByTheirUserAloneWhoeverMadeThem) {
  const auto mode = [this] { return std::filesystem::status(path).permissions(); };
  const auto onlyTheUser = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
  EXPECT_TRUE(files.writeWholeFile(path, "x"));
  EXPECT_EQ(mode(), onlyTheUser);
  for (const bool whole : {true, false}) {
    std::filesystem::permissions(path, std::filesystem::perms::all);
    EXPECT_TRUE(whole ? files.writeWholeFile(path, "x") : files.fileHandleForWriting(path) != nullptr);
    EXPECT_EQ(mode(), onlyTheUser);
  }
}

TEST_F(UsersFiles, areNeitherFifosNorDevicesNorFoldersAndNothingIsWaitedFor) {
  const auto refused = [this](const std::string& place) {
    EXPECT_EQ(files.fileHandleForWriting(place), nullptr) << place;
    EXPECT_FALSE(files.writeWholeFile(place, "x")) << place;
  };
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  refused(path);
  const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
  refused(path);
  char byte = 0;
  EXPECT_EQ(::read(reader, &byte, 1), 0) << "something was written";
  ::close(reader);
  refused("/dev/null");
  refused(folder.path());
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
