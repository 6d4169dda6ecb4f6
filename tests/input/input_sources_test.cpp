// SPDX-License-Identifier: MIT
#include "input/input_sources.h"

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

using platform::FakeLayout;
using platform::FakeOperation;
using platform::InputSourceProperty;
using platform::MistypedProperty;

FakeLayout layout(std::string id, std::vector<std::string> languages) {
  FakeLayout made;
  made.id = std::move(id);
  made.languages = std::move(languages);
  return made;
}

struct InputSourcesTest : testing::Test {
  platform::FakeHost host;
  platform::HostScope scope{host};
  platform::FakeInputSources& system = host.inputSourceService();

  std::string idFor(std::string_view language) {
    const auto found = InputSources::keyboardLayout(language);
    return found ? found->id : "none";
  }
  KeyTable tableOf(FakeLayout only) {
    system.setLayouts({std::move(only)});
    const auto table = InputSources::keyTable(InputSources::enabledKeyboardLayouts().at(0));
    return table ? *table : KeyTable{{-1, {}}};
  }
};

TEST_F(InputSourcesTest, listsEnabledKeyboardLayoutsInTheSystemsOrder) {
  FakeLayout disabled = platform::russianLayout();
  disabled.enabled = false;
  FakeLayout palette = layout("com.example.palette", {"en"});
  palette.isKeyboardLayout = false;
  system.setLayouts({platform::hebrewLayout(), disabled, palette, platform::usLayout()});
  const auto layouts = InputSources::enabledKeyboardLayouts();
  ASSERT_EQ(layouts.size(), 2u);
  EXPECT_EQ(layouts[0].id, "com.apple.keylayout.Hebrew");
  EXPECT_EQ(layouts[0].languages, (std::vector<std::string>{"he"}));
  EXPECT_EQ(layouts[1].id, "com.apple.keylayout.US");
  EXPECT_NE(layouts[1].source, nullptr);
}

TEST_F(InputSourcesTest, asksForEnabledLayoutsOnlyAndForNothingElse) {
  system.setLayouts({platform::usLayout()});
  (void)InputSources::enabledKeyboardLayouts();
  EXPECT_EQ(host.calls().of("inputSources.createInputSourceList"),
            (std::vector<std::string>{
                "inputSources.createInputSourceList type=keyboardLayout isEnabled=true all=false"}));
}

TEST_F(InputSourcesTest, noListFromTheSystemIsAnEmptyList) {
  host.failNext(FakeOperation::createInputSourceList);
  EXPECT_TRUE(InputSources::enabledKeyboardLayouts().empty());
}

TEST_F(InputSourcesTest, englishIsTheFirstOfAbcAndUs) {
  system.setLayouts({platform::usLayout(), platform::abcLayout(), platform::hebrewLayout()});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.US");
  system.setLayouts({platform::abcLayout(), platform::usLayout(), platform::hebrewLayout()});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.ABC");
}

TEST_F(InputSourcesTest, abcOrUsComesBeforeAnEarlierEnglishLayout) {
  system.setLayouts({platform::britishLayout(), platform::hebrewLayout(), platform::usLayout()});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.US");
}

TEST_F(InputSourcesTest, usLayoutServesEnglishWhateverItsLanguages) {
  system.setLayouts({platform::britishLayout(), layout("com.apple.keylayout.US", {})});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.US");
}

TEST_F(InputSourcesTest, identifiersAreComparedToTheLetter) {
  system.setLayouts({layout("com.apple.keylayout.us", {"de"}),
                     layout("com.apple.keylayout.USExtended", {"de"}), platform::britishLayout()});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.British");
}

TEST_F(InputSourcesTest, britishLayoutServesEnglishWithoutAbcAndUs) {
  system.setLayouts({platform::hebrewLayout(), platform::britishLayout()});
  EXPECT_EQ(idFor("en"), "com.apple.keylayout.British");
}

TEST_F(InputSourcesTest, layoutThatListsTheLanguageLaterServesIt) {
  system.setLayouts({layout("yiddish", {"yi", "he"})});
  EXPECT_EQ(idFor("he"), "yiddish");
}

TEST_F(InputSourcesTest, firstLanguageAnywhereInTheListComesBeforeALaterMention) {
  system.setLayouts({layout("yiddish", {"yi", "he"}), platform::hebrewLayout()});
  EXPECT_EQ(idFor("he"), "com.apple.keylayout.Hebrew");
}

TEST_F(InputSourcesTest, noEnabledLayoutServesNoLanguage) {
  system.setLayouts({});
  for (const char* language : {"en", "he", "", "EN"}) EXPECT_EQ(idFor(language), "none") << language;
}

