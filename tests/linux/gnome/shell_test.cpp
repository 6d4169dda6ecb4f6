// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/shell.h"

#include <gtest/gtest.h>

#include "tests/linux/gnome/fake_shell.h"
#include "tests/linux/gnome/shared_bus.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

struct Shell : OnSharedBus {
  FakeShell fake;
};

TEST_F(Shell, answersTheAgent) {
  fake.appear();
  GnomeShell shell(/*isAgent=*/true);
  EXPECT_TRUE(shell.serves());
  const auto front = shell.frontWindow();
  ASSERT_TRUE(front);
  EXPECT_EQ(front->id, 7);
  EXPECT_EQ(front->process, 42U);
  EXPECT_EQ(front->windowClass, "org.gnome.TextEditor");
  EXPECT_TRUE(shell.agentRuns());
}

TEST_F(Shell, isAskedByNobodyButTheAgent) {
  fake.appear();
  GnomeShell shell(/*isAgent=*/false);
  EXPECT_TRUE(shell.isThere());
  EXPECT_FALSE(shell.serves());
  EXPECT_FALSE(shell.frontWindow());
}

TEST_F(Shell, mayComeLaterAndGo) {
  GnomeShell shell(true);
  int times = 0;
  const auto observation = shell.observe([&](const ShellEvent& event) {
    if (event.kind == ShellEventKind::appeared) ++times;
  });
  EXPECT_FALSE(shell.isThere());
  fake.appear();
  EXPECT_TRUE(pumpUntil([&] { return times == 1; }));
  EXPECT_TRUE(shell.isThere());
  fake.go();
  EXPECT_TRUE(pumpUntil([&] { return !shell.isThere(); }));
  EXPECT_FALSE(shell.layouts());
}

TEST_F(Shell, tellsOfALockedScreen) {
  GnomeShell shell(true);
  EXPECT_FALSE(shell.screenIsLocked()) << "nobody tells";
  BusPeer saver;
  bool isLocked = true;
  saver.answer([&](const std::string& method, GVariant*) {
    const gboolean answer = isLocked ? TRUE : FALSE;
    return method == "GetActive" ? g_variant_new("(b)", answer) : nullptr;
  });
  saver.ownName("org.gnome.ScreenSaver");
  EXPECT_TRUE(shell.screenIsLocked());
  isLocked = false;
  EXPECT_FALSE(shell.screenIsLocked());
}

}  // namespace
}  // namespace lexwend::platform
