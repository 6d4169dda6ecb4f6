// SPDX-License-Identifier: MIT
#include "platform/hot_key_service.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::HotKeyID;

using platform::kKeyA;
using platform::kKeyF8;
using platform::kKeyF9;
constexpr platform::KeyCode kKeyS{1};
constexpr HotKeyID kFirst{0x54455354, 1};
constexpr HotKeyID kSecond{0x54455354, 2};

/// That a held key does not repeat is shown where it repeats at first, in
/// tests/linux/keyboard/hot_key_test.cpp; macOS reports a press once.
class HotKeyContract : public ContractTest {
 protected:
  HotKeyContract() {
    host().hotKeyService().installHandler([this](const platform::HotKeyEvent& event) {
      HotKeyID identity;
      EXPECT_EQ(event.hotKeyID(identity), platform::kNoErr);
      pressed.push_back(identity);
      return platform::kNoErr;
    });
  }
  platform::HotKeyRegistration add(platform::KeyCode keyCode, HotKeyID identity) {
    return host().hotKeyService().registerHotKey(keyCode, kRareModifiers, identity);
  }
  void settle() {
    underTest->waitUntil([] { return false; }, 150ms);
  }

  std::vector<HotKeyID> pressed;
};

TEST_F(HotKeyContract, aPressReachesTheHandlerOnceWithItsIdentity) {
  const auto registration = add(kKeyF9, kFirst);
  EXPECT_EQ(registration.status, platform::kNoErr);
  EXPECT_NE(registration.ref, nullptr);
  underTest->userPresses(kKeyF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return !pressed.empty(); }));
  settle();
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kFirst});
}

TEST_F(HotKeyContract, twoHotKeysAreToldApart) {
  const auto first = add(kKeyF9, kFirst);
  const auto second = add(kKeyF8, kSecond);
  underTest->userPresses(kKeyF8, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 1; }));
  underTest->userPresses(kKeyF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 2; }));
  EXPECT_EQ(pressed, (std::vector<HotKeyID>{kSecond, kFirst}));
}

TEST_F(HotKeyContract, otherModifiersAreAnotherCombination) {
  const auto registration = add(kKeyF9, kFirst);
  underTest->userPresses(kKeyF9, platform::kControlKey);
  settle();
  EXPECT_TRUE(pressed.empty());
}

TEST_F(HotKeyContract, anUnregisteredHotKeyIsSilentAndCanBeRegisteredAgain) {
  const auto registration = add(kKeyF9, kFirst);
  EXPECT_EQ(host().hotKeyService().unregisterHotKey(registration.ref), platform::kNoErr);
  underTest->userPresses(kKeyF9, kRareModifiers);
  settle();
  EXPECT_TRUE(pressed.empty());

  const auto again = add(kKeyF9, kSecond);
  EXPECT_EQ(again.status, platform::kNoErr);
  underTest->userPresses(kKeyF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return !pressed.empty(); }));
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kSecond});
}

TEST_F(HotKeyContract, aCombinationOfAnotherProgramIsRefusedOrShared) {
  underTest->otherProgramTakesHotKey(kKeyF9, kRareModifiers);
  const auto registration = add(kKeyF9, kFirst);
  EXPECT_EQ(registration.status == platform::kNoErr, underTest->sharesHotKeys());
  underTest->userPresses(kKeyF9, kRareModifiers);
  settle();
  EXPECT_EQ(pressed.size(), underTest->sharesHotKeys() ? 1U : 0U);
}

TEST_F(HotKeyContract, aHotKeyReachesNoOtherApplicationAndAnotherKeyDoes) {
  underTest->openEditor("akuo");
  const auto registration = host().hotKeyService().registerHotKey(kKeyA, platform::kNoModifiers, kFirst);
  ASSERT_EQ(registration.status, platform::kNoErr);
  underTest->userPresses(kKeyA, platform::kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 1; }));
  underTest->userPresses(kKeyS, platform::kNoModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->editorText() != "akuo"; }));
  EXPECT_EQ(underTest->editorText(), "s");
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kFirst});
}

}  // namespace
}  // namespace lexwend::contract
