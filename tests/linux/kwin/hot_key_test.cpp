// SPDX-License-Identifier: MIT
#include <cerrno>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/kwin/hot_key_service.h"
#include "tests/linux/kwin/fake_kwin.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr HotKeyID kIdentity{1, 2};
constexpr KeyCode kLetterH{4};

struct KWinHotKey : testing::Test {
  KWinHotKey() {
    service.installHandler([this](const HotKeyEvent& event) {
      HotKeyID identity;
      EXPECT_EQ(event.hotKeyID(identity), kNoErr);
      EXPECT_EQ(identity, kIdentity);
      ++presses;
      return kNoErr;
    });
  }
  void press() { fake.shortcut("globalShortcutPressed"); }
  void release() { fake.shortcut("globalShortcutReleased"); }
  /// Handles what was told so far: nothing tells that there is no more.
  void settle() {
    const int before = presses;
    pumpUntil([&] { return presses != before; }, std::chrono::milliseconds(200));
  }

  FakeKWin fake;
  KWinHotKeyService service{fake.kwin()};
  int presses = 0;
};

TEST_F(KWinHotKey, isTakenByTheNumberThatQtGivesItAndGivenBack) {
  const std::string names =
      "['" + std::string(program_invocation_short_name) + "', 'fix 1', 'Lexwend', 'תיקון הטקסט המסומן']";
  {
    const auto registration = service.registerHotKey(kKeyF2, kCmdKey | kOptionKey | kControlKey, kIdentity);
    ASSERT_EQ(registration.status, kNoErr);
    EXPECT_THAT(fake.calls("doRegister"), ElementsAre("doRegister(" + names + ",)"));
    EXPECT_THAT(fake.calls("setShortcut"),
                ElementsAre("setShortcut(" + names + ", [" + std::to_string(0x1D000031) + "], 6)"));
    EXPECT_THAT(fake.calls("unRegister"), IsEmpty());
  }
  EXPECT_THAT(fake.calls("unRegister"), ElementsAre("unRegister(" + names + ",)"));
}

TEST_F(KWinHotKey, thatTypesIsTakenForEachLayout) {
  const auto registration = service.registerHotKey(kLetterH, kOptionKey, kIdentity);
  ASSERT_EQ(registration.status, kNoErr);
  const std::string keys =
      "[" + std::to_string(0x08000000 + 'H') + ", " + std::to_string(0x08000000 + U'י') + "]";
  EXPECT_THAT(fake.calls("setShortcut"), ElementsAre(HasSubstr(keys)));
}

TEST_F(KWinHotKey, isTakenAnewWhenTheLayoutsAreOthers) {
  const auto registration = service.registerHotKey(kLetterH, kOptionKey, kIdentity);
  fake.setLayouts("us");
  EXPECT_TRUE(pumpUntil([&] { return fake.calls("setShortcut").size() > 1; }));
  EXPECT_THAT(fake.calls("setShortcut").back(), HasSubstr("[" + std::to_string(0x08000000 + 'H') + "]"));
}

TEST_F(KWinHotKey, ofAnotherProgramIsRefusedAndLeftToIt) {
  fake.takeShortcuts();
  EXPECT_EQ(service.registerHotKey(kKeyF2, kNoModifiers, kIdentity).status, kHotKeyExistsErr);
  EXPECT_THAT(fake.calls("unRegister"), SizeIs(1));
}

TEST_F(KWinHotKey, isInvalidWhereNoKeyboardHasItAndWhereKWinIsGone) {
  EXPECT_EQ(service.registerHotKey(KeyCode{0xFFFF}, kNoModifiers, kIdentity).status, kHotKeyInvalidErr);
  fake.peer().releaseName("org.kde.kglobalaccel");
  EXPECT_EQ(service.registerHotKey(kKeyF2, kNoModifiers, kIdentity).status, kHotKeyInvalidErr);
}

TEST_F(KWinHotKey, isOnePressUntilItIsReleased) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  for (int i = 0; i < 5; ++i) press();
  release();
  press();
  EXPECT_TRUE(pumpUntil([&] { return presses == 2; }));
  settle();
  EXPECT_EQ(presses, 2);
}

TEST_F(KWinHotKey, pressedDuringAPauseIsDroppedHoweverLateItIsHeardOf) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  {
    const auto pause = service.ignorePresses();
    press();
    release();
  }
  settle();
  EXPECT_EQ(presses, 0);
  press();
  EXPECT_TRUE(pumpUntil([&] { return presses == 1; }));
}

TEST_F(KWinHotKey, ofAnotherProgramIsNotHeard) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  fake.peer().emit("/component/other", "org.kde.kglobalaccel.Component", "globalShortcutPressed",
                   g_variant_new("(ssx)", "other", "fix 1", gint64{0}));
  fake.peer().emit("/component/other", "org.kde.kglobalaccel.Component", "globalShortcutPressed",
                   g_variant_new("(s)", program_invocation_short_name));
  settle();
  EXPECT_EQ(presses, 0);
}

TEST_F(KWinHotKey, isGivenBackAtTheEnd) {
  auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  service.stop();
  EXPECT_THAT(fake.calls("unRegister"), SizeIs(1));
  EXPECT_EQ(service.registerHotKey(kKeyF1, kNoModifiers, kIdentity).status, kHotKeyInvalidErr);
}

}  // namespace
}  // namespace lexwend::platform
