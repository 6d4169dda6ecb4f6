// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/kwin.h"

#include <gtest/gtest.h>

#include "platform/linux/wayland/key_player.h"
#include "tests/linux/kwin/fake_kwin.h"

namespace lexwend::platform {
namespace {

TEST(KWin, isTheProgramThatHasTheGlobalShortcutsAsWell) {
  FakeKWin fake;
  EXPECT_NE(fake.kwin(), nullptr);
  fake.peer().releaseName("org.kde.kglobalaccel");
  EXPECT_EQ(KWin::open(), nullptr);
  BusPeer daemon;
  daemon.ownName("org.kde.kglobalaccel");
  EXPECT_EQ(KWin::open(), nullptr);
}

TEST(KWin, isNotThereWithoutACompositor) {
  FakeKWin fake;
  const test::EnvironmentVariable noCompositor("WAYLAND_DISPLAY", "nothing");
  EXPECT_EQ(KWin::open(), nullptr);
}

TEST(KWin, letsAProgramWithoutAnEntryNeitherPressKeysNorKnowTheWindows) {
  FakeKWin fake;
  ASSERT_NE(fake.kwin(), nullptr);
  EXPECT_FALSE(fake.kwin()->grantsAll());
  EXPECT_EQ(fake.kwin()->keyPlayer(), nullptr);
  EXPECT_FALSE(fake.kwin()->frontWindow().has_value());
  fake.kwin()->focusOwnWindow();
}

TEST(KWin, tellsThatTheScreenIsLocked) {
  FakeKWin fake;
  ASSERT_NE(fake.kwin(), nullptr);
  EXPECT_FALSE(fake.kwin()->screenIsLocked());
  fake.lockScreen();
  EXPECT_TRUE(fake.kwin()->screenIsLocked());
}

TEST(KWin, thatHasGoneLocksNothingAndAnswersNothing) {
  FakeKWin fake;
  ASSERT_NE(fake.kwin(), nullptr);
  fake.lockScreen();
  fake.peer().releaseName("org.kde.KWin");
  EXPECT_FALSE(fake.kwin()->screenIsLocked());
}

}  // namespace
}  // namespace lexwend::platform
