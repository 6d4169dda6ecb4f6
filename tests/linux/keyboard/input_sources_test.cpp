// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/input_sources.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using testing::ElementsAre;

constexpr Modifiers kPlain = kNoModifiers;
constexpr Modifiers kShift = kShiftKey;

TEST(KeyboardWithoutDisplay, listsNothing) {
  LinuxInputSources sources(nullptr);
  EXPECT_FALSE(sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false));
  EXPECT_EQ(sources.copyCurrentKeyboardLayoutInputSource(), nullptr);
}

struct Keyboard : testing::Test {
  VirtualDisplay display;
  Typist typist;
  std::shared_ptr<X11Connection> x11 = X11Connection::open();
  LinuxInputSources sources{x11};

  std::vector<InputSourceRef> enabled() {
    return sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false).value();
  }
  std::string idOf(const InputSourceRef& source) {
    return source ? std::get<std::string>(sources.property(source, InputSourceProperty::id)) : "none";
  }
  std::vector<std::string> ids() {
    std::vector<std::string> ids;
    for (const auto& source : enabled()) ids.push_back(idOf(source));
    return ids;
  }
  void handleWhatTheServerHasSent() {
    roundTrip(x11->get());
    x11->dispatchPending();
  }
  /// Handles what the server has sent and the check that it may have put off: a timer that is longer than
  /// that delay and begins after it ends later.
  void settle() {
    handleWhatTheServerHasSent();
    bool over = false;
    constexpr guint kLongerThanTheDelay = 60;
    g_timeout_add(
        kLongerThanTheDelay,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &over);
    ASSERT_TRUE(pumpUntil([&] { return over; }));
  }
  std::string currentId() { return idOf(sources.copyCurrentKeyboardLayoutInputSource()); }
  std::u16string typed(const InputSourceRef& source, std::uint16_t keyCode, Modifiers modifiers,
                       std::size_t maxLength = 8) {
    const auto value = sources.property(source, InputSourceProperty::unicodeKeyLayoutData);
    std::uint32_t deadKeyState = 0;
    return sources
        .translate(*std::get<KeyLayoutDataRef>(value),
                   {KeyCode{keyCode}, KeyAction::down, modifiers, sources.keyboardType(), 0, maxLength},
                   deadKeyState)
        .value();
  }
};

TEST_F(Keyboard, listsTheLayoutsInTheirOrder) {
  for (const auto& [layouts, variants, expected] :
       std::vector<std::tuple<std::string, std::string, std::vector<std::string>>>{
           {"us,il", "", {"us", "il"}},
           {"il,us", "", {"il", "us"}},
           {"il", "", {"il"}},
           {"de,il", "", {"de", "il"}},
           {"us", "dvorak", {"us(dvorak)"}},
           {"gb,il", ",lyx", {"gb", "il(lyx)"}},
           {"us,il,de,fr", "", {"us", "il", "de", "fr"}}}) {
    display.setLayouts(layouts, variants);
    EXPECT_EQ(ids(), expected);
  }
}

TEST_F(Keyboard, tellsAndSelectsTheCurrentLayoutInEitherOrder) {
  for (const char* layouts : {"us,il", "il,us", "de,il", "gb,il"}) {
    display.setLayouts(layouts);
    typist.lockGroup(0);
    const auto list = enabled();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(currentId(), idOf(list[0]));
    sources.select(list[1]);
    EXPECT_EQ(currentId(), idOf(list[1]));
    EXPECT_EQ(typist.group(), 1);
    sources.select(list[0]);
    EXPECT_EQ(currentId(), idOf(list[0]));
    EXPECT_EQ(typist.group(), 0);
  }
}

TEST_F(Keyboard, keepsTheLayoutsOfTheUserWhenSimulatedKeysHaveOthers) {
  display.setLayouts("us");
  typist.setKeyboardsApart("us", "us,il");
  EXPECT_THAT(ids(), ElementsAre("us", "il"));  // before any key
  typist.tapPhysically(KEY_A);
  EXPECT_THAT(ids(), ElementsAre("us", "il"));
  int changes = 0;
  const auto observer = sources.observeEnabledLayoutsChanged([&] { ++changes; });
  typist.tap(KEY_A);
  ASSERT_THAT(ids(), ElementsAre("us", "il"));
  EXPECT_EQ(typed(enabled()[1], 0, kPlain), u"ש");
  EXPECT_EQ(currentId(), "us");
  settle();
  EXPECT_EQ(changes, 0);
  typist.setKeyboardsApart("us", "us,de");
  typist.tapPhysically(KEY_A);
  ASSERT_TRUE(pumpUntil([&] { return changes > 0; }));
  settle();
  EXPECT_THAT(ids(), ElementsAre("us", "de"));
  EXPECT_EQ(changes, 1);
}

TEST_F(Keyboard, seesTheGroupThatTheUserSwitchedTo) {
  display.setLayouts("us,il");
  typist.lockGroup(1);
  EXPECT_EQ(currentId(), "il");
  typist.lockGroup(0);
  EXPECT_EQ(currentId(), "us");
}

TEST_F(Keyboard, withOneLayoutIsAlwaysInIt) {
  display.setLayouts("il");
  typist.lockGroup(1);
  EXPECT_EQ(currentId(), "il");
}

TEST_F(Keyboard, selectsByNameWhenTheOrderChangedMeanwhile) {
  display.setLayouts("us,il");
  const auto list = enabled();
  display.setLayouts("il,us");
  sources.select(list[1]);
  EXPECT_EQ(currentId(), "il");
  EXPECT_EQ(typist.group(), 0);
}

