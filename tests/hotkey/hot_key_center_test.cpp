// SPDX-License-Identifier: MIT
#include "hotkey/hot_key_center.h"

#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"
#include "tests/call_order.h"

namespace lexwend {

/// Comes to the last ids without registering four billion hot keys.
struct HotKeyCenterPeer {
  static void setNextId(HotKeyCenter& center, std::uint32_t id) { center.nextId_ = id; }
};

namespace {

using platform::FakeHost;
using platform::FakeOperation;
using platform::HotKeyID;
using testing::ElementsAre;
using tests::inOrder;

using platform::KeyCode;
using platform::Modifiers;
constexpr KeyCode kF2 = platform::kKeyF2;
constexpr Modifiers kNone = platform::kNoModifiers;
constexpr std::uint32_t kSignature = 0x544B5652;

struct Center {
  FakeHost host;
  platform::HostScope scope{host};
  HotKeyCenter center;
  int pressed = 0;

  bool add(KeyCode keyCode, Modifiers modifiers = kNone) {
    return center.registerHotKey(keyCode, modifiers, [this] { ++pressed; });
  }
  platform::FakeHotKeys& system() { return host.hotKeyService(); }
};

TEST(HotKeyCenter, registersTheCombinationAsGivenUnderItsOwnIdentity) {
  Center c;
  EXPECT_TRUE(c.add(platform::kKeyF5, Modifiers{0x1F00}));
  ASSERT_EQ(c.system().registered().size(), 1U);
  const auto& [combination, identity] = *c.system().registered().begin();
  EXPECT_EQ(combination, (platform::FakeHotKeys::Combination{platform::kKeyF5, Modifiers{0x1F00}}));
  EXPECT_EQ(identity, (HotKeyID{kSignature, 1}));
}

TEST(HotKeyCenter, refusedRegistrationStoresNoAction) {
  Center c;
  c.system().otherAppTakes(kF2, kNone);
  c.add(kF2);
  c.system().dispatch({kSignature, 1});
  EXPECT_EQ(c.pressed, 0);
  c.center.unregisterAll();
  EXPECT_EQ(c.host.calls().count("hotKeys.unregisterHotKey"), 0U);
}

TEST(HotKeyCenter, successWithoutAReferenceCountsAsRefused) {
  Center c;
  c.host.failNext(FakeOperation::registerHotKeyReference);
  EXPECT_FALSE(c.add(kF2));
  c.system().dispatch({kSignature, 1});
  EXPECT_EQ(c.pressed, 0);
  EXPECT_TRUE(c.add(platform::kKeyF5));
  EXPECT_EQ(c.system().registered().at({platform::kKeyF5, kNone}).id, 2U);
}

TEST(HotKeyCenter, failureWithAReferenceCountsAsRefused) {
  Center c;
  c.host.failNext(FakeOperation::registerHotKeyStatus, -9878);
  EXPECT_FALSE(c.add(kF2));
  c.system().dispatch({kSignature, 1});
  EXPECT_EQ(c.pressed, 0);
  c.center.unregisterAll();
  EXPECT_EQ(c.host.calls().count("hotKeys.unregisterHotKey"), 0U);
  EXPECT_TRUE(c.add(platform::kKeyF5));
  EXPECT_EQ(c.system().registered().at({platform::kKeyF5, kNone}).id, 2U);
}

TEST(HotKeyCenter, installsItsHandlerOnceAndBeforeTheFirstRegistration) {
  Center c;
  EXPECT_EQ(c.system().handlerInstallations(), 0U);
  c.add(kF2);
  c.add(platform::kKeyF5);
  c.center.unregisterAll();
  c.add(kF2);
  EXPECT_EQ(c.system().handlerInstallations(), 1U);
  EXPECT_TRUE(inOrder(c.host.calls(), {"hotKeys.installHandler", "hotKeys.registerHotKey"}));
}

TEST(HotKeyCenter, failedInstallationIsIgnoredAndNotTriedAgain) {
  Center c;
  c.host.failNext(FakeOperation::installHotKeyHandler);
  EXPECT_TRUE(c.add(kF2));
  EXPECT_TRUE(c.add(platform::kKeyF5));
  EXPECT_EQ(c.system().handlerInstallations(), 1U);
}

TEST(HotKeyCenter, unregisterAllGivesBackEveryRegistrationAndForgetsTheActions) {
  Center c;
  c.add(kF2);
  c.add(platform::kKeyF5);
  c.center.unregisterAll();
  EXPECT_TRUE(c.system().registered().empty());
  EXPECT_EQ(c.host.calls().count("hotKeys.unregisterHotKey"), 2U);
  EXPECT_EQ(c.system().dispatch({kSignature, 1}), platform::kNoErr);
  EXPECT_EQ(c.system().dispatch({kSignature, 2}), platform::kNoErr);
  EXPECT_EQ(c.pressed, 0);
}

TEST(HotKeyCenter, unregisterAllWithNothingRegisteredIsHarmless) {
  Center c;
  c.center.unregisterAll();
  EXPECT_THAT(c.host.calls().all(), ElementsAre());
}

TEST(HotKeyCenter, failedUnregistrationIsIgnoredAndTheActionIsForgotten) {
  Center c;
  c.add(kF2);
  c.host.failNext(FakeOperation::unregisterHotKey);
  c.center.unregisterAll();
  c.system().press(kF2, kNone);  // the system still holds it
  EXPECT_EQ(c.pressed, 0);
  c.center.unregisterAll();  // nothing is tried again
  EXPECT_EQ(c.host.calls().count("hotKeys.unregisterHotKey"), 1U);
}

TEST(HotKeyCenter, dispatchLooksAtTheIdAlone) {
  Center c;
  c.add(kF2);
  EXPECT_EQ(c.system().dispatch({0x12345678, 1}), platform::kNoErr);
  EXPECT_EQ(c.pressed, 1);
}

TEST(HotKeyCenter, eachRegistrationRunsItsOwnAction) {
  Center c;
  std::vector<std::string> ran;
  c.center.registerHotKey(kF2, kNone, [&] { ran.emplace_back("F2"); });
  c.center.registerHotKey(platform::kKeyF5, kNone, [&] { ran.emplace_back("F5"); });
  c.system().press(platform::kKeyF5, kNone);
  c.system().press(kF2, kNone);
  EXPECT_THAT(ran, ElementsAre("F5", "F2"));
}

TEST(HotKeyCenter, anActionMayUnregisterItselfAndRegisterAnother) {
  Center c;
  auto alive = std::make_shared<int>(0);
  c.center.registerHotKey(kF2, kNone, [&c, alive] {
    c.center.unregisterAll();
    c.add(platform::kKeyF5);
    ++*alive;  // what the action holds outlives its registration until it returns
  });
  c.system().press(kF2, kNone);
  EXPECT_EQ(*alive, 1);
  EXPECT_EQ(alive.use_count(), 1);
  EXPECT_FALSE(c.system().holds(kF2, kNone));
  c.system().press(platform::kKeyF5, kNone);
  EXPECT_EQ(c.pressed, 1);
}

TEST(HotKeyCenter, pressAfterTheCenterIsGoneDoesNothing) {
  FakeHost host;
  const platform::HostScope scope(host);
  auto held = std::make_shared<int>(0);
  {
    HotKeyCenter center;
    center.registerHotKey(kF2, kNone, [held] { ++*held; });
  }
  EXPECT_EQ(host.hotKeyService().dispatch({kSignature, 1}), platform::kNoErr);
  EXPECT_EQ(*held, 0);
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(host.calls().count("hotKeys.unregisterHotKey"), 0U);
}

TEST(HotKeyCenter, sharedIsOneInstance) {
  EXPECT_EQ(&HotKeyCenter::shared(), &HotKeyCenter::shared());
}

TEST(HotKeyCenterDeathTest, runningOutOfIdsStopsTheProcess) {
  Center c;
  constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
  HotKeyCenterPeer::setNextId(c.center, kLast - 1);
  EXPECT_TRUE(c.add(kF2));
  EXPECT_EQ(c.system().offered().back().id, kLast - 1);
  EXPECT_DEATH(c.add(platform::kKeyF5), "ids of hot keys ran out");
}

// Display names.

/// What every key with a name of its own is called.
const std::map<std::uint32_t, std::string>& keyNames() {
  static const std::map<std::uint32_t, std::string> kNames = {
      {0, "A"},     {1, "S"},     {2, "D"},     {3, "F"},     {4, "H"},     {5, "G"},     {6, "Z"},
      {7, "X"},     {8, "C"},     {9, "V"},     {11, "B"},    {12, "Q"},    {13, "W"},    {14, "E"},
      {15, "R"},    {16, "Y"},    {17, "T"},    {18, "1"},    {19, "2"},    {20, "3"},    {21, "4"},
      {22, "6"},    {23, "5"},    {24, "="},    {25, "9"},    {26, "7"},    {27, "-"},    {28, "8"},
      {29, "0"},    {30, "]"},    {31, "O"},    {32, "U"},    {33, "["},    {34, "I"},    {35, "P"},
      {36, "↩"},    {37, "L"},    {38, "J"},    {39, "'"},    {40, "K"},    {41, ";"},    {42, "\\"},
      {43, ","},    {44, "/"},    {45, "N"},    {46, "M"},    {47, "."},    {48, "⇥"},    {49, " "},
      {50, "`"},    {51, "⌫"},    {64, "F17"},  {79, "F18"},  {80, "F19"},  {96, "F5"},   {97, "F6"},
      {98, "F7"},   {99, "F3"},   {100, "F8"},  {101, "F9"},  {103, "F11"}, {105, "F13"}, {106, "F16"},
      {107, "F14"}, {109, "F10"}, {111, "F12"}, {113, "F15"}, {118, "F4"},  {120, "F2"},  {122, "F1"}};
  return kNames;
}

std::string expectedKeyName(std::uint32_t keyCode) {
  const auto found = keyNames().find(keyCode);
  return found == keyNames().end() ? "מקש " + std::to_string(keyCode) : found->second;
}

TEST(HotKeyDisplayName, everyKeyHasItsName) {
  FakeHost host;
  const platform::HostScope scope(host);
  for (std::uint32_t keyCode = 0; keyCode <= 300; ++keyCode) {
    EXPECT_EQ(HotKeyCenter::displayName(KeyCode{keyCode}, kNone), expectedKeyName(keyCode)) << keyCode;
  }
  for (const std::uint32_t keyCode : {65535U, 65536U, 4294967295U}) {
    EXPECT_EQ(HotKeyCenter::displayName(KeyCode{keyCode}, kNone), expectedKeyName(keyCode));
  }
}

TEST(HotKeyDisplayName, everyMaskPutsItsSymbolsInFrontInOneOrder) {
  FakeHost host;
  const platform::HostScope scope(host);
  for (std::uint32_t mask = 0; mask <= 0xFFFF; ++mask) {
    std::string expected;
    if ((mask & 0x1000) != 0) expected += "⌃";
    if ((mask & 0x0800) != 0) expected += "⌥";
    if ((mask & 0x0200) != 0) expected += "⇧";
    if ((mask & 0x0100) != 0) expected += "⌘";
    ASSERT_EQ(HotKeyCenter::displayName(platform::kKeyF5, Modifiers{mask}), expected + "F5") << mask;
  }
  EXPECT_EQ(HotKeyCenter::displayName(platform::kKeyF5, Modifiers{0xFFFFFFFF}), "⌃⌥⇧⌘F5");
}

}  // namespace
}  // namespace lexwend
