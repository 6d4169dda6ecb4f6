// SPDX-License-Identifier: MIT
#include <algorithm>

#include "platform/input_sources.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::InputSourceProperty;
using platform::InputSourceRef;

class InputSourcesContract : public ContractTest {
 protected:
  platform::InputSourceService& sources() { return host().inputSourceService(); }
  std::vector<InputSourceRef> enabled() {
    return sources()
        .createInputSourceList({platform::InputSourceType::keyboardLayout, true}, false)
        .value_or(std::vector<InputSourceRef>());
  }
  std::vector<std::string> languages(const InputSourceRef& source) {
    const auto value = sources().property(source, InputSourceProperty::languages);
    const auto* list = std::get_if<std::vector<std::string>>(&value);
    return list == nullptr ? std::vector<std::string>() : *list;
  }
  bool speaks(const InputSourceRef& source, const std::string& language) {
    const auto list = languages(source);
    return std::find(list.begin(), list.end(), language) != list.end();
  }
  std::u16string typed(const InputSourceRef& source, platform::KeyCode keyCode,
                       platform::Modifiers modifiers) {
    const auto value = sources().property(source, InputSourceProperty::unicodeKeyLayoutData);
    const auto* data = std::get_if<platform::KeyLayoutDataRef>(&value);
    if (data == nullptr || *data == nullptr || (*data)->empty()) return u"(no data)";
    std::uint32_t deadKeyState = 0;
    const platform::KeyTranslation translation{
        keyCode, platform::KeyAction::down, modifiers, sources().keyboardType(), 0, 8};
    return sources().translate(**data, translation, deadKeyState).value_or(u"(error)");
  }
};

TEST_F(InputSourcesContract, theEnabledLayoutsAreListedInOrder) {
  const auto list = enabled();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_TRUE(speaks(list[0], "en"));
  EXPECT_TRUE(speaks(list[1], "he"));
}

TEST_F(InputSourcesContract, everyLayoutHasAnIdentifierOfItsOwn) {
  std::vector<std::string> ids;
  for (const auto& source : enabled()) {
    const auto value = sources().property(source, InputSourceProperty::id);
    const auto* id = std::get_if<std::string>(&value);
    ASSERT_NE(id, nullptr);
    EXPECT_FALSE(id->empty());
    EXPECT_EQ(std::count(ids.begin(), ids.end(), *id), 0);
    ids.push_back(*id);
  }
}

TEST_F(InputSourcesContract, keysAreTranslatedPlainAndWithShift) {
  const auto list = enabled();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(typed(list[0], platform::kKeyA, platform::kNoModifiers), u"a");
  EXPECT_EQ(typed(list[0], platform::kKeyA, platform::kShiftKey), u"A");
  EXPECT_EQ(typed(list[0], platform::KeyCode{18}, platform::kShiftKey), u"!");
  EXPECT_EQ(typed(list[1], platform::kKeyA, platform::kNoModifiers), u"ש");
  EXPECT_EQ(typed(list[1], platform::KeyCode{17}, platform::kNoModifiers), u"א");
}

TEST_F(InputSourcesContract, theLayoutDataOutlivesItsSource) {
  auto list = enabled();
  ASSERT_EQ(list.size(), 2U);
  const auto value = sources().property(list[1], InputSourceProperty::unicodeKeyLayoutData);
  const auto data = std::get<platform::KeyLayoutDataRef>(value);
  list.clear();
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(sources().translate(*data,
                                {platform::kKeyA, platform::KeyAction::down, platform::kNoModifiers,
                                 sources().keyboardType(), 0, 8},
                                deadKeyState),
            u"ש");
}

TEST_F(InputSourcesContract, theLatinLayoutIsInUseUntilAnotherIsSelected) {
  const auto list = enabled();
  ASSERT_EQ(list.size(), 2U);
  const auto current = [&] { return sources().copyCurrentKeyboardLayoutInputSource(); };
  ASSERT_NE(current(), nullptr);
  EXPECT_TRUE(speaks(current(), "en"));
  sources().select(list[1]);
  EXPECT_TRUE(underTest->waitUntil([&] { return current() != nullptr && speaks(current(), "he"); }));
  sources().select(list[0]);
  EXPECT_TRUE(underTest->waitUntil([&] { return current() != nullptr && speaks(current(), "en"); }));
}

TEST_F(InputSourcesContract, observersHearOfAChangeOfTheEnabledLayouts) {
  int calls = 0;
  sources().observeEnabledLayoutsChanged([&] { ++calls; });
  EXPECT_EQ(calls, 0);
  underTest->disableHebrew();
  EXPECT_TRUE(underTest->waitUntil([&] { return calls > 0; }));
  const auto list = enabled();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_TRUE(speaks(list[0], "en"));
}

}  // namespace
}  // namespace lexwend::contract
