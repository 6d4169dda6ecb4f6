// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

namespace dbl = doubles::input_sources;
using ::testing::ElementsAre;
using ::testing::EndsWith;

const InputSourceFilter kEnabledLayouts = {.type = InputSourceType::keyboardLayout, .isEnabled = true};

struct MacInputSources : OnMac {
  InputSourceService& service = host->inputSourceService();

  /// The only source of a list of one, whose properties are those given.
  InputSourceRef only(const dbl::Source& source) {
    dbl::clear();
    dbl::install(source);
    return service.createInputSourceList(kEnabledLayouts, false).value().at(0);
  }
  std::vector<std::string> listedIds(const InputSourceFilter& filter, bool includeAllInstalled) {
    std::vector<std::string> ids;
    const auto sources = service.createInputSourceList(filter, includeAllInstalled).value();
    for (const InputSourceRef& source : sources) {
      ids.push_back(std::get<std::string>(service.property(source, InputSourceProperty::id)));
    }
    return ids;
  }
  std::shared_ptr<const KeyLayoutData> dataOf(const dbl::KeyOutputs& outputs) {
    const InputSourceRef source =
        only({.id = std::string("id"), .languages = {}, .unicodeKeyLayoutData = dbl::layoutData(outputs)});
    return std::get<KeyLayoutDataRef>(service.property(source, InputSourceProperty::unicodeKeyLayoutData));
  }
  static KeyTranslation keyDown(std::uint16_t keyCode, Modifiers modifiers, std::size_t room = 8) {
    return {.keyCode = KeyCode{keyCode},
            .action = KeyAction::down,
            .modifiers = modifiers,
            .keyboardType = 91,
            .options = 0,
            .maxLength = room};
  }
};

TEST_F(MacInputSources, listsTheEnabledKeyboardLayoutsInTheSystemsOrder) {
  dbl::clear();
  dbl::install({.id = std::string("com.apple.keylayout.US"), .languages = {}, .unicodeKeyLayoutData = {}});
  dbl::install({.id = std::string("com.apple.keylayout.French"),
                .languages = {},
                .unicodeKeyLayoutData = {},
                .isEnabled = false});
  dbl::install({.id = std::string("com.apple.CharacterPaletteIM"),
                .languages = {},
                .unicodeKeyLayoutData = {},
                .type = "TISTypeCharacterPalette"});
  dbl::install(
      {.id = std::string("com.apple.keylayout.Hebrew"), .languages = {}, .unicodeKeyLayoutData = {}});

  EXPECT_THAT(listedIds(kEnabledLayouts, false),
              ElementsAre("com.apple.keylayout.US", "com.apple.keylayout.Hebrew"));
  EXPECT_THAT(listedIds({.type = InputSourceType::keyboardLayout, .isEnabled = false}, true),
              ElementsAre("com.apple.keylayout.French"));
  EXPECT_THAT(
      listedIds({.type = {}, .isEnabled = true}, false),
      ElementsAre("com.apple.keylayout.US", "com.apple.CharacterPaletteIM", "com.apple.keylayout.Hebrew"));
}

TEST_F(MacInputSources, filtersByExactlyTheEntriesThatAreSet) {
  const auto filterOf = [this](const InputSourceFilter& filter, bool all) {
    doubles::forgetCalls();
    service.createInputSourceList(filter, all);
    return doubles::callsNamed("TISCreateInputSourceList").at(0).arguments;
  };
  const std::string both = filterOf(kEnabledLayouts, false);
  EXPECT_NE(both.find("TISPropertyInputSourceType"), std::string::npos) << both;
  EXPECT_NE(both.find("TISTypeKeyboardLayout"), std::string::npos) << both;
  EXPECT_NE(both.find("TISPropertyInputSourceIsEnabled"), std::string::npos) << both;
  const std::string onlyType = filterOf({.type = InputSourceType::keyboardLayout, .isEnabled = {}}, false);
  EXPECT_EQ(onlyType.find("TISPropertyInputSourceIsEnabled"), std::string::npos) << onlyType;
  EXPECT_NE(onlyType, both);
  EXPECT_NE(filterOf(kEnabledLayouts, true), both);
}

TEST_F(MacInputSources, tellsAnAbsentListFromAnEmptyOne) {
  dbl::clear();
  EXPECT_EQ(service.createInputSourceList(kEnabledLayouts, false).value().size(), 0u);
  dbl::listIsAbsent();
  EXPECT_FALSE(service.createInputSourceList(kEnabledLayouts, false).has_value());
}

TEST_F(MacInputSources, takesWhatIsNoListForAnAbsentOne) {
  dbl::listIsMistyped();
  EXPECT_FALSE(service.createInputSourceList(kEnabledLayouts, false).has_value());
}

