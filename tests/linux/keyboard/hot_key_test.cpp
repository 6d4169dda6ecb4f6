// SPDX-License-Identifier: MIT
#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <unistd.h>
#include <xcb/xinput.h>

#include "platform/linux/keyboard/hot_key_service.h"
#include "platform/linux/keyboard/key_events.h"
#include "platform/linux/keyboard/keyboard_devices.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kSignature = 0x4C585744;

/// Another client that holds a key.
class Holder {
 public:
  Holder(int evdevKey, std::uint16_t modifiers) : x11_(X11Connection::open()) {
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(
        x11_->get(),
        xcb_grab_key_checked(x11_->get(), 0, x11_->root(), modifiers, static_cast<std::uint8_t>(evdevKey + 8),
                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    EXPECT_EQ(error, nullptr);
  }

 private:
  std::shared_ptr<X11Connection> x11_;
};

/// Another client that holds a key as a window manager does, through XInput 2.
class XInput2Holder {
 public:
  XInput2Holder(int evdevKey, std::uint32_t modifiers, KeyboardDevices::Id device)
      : x11_(X11Connection::open()) {
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(xcb_input_xi_passive_grab_device_reply(
        x11_->get(),
        xcb_input_xi_passive_grab_device(x11_->get(), XCB_CURRENT_TIME, x11_->root(), XCB_CURSOR_NONE,
                                         static_cast<std::uint32_t>(evdevKey + 8), device, 1, 1,
                                         XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                         XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events,
                                         &modifiers),
        nullptr));
    EXPECT_TRUE(reply && reply->num_modifiers == 0);
  }

 private:
  std::shared_ptr<X11Connection> x11_;
};

struct HotKeys : testing::Test {
  VirtualDisplay display;
  Typist typist;
  std::shared_ptr<X11Connection> x11 = X11Connection::open();
  LinuxHotKeyService service{x11};
  std::deque<HotKeyRegistration> added;
  std::vector<std::uint32_t> pressed;

  HotKeys() {
    display.setLayouts("us,il");
    settle();
    service.installHandler([this](const HotKeyEvent& event) {
      HotKeyID id;
      EXPECT_EQ(event.hotKeyID(id), kNoErr);
      EXPECT_EQ(id.signature, kSignature);
      pressed.push_back(id.id);
      return kNoErr;
    });
  }
  HotKeyRegistration& add(KeyCode keyCode, Modifiers modifiers, std::uint32_t id) {
    return added.emplace_back(service.registerHotKey(keyCode, modifiers, {kSignature, id}));
  }
  bool pressedBecomes(std::size_t count) {
    return pumpUntil([&] { return pressed.size() == count; });
  }
  /// Handles everything that the server has sent: the answer to a question comes after it.
  void settle() {
    roundTrip(x11->get());
    x11->dispatchPending();
  }
};

TEST_F(HotKeys, fireOncePerPressWithEveryCombinationOfLocks) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  const ModifierMasks masks = readModifierMasks(x11->get());
  ASSERT_NE(masks.numLock, 0);
  std::size_t count = 0;
  for (const std::uint16_t locks : masks.lockCombinations()) {
    for (const std::uint8_t group : {std::uint8_t{0}, std::uint8_t{1}}) {
      typist.lockModifiers(static_cast<std::uint8_t>(locks));
      typist.lockGroup(group);
      typist.tap(KEY_F2);
      EXPECT_TRUE(pressedBecomes(++count)) << "locks " << locks << " group " << int{group};
      settle();
    }
  }
  settle();
  EXPECT_EQ(pressed.size(), count);
}

TEST_F(HotKeys, fireOnceWhileTheKeyIsHeldAndAgainAfterIt) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  ASSERT_EQ(runProgram("xset r rate 100 50"), 0);
  PressCounter counter(KEY_F2);
  typist.press(KEY_F2);
  ASSERT_TRUE(pressedBecomes(1));
  ASSERT_TRUE(pumpUntil([&] { return counter.presses() >= 10; }));
  settle();
  EXPECT_EQ(pressed.size(), 1U);
  typist.release(KEY_F2);
  settle();
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(2));
  settle();
  EXPECT_EQ(pressed.size(), 2U);
}

