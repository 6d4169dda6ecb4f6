// SPDX-License-Identifier: MIT
// Simulated keys, hot keys and the monitor of key presses.
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t kSignature = 0x544B5652;

struct MacKeyEventsService : OnMac {
  KeyEvents& service = host->keyEvents();
};

TEST_F(MacKeyEventsService, readsTheModifiersOfTheCombinedSession) {
  doubles::key_events::setModifiersHeld(number(kEventFlagCommand | kEventFlagSecondaryFn) | 0x100);
  EXPECT_EQ(service.flagsState(EventSourceState::combinedSession), EventFlags{0x900100});
  EXPECT_EQ(doubles::callsNamed("CGEventSourceFlagsState").at(0).arguments, "0");
}

TEST_F(MacKeyEventsService, postsAKeyWithExactlyTheFlagsGiven) {
  doubles::key_events::setModifiersHeld(number(kEventFlagShift));
  const EventSourceRef source = service.createSource(EventSourceState::hidSystem);
  const auto down = service.createKeyboardEvent(source, kKeyC, true);
  const auto up = service.createKeyboardEvent(source, kKeyC, false);
  down->setFlags(kEventFlagCommand);
  up->setFlags(kEventFlagCommand);
  service.post(EventTap::hid, *down);
  service.post(EventTap::hid, *up);
  using doubles::key_events::Posted;
  const Posted pressed = {.keyCode = 8, .isDown = true, .flags = 0x100000, .tap = 0, .sourceState = 1};
  const Posted released = {.keyCode = 8, .isDown = false, .flags = 0x100000, .tap = 0, .sourceState = 1};
  EXPECT_THAT(doubles::key_events::posted(), ElementsAre(pressed, released));
}

TEST_F(MacKeyEventsService, makesAnEventWithoutASource) {
  doubles::key_events::failNextSource();
  const EventSourceRef none = service.createSource(EventSourceState::hidSystem);
  EXPECT_EQ(none, nullptr);
  const auto event = service.createKeyboardEvent(none, kKeyV, true);
  ASSERT_NE(event, nullptr);
  service.post(EventTap::hid, *event);
  EXPECT_EQ(doubles::key_events::posted().at(0).sourceState, std::nullopt);
}

TEST_F(MacKeyEventsService, givesNothingForAnEventThatCannotBeMade) {
  doubles::key_events::failEventCreation(1);
  EXPECT_EQ(service.createKeyboardEvent(nullptr, kKeyC, true), nullptr);
  EXPECT_NE(service.createKeyboardEvent(nullptr, kKeyC, true), nullptr);
}

struct MacHotKeys : InMacApplication {
  HotKeyService& service = host->hotKeyService();
};

TEST_F(MacHotKeys, registersKeyModifiersAndIdentityAsGiven) {
  const HotKeyRegistration registration = service.registerHotKey(kKeyF2, Modifiers{0x1A00}, {kSignature, 7});
  EXPECT_EQ(registration.status, 0);
  EXPECT_TRUE(registration.hotKey);
  EXPECT_THAT(doubles::hot_keys::registered(),
              ElementsAre(doubles::hot_keys::Registered{120, 0x1A00, kSignature, 7}));
  EXPECT_EQ(argumentsOf("RegisterEventHotKey"), "120, 6656, {1414223442, 7}, options=0");
}

TEST_F(MacHotKeys, unregistersOneAndOnlyOne) {
  Registration first = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 1}).hotKey;
  const Registration second = service.registerHotKey(kKeyF1, kNoModifiers, {kSignature, 2}).hotKey;
  first.cancel();
  EXPECT_THAT(doubles::hot_keys::registered(),
              ElementsAre(doubles::hot_keys::Registered{122, 0, kSignature, 2}));
}

TEST_F(MacHotKeys, leavesARegistrationStandingWithoutUnregistering) {
  service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 1}).hotKey.detach();
  EXPECT_EQ(doubles::hot_keys::registered().size(), 1u);
}