TEST_F(InputSourcesTest, languageCodesAreComparedToTheLetter) {
  system.setLayouts({platform::usLayout(), platform::hebrewLayout()});
  EXPECT_EQ(idFor("EN"), "none");
  EXPECT_EQ(idFor("He"), "none");
  EXPECT_EQ(idFor("heb"), "none");
  EXPECT_EQ(idFor(""), "none");
}

TEST_F(InputSourcesTest, layoutWithoutKeyDataHasNoTable) {
  for (const auto data : {FakeLayout::Data::absent, FakeLayout::Data::mistyped}) {
    FakeLayout without = platform::usLayout();
    without.data = data;
    system.setLayouts({without});
    EXPECT_EQ(InputSources::keyTable(InputSources::enabledKeyboardLayouts().at(0)), std::nullopt);
  }
}

TEST_F(InputSourcesTest, emptyKeyDataGivesAnEmptyTable) {
  FakeLayout empty = platform::usLayout();
  empty.data = FakeLayout::Data::empty;
  EXPECT_EQ(tableOf(empty), KeyTable{});
}

TEST_F(InputSourcesTest, tableHoldsAllFiftyOneCodesEvenThoseThatTypeNothing) {
  FakeLayout bare = layout("bare", {});
  bare.keys[0] = {"a", "A"};
  bare.keys[51] = {"never", "read"};
  const KeyTable table = tableOf(bare);
  ASSERT_EQ(table.size(), 51u);
  EXPECT_EQ(table.begin()->first, 0);
  EXPECT_EQ(table.rbegin()->first, 50);
  EXPECT_EQ(table.at(0), (KeyChars{"a", "A"}));
  EXPECT_EQ(table.at(10), (KeyChars{"", ""}));
}

TEST_F(InputSourcesTest, deadKeyIsEmptyInTheStateInWhichItIsDead) {
  FakeLayout dead = platform::usLayout();
  dead.deadKeys = {{50, false}};
  const KeyTable table = tableOf(dead);
  EXPECT_EQ(table.at(50).plain, "");
  EXPECT_EQ(table.at(50).shifted, "~");
}

TEST_F(InputSourcesTest, failedTranslationIsEmptyForThatKeyAndState) {
  FakeLayout broken = platform::usLayout();
  broken.brokenKeys = {{0, true}};
  const KeyTable table = tableOf(broken);
  EXPECT_EQ(table.at(0), (KeyChars{"a", ""}));
  EXPECT_EQ(table.at(1), (KeyChars{"s", "S"}));
}

TEST_F(InputSourcesTest, keyMayTypeSeveralCharactersAndAstralOnes) {
  FakeLayout several = layout("several", {});
  several.keys[0] = {"abcdefgh", "😀"};
  EXPECT_EQ(tableOf(several).at(0), (KeyChars{"abcdefgh", "😀"}));
}

TEST_F(InputSourcesTest, loneSurrogateIsNoTextAndPairsWithNothing) {
  FakeLayout broken = platform::usLayout();
  broken.keys[0] = {"\xED\xA0\x80", "A"};              // U+D800
  broken.keys[1] = {"s\xED\xB0\x80", "\xED\xB0\x80"};  // U+DC00
  const KeyTable table = tableOf(broken);
  EXPECT_EQ(table.at(0), (KeyChars{"", "A"}));
  EXPECT_EQ(table.at(1), (KeyChars{"", ""}));
  system.setLayouts({broken, platform::hebrewLayout()});
  const LayoutMap map = LayoutMap::build(InputSources::keyTables());
  EXPECT_TRUE(map.builtFromSystem);
  EXPECT_FALSE(map.toHebrew.contains("\uFFFD"));
  EXPECT_FALSE(map.toEnglish.contains("ש"));
}

TEST_F(InputSourcesTest, eachKeyIsTranslatedPlainThenShiftedInAscendingOrder) {
  system.setKeyboardType(41);
  (void)tableOf(platform::usLayout());
  const auto& asked = system.translations();
  ASSERT_EQ(asked.size(), 102u);
  for (std::size_t i = 0; i < asked.size(); ++i) {
    EXPECT_EQ(number(asked[i].keyCode), i / 2);
    EXPECT_EQ(asked[i].modifiers, i % 2 == 0 ? platform::kNoModifiers : platform::kShiftKey);
    EXPECT_EQ(asked[i].action, platform::KeyAction::down);
    EXPECT_EQ(asked[i].keyboardType, 41u);
    EXPECT_EQ(asked[i].options, 0u);
    EXPECT_EQ(asked[i].maxLength, 8u);
  }
}

