// SPDX-License-Identifier: MIT
#include "platform/key_events.h"
#include "platform/pasteboard.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::EventSourceState;
using platform::EventTap;

using platform::kKeyC;
using platform::kKeyV;

class KeyEventsContract : public ContractTest {
 protected:
  platform::KeyEvents& keys() { return host().keyEvents(); }
  void postCommand(const platform::EventSourceRef& source, platform::KeyCode keyCode) {
    const auto down = keys().createKeyboardEvent(source, keyCode, true);
    const auto up = keys().createKeyboardEvent(source, keyCode, false);
    ASSERT_NE(down, nullptr);
    ASSERT_NE(up, nullptr);
    down->setFlags(platform::kEventFlagCommand);
    up->setFlags(platform::kEventFlagCommand);
    keys().post(EventTap::hid, *down);
    keys().post(EventTap::hid, *up);
  }
  bool copied(std::string_view text) {
    return underTest->waitUntil([&] { return host().generalPasteboard()->string() == text; });
  }
};

TEST_F(KeyEventsContract, commandCCopiesTheSelectionInFront) {
  underTest->openEditor("akuo nv");
  postCommand(keys().createSource(EventSourceState::hidSystem), kKeyC);
  EXPECT_TRUE(copied("akuo nv"));
}

TEST_F(KeyEventsContract, commandVReplacesTheSelectionInFront) {
  underTest->openEditor("akuo nv");
  host().generalPasteboard()->clearContents();
  host().generalPasteboard()->setString("שלום מה");
  postCommand(keys().createSource(EventSourceState::hidSystem), kKeyV);
  EXPECT_TRUE(underTest->waitUntil([&] { return underTest->editorText() == "שלום מה"; }));
}

TEST_F(KeyEventsContract, anEventNeedsNoSource) {
  underTest->openEditor("akuo");
  postCommand(nullptr, kKeyC);
  EXPECT_TRUE(copied("akuo"));
}

TEST_F(KeyEventsContract, theFlagsAreExactlyThoseThatWereSetWhateverTheUserHolds) {
  underTest->openEditor("akuo");
  underTest->userHolds(platform::kEventFlagShift);
  postCommand(keys().createSource(EventSourceState::hidSystem), kKeyC);
  EXPECT_TRUE(copied("akuo"));
  underTest->userHolds(platform::kNoEventFlags);
}

TEST_F(KeyEventsContract, anEventThatIsNotPostedDoesNothing) {
  underTest->openEditor("akuo");
  const auto down = keys().createKeyboardEvent(nullptr, kKeyC, true);
  ASSERT_NE(down, nullptr);
  down->setFlags(platform::kEventFlagCommand);
  underTest->waitUntil([] { return false; }, 100ms);
  EXPECT_EQ(host().generalPasteboard()->string(), std::nullopt);
}

/// Fn is a matter of the keyboard's own everywhere but on macOS: tests/mac/host_keys_test.cpp shows it.
TEST_F(KeyEventsContract, flagsSayWhatIsHeldNow) {
  const auto flags = [&] { return keys().flagsState(EventSourceState::combinedSession); };
  constexpr auto kAll = platform::kEventFlagShift | platform::kEventFlagControl | platform::kEventFlagOption |
                        platform::kEventFlagCommand;
  EXPECT_EQ(flags() & kAll, platform::kNoEventFlags);
  for (const auto modifier : {platform::kEventFlagShift, platform::kEventFlagControl,
                              platform::kEventFlagOption, platform::kEventFlagCommand}) {
    underTest->userHolds(modifier);
    const auto told = underTest->tellsHeldModifiers() ? modifier : platform::kNoEventFlags;
    EXPECT_TRUE(underTest->waitUntil([&] { return (flags() & kAll) == told; })) << number(modifier);
  }
  underTest->userHolds(platform::kNoEventFlags);
  EXPECT_TRUE(underTest->waitUntil([&] { return !overlap(flags(), kAll); }));
}

}  // namespace
}  // namespace lexwend::contract
