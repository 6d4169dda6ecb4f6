// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/qt_keys.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr KeyCode kKey2{19};
constexpr KeyCode kKeyH{4};
constexpr std::int32_t kShift = 0x02000000;
constexpr std::int32_t kControl = 0x04000000;
constexpr std::int32_t kAlt = 0x08000000;
constexpr std::int32_t kMeta = 0x10000000;

struct QtKeys : testing::Test {
  std::shared_ptr<xkb_context> context{xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref};
  xkb_rule_names names{"evdev", "pc105", "us,il", "", ""};
  std::shared_ptr<xkb_keymap> keymap{
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref};
};

TEST_F(QtKeys, thatTypeNothingNeedNoKeymap) {
  EXPECT_THAT(qtCombinations(kKeyF2, kNoModifiers, nullptr), ElementsAre(0x01000031));
  EXPECT_THAT(qtCombinations(kKeyF2, kCmdKey | kShiftKey | kOptionKey | kControlKey, nullptr),
              ElementsAre(0x01000031 | kShift | kControl | kAlt | kMeta));
  EXPECT_THAT(qtCombinations(kKeyH, kCmdKey, nullptr), IsEmpty());
}

TEST_F(QtKeys, areWhatTheyTypeInEachGroup) {
  EXPECT_THAT(qtCombinations(kKeyH, kCmdKey, keymap.get()), ElementsAre('H' | kControl, 0x05D9 | kControl));
}

TEST_F(QtKeys, thatTypeTheSameInEachGroupAreOne) {
  EXPECT_THAT(qtCombinations(kKey2, kCmdKey, keymap.get()), ElementsAre('2' | kControl));
}

TEST_F(QtKeys, withShiftAreWhatTheyTypeWithItToo) {
  EXPECT_THAT(qtCombinations(kKey2, kCmdKey | kShiftKey, keymap.get()),
              ElementsAre('2' | kControl | kShift, '@' | kControl));
}

TEST_F(QtKeys, ofNoKeyboardAreNone) {
  EXPECT_THAT(qtCombinations(KeyCode{0xFFFF}, kCmdKey, keymap.get()), IsEmpty());
}

}  // namespace
}  // namespace lexwend::platform
