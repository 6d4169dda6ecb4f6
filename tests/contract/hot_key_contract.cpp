// SPDX-License-Identifier: MIT
#include "platform/hot_key_service.h"
#include "platform/run_loop.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::HotKeyID;

constexpr std::uint32_t kA = 0;
constexpr std::uint32_t kS = 1;
constexpr std::uint32_t kF9 = 101;
constexpr std::uint32_t kF8 = 100;
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
  platform::HotKeyRegistration add(std::uint32_t keyCode, HotKeyID identity) {
    return host().hotKeyService().registerHotKey(keyCode, kRareModifiers, identity);
  }
  void settle() {
    underTest->waitUntil([] { return false; }, 150ms);
  }

  std::vector<HotKeyID> pressed;
};

TEST_F(HotKeyContract, aPressReachesTheHandlerOnceWithItsIdentity) {
  const auto registration = add(kF9, kFirst);
  EXPECT_EQ(registration.status, platform::kNoErr);
  EXPECT_NE(registration.ref, nullptr);
  underTest->userPresses(kF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return !pressed.empty(); }));
  settle();
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kFirst});
}

TEST_F(HotKeyContract, twoHotKeysAreToldApart) {
  const auto first = add(kF9, kFirst);
  const auto second = add(kF8, kSecond);
  underTest->userPresses(kF8, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 1; }));
  underTest->userPresses(kF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 2; }));
  EXPECT_EQ(pressed, (std::vector<HotKeyID>{kSecond, kFirst}));
}

TEST_F(HotKeyContract, otherModifiersAreAnotherCombination) {
  const auto registration = add(kF9, kFirst);
  underTest->userPresses(kF9, 0x1000);
  settle();
  EXPECT_TRUE(pressed.empty());
}

TEST_F(HotKeyContract, anUnregisteredHotKeyIsSilentAndCanBeRegisteredAgain) {
  const auto registration = add(kF9, kFirst);
  EXPECT_EQ(host().hotKeyService().unregisterHotKey(registration.ref), platform::kNoErr);
  underTest->userPresses(kF9, kRareModifiers);
  settle();
  EXPECT_TRUE(pressed.empty());

  const auto again = add(kF9, kSecond);
  EXPECT_EQ(again.status, platform::kNoErr);
  underTest->userPresses(kF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return !pressed.empty(); }));
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kSecond});
}

TEST_F(HotKeyContract, aPressMadeDuringAPauseIsNotReportedAfterItEither) {
  if (!underTest->tellsWhenAKeyWasPressed()) {
    EXPECT_EQ(host().hotKeyService().ignorePresses(), nullptr);
    return;
  }
  const auto registration = add(kF9, kFirst);
  {
    const auto pause = host().hotKeyService().ignorePresses();
    for (int i = 0; i < 10; ++i) underTest->userPresses(kF9, kRareModifiers);
    host().runLoop().sleep(50ms);  // the program is busy and reads none of them
  }
  settle();
  EXPECT_TRUE(pressed.empty());
  underTest->userPresses(kF9, kRareModifiers);
  EXPECT_TRUE(underTest->waitUntil([&] { return !pressed.empty(); }));
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kFirst});
}

TEST_F(HotKeyContract, aPauseLastsUntilTheLastOfSeveralHasEnded) {
  if (!underTest->tellsWhenAKeyWasPressed()) {
    EXPECT_EQ(host().hotKeyService().ignorePresses(), nullptr);
    return;
  }
  const auto registration = add(kF9, kFirst);
  auto outer = host().hotKeyService().ignorePresses();
  host().hotKeyService().ignorePresses().reset();
  underTest->userPresses(kF9, kRareModifiers);
  settle();
  outer.reset();
  settle();
  EXPECT_TRUE(pressed.empty());
}

TEST_F(HotKeyContract, aCombinationOfAnotherProgramIsRefusedOrShared) {
  underTest->otherProgramTakesHotKey(kF9, kRareModifiers);
  const auto registration = add(kF9, kFirst);
  EXPECT_EQ(registration.status == platform::kNoErr, underTest->sharesHotKeys());
  underTest->userPresses(kF9, kRareModifiers);
  settle();
  EXPECT_EQ(pressed.size(), underTest->sharesHotKeys() ? 1U : 0U);
}

TEST_F(HotKeyContract, aHotKeyReachesNoOtherApplicationAndAnotherKeyDoes) {
  underTest->openEditor("akuo");
  const auto registration = host().hotKeyService().registerHotKey(kA, 0, kFirst);
  ASSERT_EQ(registration.status, platform::kNoErr);
  underTest->userPresses(kA, 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return pressed.size() == 1; }));
  underTest->userPresses(kS, 0);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->editorText() != "akuo"; }));
  EXPECT_EQ(underTest->editorText(), "s");
  EXPECT_EQ(pressed, std::vector<HotKeyID>{kFirst});
}

}  // namespace
}  // namespace lexwend::contract