TEST_F(HotKeys, fireForEachOfTwoPressesThatWaitedForABusyProgram) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  typist.tap(KEY_F2);
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(2));
}

TEST_F(HotKeys, fireForThePressAfterOneThatCameWhileTheServerWasBusy) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  typist.tap(KEY_F2);  // the first key of another keyboard changes the keymap
  ASSERT_TRUE(pressedBecomes(1));
  settle();
  typist.tap(KEY_F2);
  roundTrip(x11->get());
  ::usleep(3000);  // two presses within a millisecond of the server's clock are nobody's
  // What the service asks for after the first press reaches a server in which the second has begun.
  xcb_grab_server(typist.connection());
  roundTrip(typist.connection());
  x11->dispatchPending();
  EXPECT_EQ(pressed.size(), 2U);
  typist.press(KEY_F2);
  xcb_ungrab_server(typist.connection());
  roundTrip(typist.connection());
  roundTrip(x11->get());
  typist.release(KEY_F2);
  EXPECT_TRUE(pressedBecomes(3));
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(4));
}

TEST_F(HotKeys, tellTheirModifiersApart) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  ASSERT_EQ(add(kKeyF2, kCmdKey, 2).status, kNoErr);
  ASSERT_EQ(add(kKeyA, kCmdKey | kOptionKey | kShiftKey, 3).status, kNoErr);
  ASSERT_EQ(add(kKeyA, kControlKey, 4).status, kNoErr);
  typist.press(KEY_LEFTCTRL);
  typist.tap(KEY_F2);
  typist.release(KEY_LEFTCTRL);
  ASSERT_TRUE(pressedBecomes(1));
  typist.tap(KEY_F2);
  ASSERT_TRUE(pressedBecomes(2));
  for (const int key : {KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTSHIFT, KEY_A}) typist.press(key);
  ASSERT_TRUE(pressedBecomes(3));
  for (const int key : {KEY_A, KEY_LEFTCTRL, KEY_LEFTALT, KEY_LEFTSHIFT}) typist.release(key);
  settle();
  typist.press(KEY_LEFTMETA);
  typist.tap(KEY_A);
  typist.release(KEY_LEFTMETA);
  ASSERT_TRUE(pressedBecomes(4));
  EXPECT_THAT(pressed, testing::ElementsAre(2, 1, 3, 4));
}

TEST_F(HotKeys, keepTheirKeyFromOtherApplicationsAndNoOtherKey) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  FocusedWindow window;
  typist.tap(KEY_F2);
  ASSERT_TRUE(pressedBecomes(1));
  typist.tap(KEY_A);
  typist.press(KEY_LEFTSHIFT);
  typist.tap(KEY_F2);
  typist.release(KEY_LEFTSHIFT);
  EXPECT_EQ(window.keys(), "+38 -38 +50 +68 -68 -50");
  EXPECT_EQ(pressed.size(), 1U);
}

TEST_F(HotKeys, letSimulatedKeysThroughWhileTheKeyIsStillHeld) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  ASSERT_EQ(runProgram("xset r rate 100 50"), 0);
  FocusedWindow window;
  PressCounter counter(KEY_F2);
  typist.press(KEY_F2);
  ASSERT_TRUE(pressedBecomes(1));
  // Repetitions that nobody handles grab the keyboard again.
  LinuxKeyEvents keyEvents(x11);
  ASSERT_TRUE(counter.reaches(counter.presses() + 3));
  for (const bool down : {true, false}) {
    const auto event = keyEvents.createKeyboardEvent(nullptr, kKeyC, down);
    ASSERT_NE(event, nullptr);
    event->setFlags(kEventFlagCommand);
    keyEvents.post(EventTap::hid, *event);
  }
  ASSERT_TRUE(pumpUntil([&] { return window.keys().find("-37") != std::string::npos; }));
  EXPECT_EQ(window.keys(), "+37 +118 -118 -37");
  typist.release(KEY_F2);
}

