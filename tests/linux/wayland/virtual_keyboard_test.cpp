// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/virtual_keyboard.h"

#include <chrono>
#include <string>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kKey = KEY_F9;

/// How often sway has seen the key go down.
struct Presses {
  explicit Presses(SwayIpc& ipc) : sway(ipc) {
    sway.run("bindcode " + std::to_string(kKey + 8) + " nop pressed");
  }
  /// All so far: sway tells of a tick after what was before it.
  int count() {
    ticked = false;
    sway.sendTick("counted");
    const auto end = Clock::now() + 10s;
    while (!ticked && Clock::now() < end) sway.handleEvents();
    EXPECT_TRUE(ticked);
    return seen;
  }

  SwayIpc& sway;
  bool ticked = false;
  int seen = 0;
  Registration observation = sway.observe([this](const SwayEvent& event) {
    if (event.kind == SwayEventKind::binding) ++seen;
    if (event.kind == SwayEventKind::tick && textOf(event.details, "payload") == "counted") ticked = true;
  });
};

bool tap(VirtualKeyboard& keyboard) {
  return keyboard.play(kKey, true, 0) && keyboard.play(kKey, false, 0) && keyboard.settle();
}

TEST(VirtualKeyboard, typesNothingLateAndGoesOnAfterASilenceOfTheCompositor) {
  PrivateSway sway;
  Presses presses(sway.ipc());
  VirtualKeyboard keyboard;
  EXPECT_TRUE(tap(keyboard));
  EXPECT_EQ(presses.count(), 1);
  sway.stop();
  EXPECT_FALSE(tap(keyboard));
  sway.goOn();
  const auto end = Clock::now() + 10s;
  bool isTaken = false;
  while (!isTaken && Clock::now() < end) isTaken = tap(keyboard);
  EXPECT_TRUE(isTaken);
  EXPECT_EQ(presses.count(), 2) << "the key of the silence was taken after it";
}

TEST(VirtualKeyboard, isThereThoughTheCompositorDoesNotAnswerAtFirst) {
  PrivateSway sway;
  Presses presses(sway.ipc());
  VirtualKeyboard keyboard;
  sway.stop();
  EXPECT_FALSE(tap(keyboard));
  sway.goOn();
  EXPECT_TRUE(tap(keyboard));
  EXPECT_EQ(presses.count(), 1);
}

}  // namespace
}  // namespace lexwend::platform