TEST_F(MacHotKeys, passesOnARefusalAndANullReference) {
  constexpr std::int32_t kTaken = -9878;
  doubles::hot_keys::failNextRegistration(kTaken);
  const HotKeyRegistration refused = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 1});
  EXPECT_EQ(refused.status, kTaken);
  EXPECT_FALSE(refused.hotKey);
  doubles::hot_keys::nextRegistrationHasNoReference();
  const HotKeyRegistration empty = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 2});
  EXPECT_EQ(empty.status, 0);
  EXPECT_FALSE(empty.hotKey);
}

TEST_F(MacHotKeys, reportsWhichHotKeyWasPressed) {
  std::vector<HotKeyID> pressed;
  EXPECT_EQ(service.installHandler([&](const HotKeyEvent& event) {
    HotKeyID identity;
    EXPECT_EQ(event.hotKeyID(identity), 0);
    pressed.push_back(identity);
    return kNoErr;
  }),
            0);
  EXPECT_EQ(doubles::hot_keys::installedHandlers(), 1u);
  const Registration key = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 7}).hotKey;
  EXPECT_EQ(doubles::hot_keys::press(120, 0), 0);
  EXPECT_EQ(doubles::hot_keys::press(122, 0), std::nullopt);
  EXPECT_THAT(pressed, ElementsAre(HotKeyID{kSignature, 7}));
  // One type, "keyb" and pressed; the direct object "----" as "hkid", eight bytes.
  EXPECT_EQ(argumentsOf("InstallEventHandler"), "{1801812322, 5} userData=null, reference=null");
  EXPECT_EQ(argumentsOf("GetEventParameter"),
            "757935405, 1751869796, 8 bytes, actualType=null, actualSize=null");
}

TEST_F(MacHotKeys, leavesTheIdentityAloneWhenItCannotBeRead) {
  constexpr std::int32_t kNotFound = -9870;
  HotKeyID identity{1, 2};
  OSStatus status = 0;
  service.installHandler([&](const HotKeyEvent& event) {
    status = event.hotKeyID(identity);
    return kNoErr;
  });
  const Registration key = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 7}).hotKey;
  doubles::hot_keys::failNextEventParameter(kNotFound);
  doubles::hot_keys::press(120, 0);
  EXPECT_EQ(status, kNotFound);
  EXPECT_EQ(identity, (HotKeyID{1, 2}));
}

TEST_F(MacHotKeys, givesTheHandlersStatusBackAndZeroWhenItThrows) {
  bool throws = false;
  service.installHandler([&](const HotKeyEvent&) -> OSStatus {
    if (throws) throw std::runtime_error("from the handler");
    return -1;
  });
  const Registration key = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 1}).hotKey;
  EXPECT_EQ(doubles::hot_keys::press(120, 0), -1);
  throws = true;
  EXPECT_EQ(doubles::hot_keys::press(120, 0), 0);
}

/// With the presses counted.
struct MacHotKeyF2 : MacHotKeys {
  int presses = 0;
  Registration key;

  void SetUp() override {
    MacHotKeys::SetUp();
    service.installHandler([this](const HotKeyEvent&) {
      ++presses;
      return kNoErr;
    });
    key = service.registerHotKey(kKeyF2, kNoModifiers, {kSignature, 1}).hotKey;
  }
  void TearDown() override {
    key.cancel();
    MacHotKeys::TearDown();
  }
  StatusItemRef itemWithMenu() {
    StatusItemRef item = host->statusBar().statusItem(kSquareStatusItemLength);
    item->setMenu(host->statusBar().makeMenu());
    return item;
  }
};

TEST_F(MacHotKeyF2, hearsPressesAfterAMenuWentThatWasOpen) {
  StatusItemRef item = itemWithMenu();
  doubles::status_bar::openMenu();
  item = nullptr;
  doubles::hot_keys::press(120, 0);
  EXPECT_EQ(presses, 1);
}