TEST_F(HotKeys, fireForPressesOnTheServersOwnKeyboard) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  for (std::size_t count = 1; count <= 3; ++count) {
    typist.pressPhysically(KEY_F2);
    EXPECT_TRUE(pressedBecomes(count));
    typist.releasePhysically(KEY_F2);
  }
  settle();
  EXPECT_EQ(pressed.size(), 3U);
}

TEST_F(HotKeys, letOtherKeysThroughWhileTheKeyIsStillHeld) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  FocusedWindow window;
  typist.press(KEY_F2);
  ASSERT_TRUE(pressedBecomes(1));
  typist.tap(KEY_A);
  typist.release(KEY_F2);
  EXPECT_EQ(window.keys(), "+38 -38 -68");
}

TEST_F(HotKeys, areRefusedWhenAnotherProgramHoldsTheKey) {
  const Holder plain(KEY_F2, 0);
  const HotKeyRegistration& refused = add(kKeyF2, kNoModifiers, 1);
  EXPECT_EQ(refused.status, kHotKeyExistsErr);
  EXPECT_FALSE(refused.hotKey);
  EXPECT_EQ(add(kKeyF2, kShiftKey, 2).status, kNoErr);
}

TEST_F(HotKeys, areRefusedWhenAnotherProgramHoldsTheKeyThroughXInput2) {
  constexpr std::uint32_t kAnyModifier = 1U << 31;
  for (const KeyboardDevices::Id device : {readKeyboardDevices(*x11).core, KeyboardDevices::Id{1}}) {
    for (const std::uint32_t modifiers : {0U, std::uint32_t{XCB_MOD_MASK_LOCK}, kAnyModifier}) {
      const XInput2Holder holder(KEY_F2, modifiers, device);
      EXPECT_EQ(add(kKeyF2, kNoModifiers, 1).status, kHotKeyExistsErr) << int{device} << " " << modifiers;
    }
  }
  const XInput2Holder another(KEY_F2, XCB_MOD_MASK_SHIFT, readKeyboardDevices(*x11).core);
  EXPECT_EQ(add(kKeyF2, kShiftKey, 2).status, kHotKeyExistsErr);
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 3).status, kNoErr);
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(1));
}

TEST_F(HotKeys, leaveNothingBehindWhereTheyLookedForOtherHolders) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  const XInput2Holder later(KEY_F2, 0, readKeyboardDevices(*x11).core);
}

TEST_F(HotKeys, areRefusedWholeWhenOnlyOneLockCombinationIsTaken) {
  {
    const Holder withCapsLock(KEY_F2, XCB_MOD_MASK_LOCK);
    EXPECT_EQ(add(kKeyF2, kNoModifiers, 1).status, kHotKeyExistsErr);
    FocusedWindow window;
    typist.tap(KEY_F2);
    settle();
    EXPECT_EQ(window.keys(), "+68 -68");  // nothing of the failed registration is left
  }
  EXPECT_EQ(add(kKeyF2, kNoModifiers, 2).status, kNoErr);
}

TEST_F(HotKeys, areRefusedWhenThisProgramHoldsTheCombinationItself) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  EXPECT_EQ(add(kKeyF2, kNoModifiers, 2).status, kHotKeyExistsErr);
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(1));
  EXPECT_THAT(pressed, testing::ElementsAre(1));
}

TEST_F(HotKeys, areRefusedForKeysThatDoNotExist) {
  EXPECT_EQ(add(KeyCode{52}, kNoModifiers, 1).status, kHotKeyInvalidErr);
  EXPECT_EQ(add(KeyCode{0xFFFFFFFF}, kNoModifiers, 1).status, kHotKeyInvalidErr);
}

