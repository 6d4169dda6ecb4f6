// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/entry.h"

#include <filesystem>
#include <functional>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

constexpr const char* kBoth = "org_kde_kwin_fake_input,org_kde_plasma_window_management";

/// Whether that holds for a user whose applications are in that folder. In a process of its own, because GLib
/// reads the folders once, and hears of a new file only later.
bool holdsInFreshProcess(const test::TemporaryFolder& folder, const std::function<bool()>& condition) {
  const pid_t child = fork();
  if (child == 0) {
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    setenv("XDG_DATA_DIRS", "/nonexistent", 1);
    _exit(condition() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

/// Whether an entry with that command and those interfaces grants.
bool grants(const std::string& start, const std::string& end, const std::string& interfaces) {
  const test::TemporaryFolder folder;
  const std::string program = folder.file("lexwend");
  test::putContents(program, "");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  std::filesystem::create_directories(folder.file("applications"));
  test::putContents(folder.file("applications/org.lexwend.Lexwend.desktop"),
                    "[Desktop Entry]\nType=Application\nName=Lexwend\nExec=" + start + program + end +
                        "\nX-KDE-Wayland-Interfaces=" + interfaces + "\n");
  return holdsInFreshProcess(folder, anEntryGrantsKeys);
}

TEST(Entry, grantsKeysWhenItAsksForBothAndNamesTheProgramAlone) {
  EXPECT_TRUE(grants("", "", kBoth));
  EXPECT_FALSE(grants("", "", ""));
  EXPECT_FALSE(grants("", "", "org_kde_kwin_fake_input"));
  EXPECT_FALSE(grants("\"", "\"", kBoth));
  EXPECT_FALSE(grants("", " --fix", kBoth));
  EXPECT_FALSE(grants("", ".gone", kBoth));
}

TEST(Entry, thatIsWrittenGrantsKeys) {
  const test::TemporaryFolder folder;
  const std::string program = folder.file("lexwend");
  test::putContents(program, "");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  EXPECT_FALSE(holdsInFreshProcess(folder, anEntryGrantsKeys));
  EXPECT_TRUE(holdsInFreshProcess(folder, [&] { return writeEntryThatGrantsKeys(program); }));
  EXPECT_TRUE(holdsInFreshProcess(folder, anEntryGrantsKeys));
  EXPECT_TRUE(std::filesystem::exists(folder.file("applications/org.lexwend.Lexwend.desktop")));
}

TEST(Entry, isNotWrittenForAPathThatNeedsQuotes) {
  for (const char* program :
       {"/home/a user/lexwend", "/home/$x/lexwend", "/home/%u/lexwend", "lexwend", ""}) {
    EXPECT_FALSE(entryCanName(program)) << program;
    EXPECT_FALSE(writeEntryThatGrantsKeys(program)) << program;
  }
  EXPECT_TRUE(entryCanName("/home/user/lexwend-0.1/build/release/app/lexwend"));
}

}  // namespace
}  // namespace lexwend::platform