TEST_F(Keyboard, leavesTheLayoutWhenTheSelectedOneIsGone) {
  display.setLayouts("us,il");
  const auto list = enabled();
  display.setLayouts("us,de");
  sources.select(list[1]);
  EXPECT_EQ(currentId(), "us");
}

TEST_F(Keyboard, typesWhatTheLayoutSaysInBothGroups) {
  display.setLayouts("us,il");
  const auto list = enabled();
  for (const std::uint8_t group : {std::uint8_t{0}, std::uint8_t{1}}) {
    typist.lockGroup(group);
    EXPECT_EQ(typed(list[0], 0, kPlain), u"a");
    EXPECT_EQ(typed(list[0], 0, kShift), u"A");
    EXPECT_EQ(typed(list[0], 50, kPlain), u"`");
    EXPECT_EQ(typed(list[0], 44, kShift), u"?");
    EXPECT_EQ(typed(list[1], 0, kPlain), u"ש");
    EXPECT_EQ(typed(list[1], 0, kShift), u"A");
    EXPECT_EQ(typed(list[1], 13, kPlain), u"'");
    EXPECT_EQ(typed(list[1], 12, kPlain), u"/");
    EXPECT_EQ(typed(list[1], 25, kShift), u")");  // mirrored against us
    EXPECT_EQ(typed(list[1], 41, kPlain), u"ף");
  }
  EXPECT_EQ(typed(list[0], 36, kPlain), u"\r");
  EXPECT_EQ(typed(list[0], 48, kPlain), u"\t");
  EXPECT_EQ(typed(list[0], 49, kPlain), u" ");
}

TEST_F(Keyboard, fetchesTheKeymapAgainOnlyWhenItChanged) {
  display.setLayouts("us,il");
  const auto requestsFor = [this](std::uint16_t keyCode, std::u16string_view expected) {
    const unsigned before = xcb_no_operation(x11->get()).sequence;
    EXPECT_EQ(typed(enabled()[0], keyCode, kPlain), expected);
    return xcb_no_operation(x11->get()).sequence - before;
  };
  handleWhatTheServerHasSent();
  const unsigned first = requestsFor(0, u"a");
  const unsigned second = requestsFor(1, u"s");
  EXPECT_LT(second, first);
  ASSERT_EQ(runProgram("xmodmap -e 'keycode 38 = b B'"), 0);
  handleWhatTheServerHasSent();
  EXPECT_GT(requestsFor(0, u"b"), second);
  display.setLayouts("de,il");  // announced, but not yet handled
  EXPECT_EQ(typed(enabled()[0], 6, kPlain), u"y");
}

TEST_F(Keyboard, typesTheVariantsCharacters) {
  display.setLayouts("us", "dvorak");
  const auto list = enabled();
  EXPECT_EQ(typed(list[0], 1, kPlain), u"o");
  EXPECT_EQ(typed(list[0], 12, kPlain), u"'");
}

TEST_F(Keyboard, typesNothingForADeadKey) {
  display.setLayouts("de,il");
  const auto list = enabled();
  EXPECT_EQ(typed(list[0], 50, kPlain), u"");   // dead circumflex
  EXPECT_EQ(typed(list[0], 50, kShift), u"°");  // the same key is alive with Shift
  EXPECT_EQ(typed(list[0], 24, kPlain), u"");   // dead acute
  EXPECT_EQ(typed(list[0], 6, kPlain), u"y");
  EXPECT_EQ(typed(list[0], 27, kPlain), u"ß");
}

TEST_F(Keyboard, ignoresLocksAndHeldKeysOfTheUser) {
  display.setLayouts("us,il");
  const auto list = enabled();
  typist.lockModifiers(XCB_MOD_MASK_LOCK);
  EXPECT_EQ(typed(list[0], 0, kPlain), u"a");
}

TEST_F(Keyboard, reportsAnErrorWhenTheResultHasNoRoom) {
  display.setLayouts("us");
  const auto value = sources.property(enabled()[0], InputSourceProperty::unicodeKeyLayoutData);
  std::uint32_t deadKeyState = 0;
  EXPECT_FALSE(sources.translate(*std::get<KeyLayoutDataRef>(value),
                                 {kKeyA, KeyAction::down, kPlain, 0, 0, 0}, deadKeyState));
}

TEST_F(Keyboard, announcesAnotherSetOfLayoutsOnce) {
  display.setLayouts("us,il");
  int changes = 0;
  const auto observer = sources.observeEnabledLayoutsChanged([&] { ++changes; });
  display.setLayouts("us,de");
  ASSERT_TRUE(pumpUntil([&] { return changes > 0; }));
  EXPECT_THAT(ids(), ElementsAre("us", "de"));
  settle();
  EXPECT_EQ(changes, 1);
  display.setLayouts("us,il");
  EXPECT_TRUE(pumpUntil([&] { return changes == 2; }));
}

TEST_F(Keyboard, announcesAnotherSetOfLayoutsBeforeItTellsTheCurrentOne) {
  display.setLayouts("us,il");
  int changes = 0;
  const auto observer = sources.observeEnabledLayoutsChanged([&] { ++changes; });
  display.setLayouts("de,il");
  handleWhatTheServerHasSent();
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(currentId(), "de");
  EXPECT_EQ(changes, 1);
  settle();
  EXPECT_EQ(changes, 1);
}

TEST_F(Keyboard, announcesNothingWhenOnlyTheGroupOrNothingChanged) {
  display.setLayouts("us,il");
  int changes = 0;
  const auto observer = sources.observeEnabledLayoutsChanged([&] { ++changes; });
  display.setLayouts("us,il");
  typist.lockGroup(1);
  typist.tap(KEY_A);
  settle();
  EXPECT_EQ(changes, 0);
}

}  // namespace
}  // namespace lexwend::platform
