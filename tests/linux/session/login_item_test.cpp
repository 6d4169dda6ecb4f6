// SPDX-License-Identifier: MIT
#include "platform/linux/session/login_item.h"

#include <gtest/gtest.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

struct AutostartEntry : ::testing::Test {
  test::TemporaryFolder folder;
  std::string path = folder.file("autostart/org.lexwend.Lexwend.desktop");
  LinuxLoginItem item{path, "/opt/lex wend/lexwend"};

  void put(const std::string& lines) const {
    std::filesystem::create_directories(folder.file("autostart"));
    test::putContents(path, lines);
  }
};

TEST_F(AutostartEntry, isMadeAndTakenAway) {
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
  EXPECT_NE(test::contentsOf(path).find("\nExec=\"/opt/lex wend/lexwend\"\n"), std::string::npos);
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
  put("[Desktop Entry]\nType=Application\nExec=lexwend\n[Desktop Action x]\nHidden=true\n");
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
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
  EXPECT_EQ(quotedForExec("a\"b"), "\"a\\\\\"b\"");
  EXPECT_EQ(quotedForExec("a$b`c"), "\"a\\\\$b\\\\`c\"");
  EXPECT_EQ(quotedForExec("a\\b"), "\"a\\\\\\\\b\"");
}

}  // namespace
}  // namespace lexwend::platform