TEST_F(InputSourcesTest, missingOrMistypedPropertiesGiveEmptyFields) {
  FakeLayout absent = platform::usLayout();
  absent.id = std::monostate{};
  absent.languages = std::monostate{};
  FakeLayout mistyped = platform::usLayout();
  mistyped.id = MistypedProperty{};
  mistyped.languages = MistypedProperty{};
  system.setLayouts({absent, mistyped});
  const auto layouts = InputSources::enabledKeyboardLayouts();
  ASSERT_EQ(layouts.size(), 2u);
  for (const KeyboardLayout& one : layouts) {
    EXPECT_EQ(one.id, "");
    EXPECT_TRUE(one.languages.empty());
    EXPECT_TRUE(InputSources::arrayProp(one.source, InputSourceProperty::languages).empty());
  }
}

TEST_F(InputSourcesTest, textIsNoListOfTexts) {
  system.setLayouts({platform::usLayout()});
  const auto source = InputSources::enabledKeyboardLayouts().at(0).source;
  EXPECT_TRUE(InputSources::arrayProp(source, InputSourceProperty::id).empty());
}

TEST_F(InputSourcesTest, currentLayoutIsHebrewWhenItListsHebrewAnywhere) {
  system.setLayouts({platform::usLayout(), platform::hebrewLayout(), layout("yiddish", {"yi", "he"})});
  EXPECT_FALSE(InputSources::currentLayoutIsHebrew());
  ASSERT_TRUE(system.use("com.apple.keylayout.Hebrew"));
  EXPECT_TRUE(InputSources::currentLayoutIsHebrew());
  ASSERT_TRUE(system.use("yiddish"));
  EXPECT_TRUE(InputSources::currentLayoutIsHebrew());
}

TEST_F(InputSourcesTest, noCurrentLayoutIsNotHebrew) {
  system.setLayouts({platform::hebrewLayout()});
  system.useNone();
  EXPECT_FALSE(InputSources::currentLayoutIsHebrew());
  ASSERT_TRUE(system.use("com.apple.keylayout.Hebrew"));
  host.failNext(FakeOperation::copyCurrentLayout);
  EXPECT_FALSE(InputSources::currentLayoutIsHebrew());
}

TEST_F(InputSourcesTest, mapIsBuiltFromTheEnabledLayouts) {
  system.setLayouts({platform::usLayout(), platform::hebrewLayout()});
  const LayoutMap map = LayoutMap::build(InputSources::keyTables());
  EXPECT_TRUE(map.builtFromSystem);
  EXPECT_EQ(map.toHebrew.at("a"), "ש");
  system.setLayouts({platform::usLayout()});
  EXPECT_EQ(LayoutMap::build(InputSources::keyTables()), LayoutMap::fallback());
}

TEST_F(InputSourcesTest, noKeyIsReadWithoutBothLayouts) {
  system.setLayouts({platform::usLayout()});
  const KeyTables withoutHebrew = InputSources::keyTables();
  EXPECT_FALSE(withoutHebrew.latin || withoutHebrew.hebrew);
  system.setLayouts({platform::hebrewLayout()});
  const KeyTables withoutEnglish = InputSources::keyTables();
  EXPECT_FALSE(withoutEnglish.latin || withoutEnglish.hebrew);
  EXPECT_TRUE(system.translations().empty());
}

TEST_F(InputSourcesTest, hebrewKeysAreNotReadWhereTheEnglishLayoutHasNoData) {
  FakeLayout bare = platform::usLayout();
  bare.data = FakeLayout::Data::absent;
  system.setLayouts({bare, platform::hebrewLayout()});
  const KeyTables tables = InputSources::keyTables();
  EXPECT_FALSE(tables.latin || tables.hebrew);
  EXPECT_TRUE(system.translations().empty());
}

TEST_F(InputSourcesTest, layoutsMayOutliveTheirEnabling) {
  system.setLayouts({platform::hebrewLayout()});
  const KeyboardLayout kept = InputSources::enabledKeyboardLayouts().at(0);
  system.setLayouts({});
  ASSERT_TRUE(InputSources::keyTable(kept).has_value());
  EXPECT_EQ(InputSources::keyTable(kept)->at(0).plain, "ש");
}

using InputSourcesDeathTest = InputSourcesTest;

TEST_F(InputSourcesDeathTest, keyCodeOutsideOfSixteenBitsStopsTheProcess) {
  system.setLayouts({platform::usLayout()});
  const auto source = InputSources::enabledKeyboardLayouts().at(0).source;
  const auto value = system.property(source, InputSourceProperty::unicodeKeyLayoutData);
  const auto& data = *std::get<platform::KeyLayoutDataRef>(value);
  EXPECT_DEATH(InputSources::translate(data, -1, platform::kNoModifiers), "fatal: a key code does not fit");
  EXPECT_DEATH(InputSources::translate(data, 65536, platform::kNoModifiers),
               "fatal: a key code does not fit");
  EXPECT_EQ(InputSources::translate(data, 65535, platform::kNoModifiers), "");
}

}  // namespace
}  // namespace lexwend
