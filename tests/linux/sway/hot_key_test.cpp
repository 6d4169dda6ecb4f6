// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/hot_key.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <glib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/sway/hot_key_service.h"
#include "tests/linux/sway/fake_sway.h"

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kBinding = 0x80000005;
constexpr std::uint32_t kTick = 0x80000007;
constexpr std::uint32_t kWorkspace = 0x80000000;
constexpr HotKeyID kIdentity{1, 2};

struct SwayHotKey : testing::Test {
  SwayHotKey() {
    service.installHandler([this](const HotKeyEvent&) {
      ++presses;
      return kNoErr;
    });
  }
  void binding(const char* word) {
    const std::string command = "nop lexwend " + std::to_string(getpid()) + " 1 " + word;
    sway.tell(kBinding, R"({"change":"run","binding":{"command":")" + command + R"("}})");
  }
  void tick() {
    sway.tell(kTick, R"({"first":false,"payload":"lexwend )" + std::to_string(getpid()) + R"("})");
  }
  /// Handles what has been told: an answer comes after it.
  void settle() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    while (std::chrono::steady_clock::now() < end) ipc->handleEvents();
  }

  FakeSway sway;
  std::shared_ptr<SwayIpc> ipc = SwayIpc::open();
  bool anotherIsTheAgent = false;
  SwayHotKeyService service{ipc, [this] { return anotherIsTheAgent; }};
  int presses = 0;
};

TEST_F(SwayHotKey, isBoundByThePlaceOfItsKeyAndGivenBack) {
  auto registration = service.registerHotKey(kKeyF2, kCmdKey | kOptionKey | kControlKey, kIdentity);
  ASSERT_EQ(registration.status, kNoErr);
  const std::string process = std::to_string(getpid());
  EXPECT_EQ(sway.commands(),
            (std::vector<std::string>{
                "bindcode --no-warn Ctrl+Mod1+Mod4+68 nop lexwend " + process + " 1 down",
                "bindcode --no-warn --release Ctrl+Mod1+Mod4+68 nop lexwend " + process + " 1 up"}));
  EXPECT_EQ(service.registerHotKey(kKeyF2, kCmdKey | kOptionKey | kControlKey, kIdentity).status,
            kHotKeyExistsErr);
  registration.hotKey.cancel();
  EXPECT_EQ(sway.commands().back(), "unbindcode --release Ctrl+Mod1+Mod4+68");
}

TEST_F(SwayHotKey, isNotTakenFromTheAgentByAnotherProgram) {
  anotherIsTheAgent = true;
  EXPECT_EQ(service.registerHotKey(kKeyF2, kNoModifiers, kIdentity).status, kHotKeyExistsErr);
  EXPECT_TRUE(sway.commands().empty());
}

TEST_F(SwayHotKey, isOnePressUntilItIsReleased) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  for (int i = 0; i < 5; ++i) binding("down");
  settle();
  EXPECT_EQ(presses, 1);
  binding("up");
  binding("down");
  settle();
  EXPECT_EQ(presses, 2);
}

TEST_F(SwayHotKey, isIgnoredUntilTheTickAfterAPause) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  { const auto pause = service.ignorePresses(); }
  binding("down");
  binding("up");
  settle();
  EXPECT_EQ(presses, 0);
  tick();
  binding("down");
  settle();
  EXPECT_EQ(presses, 1);
}

TEST_F(SwayHotKey, isBoundAnewWhenTheConfigurationWasReadAgain) {
  const auto registration = service.registerHotKey(kKeyF2, kNoModifiers, kIdentity);
  const std::size_t before = sway.commands().size();
  sway.tell(kWorkspace, R"({"change":"reload"})");
  settle();
  EXPECT_EQ(sway.commands().size(), before + 2);
}

TEST_F(SwayHotKey, isRefusedWhereSwayRefusesAndWhereThereIsNoSuchKey) {
  sway.answer(0, R"([{"success":false}])");
  EXPECT_EQ(service.registerHotKey(kKeyF2, kNoModifiers, kIdentity).status, kHotKeyInvalidErr);
  EXPECT_EQ(service.registerHotKey(KeyCode{0xFFFF}, kNoModifiers, kIdentity).status, kHotKeyInvalidErr);
}

}  // namespace
}  // namespace lexwend::platform
