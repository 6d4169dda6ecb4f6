// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/linux/gnome/hot_key_service.h"
#include "tests/linux/gnome/fake_shell.h"
#include "tests/linux/gnome/shared_bus.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

constexpr KeyCode kF2{120};
constexpr KeyCode kK{40};
constexpr KeyCode kNoKeyOfAPc{63};  // Globe

struct GnomeHotKeys : OnSharedBus {
  FakeShell fake;
  std::shared_ptr<GnomeShell> shell;
  std::optional<GnomeHotKeyService> service;
  std::vector<std::uint32_t> pressed;

  void start(bool isThere = true) {
    if (isThere) fake.appear();
    shell = std::make_shared<GnomeShell>(true);
    service.emplace(shell, GnomeKeyBinding("/usr/bin/lexwend"));
    service->installHandler([this](const HotKeyEvent& event) {
      HotKeyID identity;
      event.hotKeyID(identity);
      pressed.push_back(identity.id);
      return kNoErr;
    });
  }
};

TEST_F(GnomeHotKeys, areTakenByThePlaceOfTheKey) {
  start();
  const auto registration = service->registerHotKey(kK, kCmdKey | kShiftKey, {1, 5});
  EXPECT_EQ(registration.status, kNoErr);
  EXPECT_EQ(fake.calls(), std::vector<std::string>{"bind <Control><Shift>0x2d"});
  fake.press(101);
  EXPECT_TRUE(pumpUntil([&] { return pressed == std::vector<std::uint32_t>{5}; }));
}

TEST_F(GnomeHotKeys, areGivenBack) {
  start();
  auto registration = service->registerHotKey(kF2, kNoModifiers, {1, 5});
  registration.hotKey.cancel();
  EXPECT_EQ(fake.calls(), (std::vector<std::string>{"bind 0x44", "unbind 101"}));
  EXPECT_FALSE(service->needsAgreement());
}

TEST_F(GnomeHotKeys, ofSomebodyElseAreRefused) {
  start();
  fake.refuseKeys();
  EXPECT_EQ(service->registerHotKey(kF2, kNoModifiers, {1, 5}).status, kHotKeyExistsErr);
  EXPECT_EQ(service->registerHotKey(kNoKeyOfAPc, kNoModifiers, {1, 5}).status, kHotKeyInvalidErr);
}

TEST_F(GnomeHotKeys, areTakenWhenTheExtensionComes) {
  start(/*isThere=*/false);
  const auto registration = service->registerHotKey(kF2, kNoModifiers, {1, 5});
  EXPECT_EQ(registration.status, kNoErr);
  EXPECT_FALSE(service->whyNoPressComes().empty());
  fake.appear();
  EXPECT_TRUE(pumpUntil([&] { return !fake.calls().empty(); }));
  EXPECT_TRUE(service->whyNoPressComes().empty());
  fake.press(101);
  EXPECT_TRUE(pumpUntil([&] { return pressed == std::vector<std::uint32_t>{5}; }));
}

TEST_F(GnomeHotKeys, thatArePressedDuringAPauseAreDroppedHoweverLateTheyAreTold) {
  start();
  const auto registration = service->registerHotKey(kF2, kNoModifiers, {1, 5});
  {
    const auto pause = service->ignorePresses();
    fake.press(101);
  }
  EXPECT_TRUE(pumpUntil([&] { return fake.calls().size() == 1; }));
  const auto marker = shell->observe([](const ShellEvent&) {});
  bool isOver = false;
  shell->afterEvents([&] { isOver = true; });
  EXPECT_TRUE(pumpUntil([&] { return isOver; }));
  EXPECT_TRUE(pressed.empty());
  fake.press(101);
  EXPECT_TRUE(pumpUntil([&] { return pressed.size() == 1; }));
}

}  // namespace
}  // namespace lexwend::platform
