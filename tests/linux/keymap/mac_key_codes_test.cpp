// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/mac_key_codes.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace lexwend::platform {
namespace {

TEST(MacKeyCodes, standForTheKeysAtTheirPlaces) {
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{0}), KEY_A);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{8}), KEY_C);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{9}), KEY_V);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{13}), KEY_W);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{22}), KEY_6);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{23}), KEY_5);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{36}), KEY_ENTER);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{48}), KEY_TAB);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{49}), KEY_SPACE);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{50}), KEY_GRAVE);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{51}), KEY_BACKSPACE);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{53}), KEY_ESC);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{10}), KEY_102ND);
}

TEST(MacKeyCodes, nameTheFunctionKeys) {
  const std::uint32_t macCodes[] = {122, 120, 99,  118, 96,  97,  98, 100, 101, 109,
                                    103, 111, 105, 107, 113, 106, 64, 79,  80};
  const int evdevCodes[] = {KEY_F1,  KEY_F2,  KEY_F3,  KEY_F4,  KEY_F5,  KEY_F6,  KEY_F7,
                            KEY_F8,  KEY_F9,  KEY_F10, KEY_F11, KEY_F12, KEY_F13, KEY_F14,
                            KEY_F15, KEY_F16, KEY_F17, KEY_F18, KEY_F19};
  for (std::size_t i = 0; i < std::size(macCodes); ++i) {
    EXPECT_EQ(evdevFromMacKeyCode(KeyCode{macCodes[i]}), evdevCodes[i]) << macCodes[i];
  }
}

TEST(MacKeyCodes, areReversible) {
  int known = 0;
  for (std::uint32_t code = 0; code < 256; ++code) {
    const KeyCode mac{code};
    if (const auto evdev = evdevFromMacKeyCode(mac)) {
      ++known;
      EXPECT_EQ(macFromEvdevKeyCode(*evdev), mac);
      ASSERT_TRUE(xFromMacKeyCode(mac)) << code;
      EXPECT_EQ(macFromXKeyCode(*xFromMacKeyCode(mac)), mac);
    }
  }
  EXPECT_GT(known, 100);
}

TEST(MacKeyCodes, coverTheTypingBlock) {
  for (std::uint32_t mac = 0; mac <= 51; ++mac)
    EXPECT_EQ(evdevFromMacKeyCode(KeyCode{mac}).has_value(), true) << mac;
}

TEST(MacKeyCodes, haveNoKeyForUnknownCodes) {
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{52}), std::nullopt);
  EXPECT_EQ(evdevFromMacKeyCode(KeyCode{0xFFFFFFFF}), std::nullopt);
  EXPECT_EQ(macFromEvdevKeyCode(KEY_RESERVED), std::nullopt);
  EXPECT_EQ(macFromXKeyCode(7), std::nullopt);
  EXPECT_EQ(xFromMacKeyCode(KeyCode{120}), KEY_F2 + 8);
}

}  // namespace
}  // namespace lexwend::platform