TEST_F(MacInputSources, readsTheThreeProperties) {
  const InputSourceRef source = only({.id = std::string("com.apple.keylayout.Hebrew"),
                                      .languages = std::vector<std::string>{"he", "yi"},
                                      .unicodeKeyLayoutData = doubles::bytesOf("data")});
  EXPECT_EQ(service.property(source, InputSourceProperty::id),
            InputSourceValue("com.apple.keylayout.Hebrew"));
  EXPECT_EQ(service.property(source, InputSourceProperty::languages),
            InputSourceValue(std::vector<std::string>{"he", "yi"}));
  const InputSourceValue data = service.property(source, InputSourceProperty::unicodeKeyLayoutData);
  EXPECT_FALSE(std::get<KeyLayoutDataRef>(data)->empty());
}

TEST_F(MacInputSources, readsTextBeyondTheBasicPlane) {
  const InputSourceRef source =
      only({.id = std::u16string(u"א\xD83D\xDE00"), .languages = {}, .unicodeKeyLayoutData = {}});
  EXPECT_EQ(service.property(source, InputSourceProperty::id), InputSourceValue("א😀"));
}

TEST_F(MacInputSources, readsEveryPairOfSurrogatesAndReplacesEveryHalf) {
  const std::pair<std::u16string, const char*> cases[] = {
      {u"\xD83D\xDE00", "😀"},
      {u"\xD83D\xDE00\xD83D\xDE00", "😀😀"},
      {u"\xD800\xDC00", "\U00010000"},
      {u"\xDBFF\xDFFF", "\U0010FFFF"},
      {u"\xD83D", "\uFFFD"},
      {u"z\xD83D", "z\uFFFD"},
      {u"\xDE00\xD83D", "\uFFFD\uFFFD"},
      {u"\xDC00\xDC00", "\uFFFD\uFFFD"},
      {u"\xD83Dz", "\uFFFDz"},
      {u"\xD83D\xDBFF", "\uFFFD\uFFFD"},
      {u"\xD83D\xE000", "\uFFFD\uE000"},
      {u"\xD7FF\xE000", "\uD7FF\uE000"},
      {u"\x7F\x80\x7FF\x800\xFFFF", "\x7F\u0080\u07FF\u0800\uFFFF"}};
  for (const auto& [units, text] : cases) {
    const InputSourceRef source = only({.id = units, .languages = {}, .unicodeKeyLayoutData = {}});
    EXPECT_EQ(service.property(source, InputSourceProperty::id), InputSourceValue(std::string(text)));
  }
}

TEST_F(MacInputSources, reportsEachAbsentPropertyAsNoValue) {
  const InputSourceRef source = only({.id = {}, .languages = {}, .unicodeKeyLayoutData = {}});
  for (const auto key :
       {InputSourceProperty::id, InputSourceProperty::languages, InputSourceProperty::unicodeKeyLayoutData}) {
    EXPECT_TRUE(std::holds_alternative<std::monostate>(service.property(source, key)));
  }
}

TEST_F(MacInputSources, reportsEachMistypedPropertyAsMistyped) {
  const std::vector<doubles::Value> notText = {
      true, std::int64_t{1}, 1.5, std::vector<std::string>{"id"}, doubles::Bytes{}, doubles::NullObject{}};
  const std::vector<doubles::Value> notTexts = {true,
                                                std::int64_t{1},
                                                std::string("he"),
                                                doubles::Bytes{},
                                                doubles::NullObject{},
                                                doubles::MixedList{}};
  const std::vector<doubles::Value> notBytes = {true, std::int64_t{1}, std::string("data"),
                                                std::vector<std::string>{}, doubles::NullObject{}};
  const InputSourceValue mistyped = MistypedProperty{};
  for (const doubles::Value& value : notText) {
    EXPECT_EQ(service.property(only({.id = value, .languages = {}, .unicodeKeyLayoutData = {}}),
                               InputSourceProperty::id),
              mistyped)
        << value.index();
  }
  for (const doubles::Value& value : notTexts) {
    EXPECT_EQ(service.property(only({.id = {}, .languages = value, .unicodeKeyLayoutData = {}}),
                               InputSourceProperty::languages),
              mistyped)
        << value.index();
  }
  for (const doubles::Value& value : notBytes) {
    EXPECT_EQ(service.property(only({.id = {}, .languages = {}, .unicodeKeyLayoutData = value}),
                               InputSourceProperty::unicodeKeyLayoutData),
              mistyped)
        << value.index();
  }
}

TEST_F(MacInputSources, tellsEmptyLayoutDataFromData) {
  const InputSourceRef source = only({.id = {}, .languages = {}, .unicodeKeyLayoutData = doubles::Bytes{}});
  const InputSourceValue data = service.property(source, InputSourceProperty::unicodeKeyLayoutData);
  EXPECT_TRUE(std::get<KeyLayoutDataRef>(data)->empty());
  const InputSourceRef other =
      only({.id = {}, .languages = {}, .unicodeKeyLayoutData = doubles::bytesOf("x")});
  const InputSourceValue one = service.property(other, InputSourceProperty::unicodeKeyLayoutData);
  EXPECT_FALSE(std::get<KeyLayoutDataRef>(one)->empty());
}

TEST_F(MacInputSources, keepsSourceAndDataWhenTheSystemForgetsThem) {
  const auto data = dataOf({{{0, 0}, {.text = u"a"}}});
  const InputSourceRef source =
      only({.id = std::string("kept"), .languages = {}, .unicodeKeyLayoutData = {}});
  dbl::clear();
  EXPECT_EQ(service.property(source, InputSourceProperty::id), InputSourceValue("kept"));
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, keyDown(0, kNoModifiers), deadKeyState), u"a");
}

