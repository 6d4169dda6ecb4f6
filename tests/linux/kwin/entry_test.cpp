// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/entry.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

constexpr const char* kBoth = "org_kde_kwin_fake_input,org_kde_plasma_window_management";

/// Whether an entry with that command and those interfaces grants; %p is a program that is there. In a
/// process of its own, because GLib reads the folders once.
bool grants(const std::string& start, const std::string& end, const std::string& interfaces) {
  const test::TemporaryFolder folder;
  const std::string program = folder.file("lexwend");
  test::putContents(program, "");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  std::filesystem::create_directories(folder.file("applications"));
  test::putContents(folder.file("applications/org.lexwend.Lexwend.desktop"),
                    "[Desktop Entry]\nType=Application\nName=Lexwend\nExec=" + start + program + end +
                        "\nX-KDE-Wayland-Interfaces=" + interfaces + "\n");
  const pid_t child = fork();
  if (child == 0) {
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    setenv("XDG_DATA_DIRS", "/nonexistent", 1);
    _exit(anEntryGrantsKeys() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

TEST(Entry, grantsKeysWhenItAsksForBothAndNamesTheProgramAlone) {
  EXPECT_TRUE(grants("", "", kBoth));
  EXPECT_FALSE(grants("", "", ""));
  EXPECT_FALSE(grants("", "", "org_kde_kwin_fake_input"));
  EXPECT_FALSE(grants("\"", "\"", kBoth));
  EXPECT_FALSE(grants("", " --fix", kBoth));
  EXPECT_FALSE(grants("", ".gone", kBoth));
}

}  // namespace
}  // namespace lexwend::platform