TEST_F(MacHotKeyF2, hearsAPressThatWasMadeBeforeTheMenuOpened) {
  StatusItemRef item = itemWithMenu();
  doubles::time::later(std::chrono::milliseconds(1), [] { doubles::hot_keys::press(120, 0); });
  host->runLoop().sleep(std::chrono::milliseconds(2));
  doubles::status_bar::openMenu();
  EXPECT_EQ(presses, 0);
  doubles::status_bar::closeMenu();
  EXPECT_EQ(presses, 1);
}

TEST_F(MacHotKeyF2, runsNoHandlerOnceTheServiceIsGone) {
  host = nullptr;
  EXPECT_EQ(doubles::hot_keys::press(120, 0), 0);
  EXPECT_EQ(presses, 0);
}

struct MacKeyMonitorService : InMacApplication {
  KeyMonitor& service = host->keyMonitor();

  void SetUp() override {
    InMacApplication::SetUp();
    host->application().activate(true);
  }
};

TEST_F(MacKeyMonitorService, seesKeyAndAllFlagsOfEveryPress) {
  std::vector<KeyDownEvent> seen;
  const auto token = service.addLocalKeyDownMonitor([&](const KeyDownEvent& event) {
    seen.push_back(event);
    return KeyDisposition::consumed;
  });
  EXPECT_TRUE(doubles::windows::pressKey(53, 0));
  EXPECT_TRUE(doubles::windows::pressKey(36, 0x120000));
  EXPECT_TRUE(doubles::windows::pressKey(96, 0xFF0100));
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].keyCode, kKeyEscape);
  EXPECT_EQ(seen[0].modifierFlags, EventFlags{0});
  EXPECT_EQ(seen[1].modifierFlags, EventFlags{0x120000});
  EXPECT_EQ(seen[2].keyCode, kKeyF5);
  EXPECT_EQ(seen[2].modifierFlags, EventFlags{0xFF0100});
}

TEST_F(MacKeyMonitorService, letsAPressPassThatIsNotConsumed) {
  const auto token =
      service.addLocalKeyDownMonitor([](const KeyDownEvent&) { return KeyDisposition::passedOn; });
  EXPECT_FALSE(doubles::windows::pressKey(0, 0));
}

TEST_F(MacKeyMonitorService, letsAPressPassWhoseHandlerThrows) {
  const auto token = service.addLocalKeyDownMonitor(
      [](const KeyDownEvent&) -> KeyDisposition { throw std::runtime_error("from the handler"); });
  EXPECT_FALSE(doubles::windows::pressKey(0, 0));
}

TEST_F(MacKeyMonitorService, hasNothingToRemoveWhereTheSystemGivesNoMonitor) {
  doubles::failures::failNext("+[NSEvent addLocalMonitorForEventsMatchingMask:handler:]");
  EXPECT_FALSE(service.addLocalKeyDownMonitor([](const KeyDownEvent&) { return KeyDisposition::consumed; }));
}

TEST_F(MacKeyMonitorService, isRemovedWithItsToken) {
  auto token = service.addLocalKeyDownMonitor([](const KeyDownEvent&) { return KeyDisposition::consumed; });
  EXPECT_EQ(doubles::windows::localMonitors(), 1u);
  token.cancel();
  EXPECT_EQ(doubles::windows::localMonitors(), 0u);
  EXPECT_FALSE(doubles::windows::pressKey(0, 0));
}

TEST_F(MacKeyMonitorService, mayBeRemovedByItsOwnHandler) {
  Registration token;
  const auto state = std::make_shared<int>(0);
  token = service.addLocalKeyDownMonitor([&token, &state, own = state](const KeyDownEvent&) {
    const auto& outside = state;
    token.cancel();
    EXPECT_EQ(outside.use_count(), 2) << "the handler went while it runs";
    ++*outside;
    return KeyDisposition::consumed;
  });
  EXPECT_TRUE(doubles::windows::pressKey(53, 0));
  EXPECT_EQ(*state, 1);
  EXPECT_EQ(doubles::windows::localMonitors(), 0u);
  host = nullptr;
  EXPECT_EQ(session.unbalancedObjects(), "");
  EXPECT_EQ(state.use_count(), 1);
}

}  // namespace
}  // namespace lexwend::platform::mac