TEST_F(MacInputSources, translatesPlainAndShifted) {
  const auto data = dataOf({{{0, 0}, {.text = u"a"}}, {{0, 2}, {.text = u"A"}}});
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, keyDown(0, kNoModifiers), deadKeyState), u"a");
  EXPECT_EQ(service.translate(*data, keyDown(0, kShiftKey), deadKeyState), u"A");
  EXPECT_EQ(service.translate(*data, keyDown(1, kNoModifiers), deadKeyState), u"");
  EXPECT_EQ(doubles::callsNamed("UCKeyTranslate").at(1).arguments,
            "0, action=0, modifiers=2, keyboard=91, options=0, dead=0, room=8");
}

TEST_F(MacInputSources, givesNothingForADeadKeyAndHandsItsStateBack) {
  const auto data = dataOf({{{10, 0}, {.text = u"´", .isDead = true}}});
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, keyDown(10, kNoModifiers), deadKeyState), u"");
  EXPECT_NE(deadKeyState, 0u);
}

TEST_F(MacInputSources, givesAllEightUnitsAndNotOneMoreThanThereIsRoomFor) {
  const auto data = dataOf({{{5, 0}, {.text = u"abcdefgh"}}, {{6, 0}, {.text = u"abcdefghi"}}});
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, keyDown(5, kNoModifiers), deadKeyState), u"abcdefgh");
  EXPECT_EQ(service.translate(*data, keyDown(5, kNoModifiers, 7), deadKeyState), std::nullopt);
  EXPECT_EQ(service.translate(*data, keyDown(6, kNoModifiers), deadKeyState), std::nullopt);
}

TEST_F(MacInputSources, reportsAFailedTranslationAsNothing) {
  const auto data = dataOf({{{0, 0}, {.text = u"a", .error = -50}}});
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, keyDown(0, kNoModifiers), deadKeyState), std::nullopt);
}

TEST_F(MacInputSources, givesNothingForAKeyCodeThatTheSystemDoesNotHave) {
  const auto data = dataOf({{{0, 0}, {.text = u"a"}}});
  KeyTranslation beyond = keyDown(0, kNoModifiers);
  beyond.keyCode = KeyCode{0x10000};
  std::uint32_t deadKeyState = 0;
  EXPECT_EQ(service.translate(*data, beyond, deadKeyState), std::nullopt);
}

TEST_F(MacInputSources, asksForTheKeyboardTypeEachTime) {
  dbl::setKeyboardType(91);
  EXPECT_EQ(service.keyboardType(), 91u);
  dbl::setKeyboardType(40);
  EXPECT_EQ(service.keyboardType(), 40u);
}

TEST_F(MacInputSources, reportsTheCurrentLayoutAndSelectsAnother) {
  dbl::clear();
  dbl::install({.id = std::string("us"), .languages = {}, .unicodeKeyLayoutData = {}});
  dbl::install({.id = std::string("hebrew"), .languages = {}, .unicodeKeyLayoutData = {}});
  dbl::setCurrentLayout(std::nullopt);
  EXPECT_EQ(service.copyCurrentKeyboardLayoutInputSource(), nullptr);

  dbl::setCurrentLayout(1);
  const InputSourceRef current = service.copyCurrentKeyboardLayoutInputSource();
  EXPECT_EQ(service.property(current, InputSourceProperty::id), InputSourceValue("hebrew"));

  service.select(service.createInputSourceList(kEnabledLayouts, false).value().at(0));
  EXPECT_EQ(dbl::currentLayout(), 0u);
}

TEST_F(MacInputSources, tellsOnTheMainQueueThatTheEnabledLayoutsChanged) {
  int changes = 0;
  const auto observer = service.observeEnabledLayoutsChanged([&] { ++changes; });
  EXPECT_THAT(argumentsOf("-[NSNotificationCenter addObserverForName:object:queue:usingBlock:]"),
              EndsWith(", object=nil, queue=main"));
  EXPECT_EQ(changes, 0);
  dbl::postEnabledSourcesChanged();
  doubles::time::advance({});
  EXPECT_GE(changes, 1);
  const int afterOne = changes;
  dbl::postEnabledSourcesChanged();
  doubles::time::advance({});
  EXPECT_EQ(changes, 2 * afterOne);
  doubles::workspace::postDidWake();
  doubles::time::advance({});
  EXPECT_EQ(changes, 2 * afterOne);
}

TEST_F(MacInputSources, goesOnWhenAHandlerThrows) {
  int calls = 0;
  const auto observer = service.observeEnabledLayoutsChanged([&] {
    ++calls;
    throw std::string("from the handler");
  });
  for (const int told : {1, 2}) {
    dbl::postEnabledSourcesChanged();
    doubles::time::advance({});
    EXPECT_EQ(calls, 2 * told) << "the application is active, and both observers hear it";
  }
}

}  // namespace
}  // namespace lexwend::platform::mac
