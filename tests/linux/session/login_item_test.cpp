// SPDX-License-Identifier: MIT
#include "platform/linux/session/login_item.h"

#include <gtest/gtest.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

struct AutostartEntry : ::testing::Test {
  test::TemporaryFolder folder;
  std::string path = folder.file("autostart/org.lexwend.Lexwend.desktop");
  std::string program = makeProgram("lex wend");
  LinuxLoginItem item{path, program};

  std::string makeProgram(const std::string& name) const {
    std::filesystem::create_directories(folder.file(name));
    test::putContents(folder.file(name + "/lexwend"), "#!/bin/sh\n");
    std::filesystem::permissions(folder.file(name + "/lexwend"), std::filesystem::perms::owner_all);
    return folder.file(name + "/lexwend");
  }
  std::string exec() const {
    const std::string text = test::contentsOf(path);
    const auto begin = text.find("\nExec=") + 6;
    return text.substr(begin, text.find('\n', begin) - begin);
  }

  void put(const std::string& lines) const {
    std::filesystem::create_directories(folder.file("autostart"));
    test::putContents(path, lines);
  }
};

TEST_F(AutostartEntry, isMadeAndTakenAway) {
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
  EXPECT_EQ(exec(), "\"" + program + "\"");
  EXPECT_TRUE(item.unregisterItem());
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(item.unregisterItem());
}

TEST_F(AutostartEntry, thatIsHiddenCountsAsOffAndIsSwitchedOnAgain) {
  put("[Desktop Entry]\nType=Application\nExec=lexwend\nHidden = true\n");
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

TEST_F(AutostartEntry, thatTheDesktopSwitchedOffCountsAsOff) {
  put("[Desktop Entry]\nType=Application\nExec=lexwend\nX-GNOME-Autostart-enabled=false\n");
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST_F(AutostartEntry, isReadInItsMainGroupOnly) {
  put("[Desktop Entry]\nType=Application\nExec=sh\n[Desktop Action x]\nHidden=true\n");
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

TEST_F(AutostartEntry, whoseProgramIsGoneCountsAsOffAndIsWrittenAnewAtTheNextStart) {
  ASSERT_TRUE(item.registerItem());
  std::filesystem::remove(program);
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  LinuxLoginItem installed(path, makeProgram("usr 100%"));
  installed.followProgram();
  EXPECT_EQ(installed.status(), LoginItemStatus::enabled);
  EXPECT_EQ(exec(), "\"" + folder.file("usr 100%%/lexwend") + "\"");
}

TEST_F(AutostartEntry, ofAnotherCopyFollowsTheOneThatRuns) {
  ASSERT_TRUE(item.registerItem());
  const std::string other = makeProgram("other");
  LinuxLoginItem(path, other).followProgram();
  EXPECT_EQ(exec(), "\"" + other + "\"");
}

TEST_F(AutostartEntry, ofTheUsersOwnCommandStaysAsItIs) {
  const std::string own = "[Desktop Entry]\nType=Application\nExec=sh -c \"sleep 9; lexwend\"\n";
  put(own);
  item.followProgram();
  EXPECT_EQ(test::contentsOf(path), own);
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

TEST_F(AutostartEntry, thatIsSwitchedOffOrMissingStaysSo) {
  item.followProgram();
  EXPECT_FALSE(std::filesystem::exists(path));
  put("[Desktop Entry]\nType=Application\nExec=/gone/lexwend\nHidden=true\n");
  item.followProgram();
  EXPECT_EQ(exec(), "/gone/lexwend");
}

TEST_F(AutostartEntry, isEscapedOnceMoreAsATextOfItsOwnSyntax) {
  LinuxLoginItem odd(path, "/opt/$x\\y");
  EXPECT_TRUE(odd.registerItem());
  EXPECT_NE(test::contentsOf(path).find("\nExec=\"/opt/\\\\$x\\\\\\\\y\"\n"), std::string::npos)
      << test::contentsOf(path);
}

TEST_F(AutostartEntry, thatIsNoFileCountsAsOffAndIsNotWaitedFor) {
  std::filesystem::create_directories(folder.file("autostart"));
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST_F(AutostartEntry, inAFolderThatCannotBeMadeIsRefused) {
  test::putContents(folder.file("autostart"), "a file where the folder should be");
  EXPECT_FALSE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST(OwnProgram, isWhatStandsAtItsPathAfterAnUpgrade) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(programOfLink(folder.file("lexwend")), folder.file("lexwend"));
  EXPECT_EQ(programOfLink(folder.file("lexwend (deleted)")), folder.file("lexwend"));
  test::putContents(folder.file("lexwend (deleted)"), "a program that bears this name");
  EXPECT_EQ(programOfLink(folder.file("lexwend (deleted)")), folder.file("lexwend (deleted)"));
}

TEST(ExecLine, quotesWhatTheDesktopWouldInterpret) {
  EXPECT_EQ(quotedForExec("/a b"), "\"/a b\"");
  EXPECT_EQ(quotedForExec("100%"), "\"100%%\"");
  EXPECT_EQ(quotedForExec("a\"b"), "\"a\\\"b\"");
  EXPECT_EQ(quotedForExec("a$b`c"), "\"a\\$b\\`c\"");
  EXPECT_EQ(quotedForExec("a\\b"), "\"a\\\\b\"");
}

}  // namespace
}  // namespace lexwend::platform