TEST_F(HotKeys, areFreeForOthersOnceUnregistered) {
  HotKeyRegistration& registration = add(kKeyF2, kNoModifiers, 1);
  ASSERT_EQ(registration.status, kNoErr);
  registration.hotKey.cancel();
  FocusedWindow window;
  typist.tap(KEY_F2);
  settle();
  EXPECT_TRUE(pressed.empty());
  EXPECT_EQ(window.keys(), "+68 -68");
  const Holder next(KEY_F2, 0);
}

TEST_F(HotKeys, mayBeUnregisteredByTheirOwnHandler) {
  HotKeyRegistration& registration = add(kKeyF2, kNoModifiers, 1);
  ASSERT_EQ(registration.status, kNoErr);
  int calls = 0;
  service.installHandler([&](const HotKeyEvent&) {
    ++calls;
    registration.hotKey.cancel();
    return kNoErr;
  });
  typist.tap(KEY_F2);
  ASSERT_TRUE(pumpUntil([&] { return calls == 1; }));
  typist.tap(KEY_F2);
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(HotKeys, areGivenBackAndRefusedOnceTheServiceHasStopped) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  service.stop();
  FocusedWindow window;
  typist.tap(KEY_F2);
  settle();
  EXPECT_TRUE(pressed.empty());
  EXPECT_EQ(window.keys(), "+68 -68");
  EXPECT_NE(add(kKeyA, kCmdKey, 2).status, kNoErr);
}

TEST_F(HotKeys, goOnAfterTheKeyboardMapChanged) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  // Num Lock moves to another modifier.
  ASSERT_EQ(runProgram("xmodmap -e 'clear mod2' -e 'clear mod3' -e 'add mod3 = Num_Lock'"), 0);
  ASSERT_TRUE(pumpUntil([&] {
    x11->dispatchPending();
    return readModifierMasks(x11->get()).numLock == XCB_MOD_MASK_3;
  }));
  settle();
  typist.lockModifiers(XCB_MOD_MASK_3);
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(1));
}

TEST_F(HotKeys, areTakenAgainAtTheNextChangeWhenAnotherProgramHeldThem) {
  ASSERT_EQ(add(kKeyF2, kNoModifiers, 1).status, kNoErr);
  const auto moveNumLock = [&](const std::string& from, const std::string& to) {
    const auto before = readModifierMasks(x11->get()).numLock;
    ASSERT_EQ(
        runProgram("xmodmap -e 'clear " + from + "' -e 'clear " + to + "' -e 'add " + to + " = Num_Lock'"),
        0);
    ASSERT_TRUE(pumpUntil([&] { return readModifierMasks(x11->get()).numLock != before; }));
    settle();
  };
  {
    const Holder other(KEY_F2, XCB_MOD_MASK_3);  // free for it as long as no lock is there
    moveNumLock("mod2", "mod3");
    typist.tap(KEY_F2);
    settle();
    EXPECT_TRUE(pressed.empty());
  }
  ASSERT_EQ(runProgram("xmodmap -e 'keycode 255 = F24'"), 0);  // a change that leaves the locks alone
  settle();
  typist.tap(KEY_F2);
  EXPECT_TRUE(pressedBecomes(1));
}

TEST(HotKeysWithoutDisplay, areRefused) {
  LinuxHotKeyService service(nullptr);
  EXPECT_EQ(service.installHandler([](const HotKeyEvent&) { return kNoErr; }), kNoErr);
  EXPECT_EQ(service.registerHotKey(kKeyF2, kNoModifiers, {}).status, kHotKeyInvalidErr);
}

TEST(KeyNamesOnLinux, areThoseOfItsKeyboards) {
  LinuxHotKeyService service(nullptr);
  const KeyNames& names = service.keyNames();
  EXPECT_EQ(names.joint, "+");
  EXPECT_EQ(names.of(kCmdKey), "Ctrl");
  EXPECT_EQ(names.of(kOptionKey), "Alt");
  EXPECT_EQ(names.of(kControlKey), "Super");
  EXPECT_EQ(names.of(kShiftKey), "Shift");
  EXPECT_EQ(names.space, "Space");
  EXPECT_FALSE(names.functionKeysNeedGlobe);
}

}  // namespace
}  // namespace lexwend::platform
