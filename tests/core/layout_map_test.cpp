// SPDX-License-Identifier: MIT
#include "core/layout_map.h"

#include <array>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "core/characters.h"

namespace lexwend {
namespace {

// Two enabled layouts whose keys type nothing as yet.
struct EnabledLayouts : KeyTables {
  EnabledLayouts() : KeyTables{KeyTable{}, KeyTable{}} {}
  LayoutMap build() const { return LayoutMap::build(*this); }
};

constexpr int kKeyA = 0;
constexpr int kKeyS = 1;
constexpr int kKeyQ = 12;
constexpr int kKeySlash = 44;

TEST(LayoutMap, isTheFallbackWhenALayoutHasNoKeyTable) {
  EnabledLayouts withoutLatin;
  withoutLatin.latin.reset();
  EXPECT_EQ(withoutLatin.build(), LayoutMap::fallback());
  EXPECT_FALSE(withoutLatin.build().builtFromSystem);
  EnabledLayouts withoutHebrew;
  withoutHebrew.hebrew.reset();
  EXPECT_EQ(withoutHebrew.build(), LayoutMap::fallback());
  EXPECT_FALSE(withoutHebrew.build().builtFromSystem);
}

TEST(LayoutMap, takesAnEmptyKeyTableAsItIs) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}};
  const LayoutMap map = layouts.build();
  EXPECT_TRUE(map.toHebrew.empty());
  EXPECT_TRUE(map.toEnglish.empty());
  EXPECT_TRUE(map.builtFromSystem);
}

TEST(LayoutMap, pairsPlainAndShiftedCharactersOfAKey) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}, {kKeySlash, {"/", "?"}}};
  layouts.hebrew = KeyTable{{kKeyA, {"ש", "A"}}, {kKeySlash, {".", "?"}}};
  const LayoutMap map = layouts.build();
  EXPECT_EQ(map.toHebrew, (CharacterMap{{"/", "."}, {"?", "?"}, {"A", "ש"}, {"a", "ש"}}));
  EXPECT_EQ(map.toEnglish, (CharacterMap{{".", "/"}, {"?", "?"}, {"ש", "a"}}));
}

TEST(LayoutMap, lowerKeyCodeWinsAmongPlainCharacters) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyQ, {"q", "Q"}}, {kKeySlash, {"/", "?"}}};
  layouts.hebrew = KeyTable{{kKeyQ, {"/", "Q"}}, {kKeySlash, {"/", "?"}}};
  EXPECT_EQ(layouts.build().toEnglish.at("/"), "q");
}

TEST(LayoutMap, plainPairingWinsOverShiftedPairingOfALowerKeyCode) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "!"}}, {kKeySlash, {"!", "?"}}};
  layouts.hebrew = KeyTable{{kKeyA, {"ש", "+"}}, {kKeySlash, {"+", ";"}}};
  const LayoutMap map = layouts.build();
  EXPECT_EQ(map.toHebrew.at("!"), "+");
  EXPECT_EQ(map.toEnglish.at("+"), "!");
  layouts.hebrew = KeyTable{{kKeyA, {"ש", "+"}}, {kKeySlash, {"-", ";"}}};
  EXPECT_EQ(layouts.build().toHebrew.at("!"), "-");
}

TEST(LayoutMap, deadKeyOfTheLatinLayoutGivesOnlyItsShiftedCharacter) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeySlash, {"", "?"}}};
  layouts.hebrew = KeyTable{{kKeySlash, {".", "!"}}};
  const LayoutMap map = layouts.build();
  EXPECT_EQ(map.toHebrew, (CharacterMap{{"?", "!"}}));
  EXPECT_EQ(map.toEnglish, (CharacterMap{{"!", "?"}}));
}

TEST(LayoutMap, capitalLeadsToThePlainHebrewCharacterOfItsKey) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}, {kKeyS, {"s", "S"}}};
  layouts.hebrew = KeyTable{{kKeyA, {"ש", "₪"}}, {kKeyS, {"ד", "S"}}};
  const LayoutMap map = layouts.build();
  EXPECT_EQ(map.toHebrew.at("A"), "ש");
  EXPECT_EQ(map.toHebrew.at("S"), "ד");
  EXPECT_FALSE(map.toEnglish.contains("₪"));
  EXPECT_FALSE(map.toEnglish.contains("S"));
}

TEST(LayoutMap, capitalIsSkippedWhereTheHebrewLayoutTypesNoMappableCharacter) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}};
  layouts.hebrew = KeyTable{{kKeyA, {"", "ש"}}};
  const LayoutMap map = layouts.build();
  EXPECT_TRUE(map.toHebrew.empty());
  EXPECT_TRUE(map.toEnglish.empty());
}

TEST(LayoutMap, skipsKeysThatOneLayoutLacks) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}};
  layouts.hebrew = KeyTable{{kKeyS, {"ד", "S"}}};
  const LayoutMap map = layouts.build();
  EXPECT_TRUE(map.toHebrew.empty());
  EXPECT_TRUE(map.toEnglish.empty());
}

TEST(LayoutMap, skipsKeysThatAreNoCharacterKeys) {
  EnabledLayouts layouts;
  for (const int keyCode : {10, 36, 48, 49, 51}) {
    layouts.latin->emplace(keyCode, KeyChars{"a", "!"});
    layouts.hebrew->emplace(keyCode, KeyChars{"ש", "?"});
  }
  EXPECT_TRUE(layouts.build().toHebrew.empty());
}

TEST(LayoutMap, skipsStringsThatAreNotOneVisibleScalar) {
  const std::map<std::string, std::string> unmappable = {
      {"nothing", ""},
      {"two letters", "ab"},
      {"a letter with a mark", "e\u0301"},
      {"a space", " "},
      {"a no-break space", "\u00A0"},
      {"a line separator", "\u2028"},
      {"a nonspacing mark", "\u05B8"},
      {"a spacing mark", "\u0903"},
      {"an enclosing mark", "\u20DD"},
      {"a control", "\u0001"},
      {"a format character", "\u200F"},
      {"an encoded surrogate", "\xED\xA0\x80"},
      {"a private character", "\uF8FF"},
      {"an unassigned scalar", "\u0378"},
      {"a noncharacter", "\uFFFF"},
      {"an ill-formed byte", "\xFF"},
      {"a cut sequence", "\xD7"},
  };
  for (const auto& [name, text] : unmappable) {
    EnabledLayouts latin;
    latin.latin = KeyTable{{kKeyA, {text, text}}};
    latin.hebrew = KeyTable{{kKeyA, {"ש", "!"}}};
    EXPECT_TRUE(latin.build().toHebrew.empty()) << name;
    EXPECT_TRUE(latin.build().toEnglish.empty()) << name;
    EnabledLayouts hebrew;
    hebrew.latin = KeyTable{{kKeyA, {"a", "!"}}};
    hebrew.hebrew = KeyTable{{kKeyA, {text, text}}};
    EXPECT_TRUE(hebrew.build().toHebrew.empty()) << name;
    EXPECT_TRUE(hebrew.build().toEnglish.empty()) << name;
  }
}

TEST(LayoutMap, acceptsAScalarBeyondTheBasicPlane) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"\U0001F600", ""}}};
  layouts.hebrew = KeyTable{{kKeyA, {"ש", ""}}};
  EXPECT_EQ(layouts.build().toHebrew.at("\U0001F600"), "ש");
}

TEST(LayoutMap, buildsTheSameFromTheSameLayouts) {
  EnabledLayouts layouts;
  layouts.latin = KeyTable{{kKeyA, {"a", "A"}}};
  layouts.hebrew = KeyTable{{kKeyA, {"ש", "A"}}};
  EXPECT_EQ(layouts.build(), layouts.build());
  EXPECT_NE(layouts.build(), LayoutMap::fallback());
}

TEST(LayoutMap, fallbackHasTheSizesOfTheBuiltInTable) {
  const LayoutMap map = LayoutMap::fallback();
  EXPECT_EQ(map.toHebrew.size(), 68U);
  EXPECT_EQ(map.toEnglish.size(), 42U);
  EXPECT_FALSE(map.builtFromSystem);
}

TEST(LayoutMap, fallbackHasEveryRowOfTheBuiltInTable) {
  // Scalar values, so that no look-alike slips in.
  const std::array<std::pair<char32_t, char32_t>, 42> rows{{
      {0x71, 0x2F},  {0x77, 0x5F3}, {0x65, 0x5E7}, {0x72, 0x5E8}, {0x74, 0x5D0}, {0x79, 0x5D8},
      {0x75, 0x5D5}, {0x69, 0x5DF}, {0x6F, 0x5DD}, {0x70, 0x5E4}, {0x5B, 0x5D},  {0x5D, 0x5B},
      {0x61, 0x5E9}, {0x73, 0x5D3}, {0x64, 0x5D2}, {0x66, 0x5DB}, {0x67, 0x5E2}, {0x68, 0x5D9},
      {0x6A, 0x5D7}, {0x6B, 0x5DC}, {0x6C, 0x5DA}, {0x3B, 0x5E3}, {0x27, 0x2C},  {0x7A, 0x5D6},
      {0x78, 0x5E1}, {0x63, 0x5D1}, {0x76, 0x5D4}, {0x62, 0x5E0}, {0x6E, 0x5DE}, {0x6D, 0x5E6},
      {0x2C, 0x5EA}, {0x2E, 0x5E5}, {0x2F, 0x2E},  {0x60, 0x3B},  {0x28, 0x29},  {0x29, 0x28},
      {0x3C, 0x3E},  {0x3E, 0x3C},  {0x7B, 0x7D},  {0x7D, 0x7B},  {0x22, 0x5F4}, {0x26, 0x20AA},
  }};
  const auto utf8 = [](char32_t scalar) {
    std::string text;
    if (scalar < 0x80) {
      text += static_cast<char>(scalar);
    } else if (scalar < 0x800) {
      text += static_cast<char>(0xC0 | scalar >> 6);
      text += static_cast<char>(0x80 | (scalar & 0x3F));
    } else {
      text += static_cast<char>(0xE0 | scalar >> 12);
      text += static_cast<char>(0x80 | (scalar >> 6 & 0x3F));
      text += static_cast<char>(0x80 | (scalar & 0x3F));
    }
    return text;
  };
  CharacterMap toHebrew;
  CharacterMap toEnglish;
  for (const auto& [latin, hebrew] : rows) {
    toHebrew[utf8(latin)] = utf8(hebrew);
    toEnglish[utf8(hebrew)] = utf8(latin);
    if (latin >= 'a' && latin <= 'z') toHebrew[utf8(latin - 'a' + 'A')] = utf8(hebrew);
  }
  EXPECT_EQ(LayoutMap::fallback().toHebrew, toHebrew);
  EXPECT_EQ(LayoutMap::fallback().toEnglish, toEnglish);
}

TEST(LayoutMap, fallbackLeadsCapitalAndSmallLetterToTheSameHebrewLetter) {
  const LayoutMap map = LayoutMap::fallback();
  EXPECT_EQ(map.toHebrew.at("A"), "\u05E9");
  EXPECT_EQ(map.toHebrew.at("a"), "\u05E9");
}

TEST(LayoutMap, fallbackTypesTheGereshOnW) {
  const LayoutMap map = LayoutMap::fallback();
  EXPECT_EQ(map.toHebrew.at("w"), "\u05F3");
  EXPECT_EQ(map.toEnglish.at("\u05F3"), "w");
}

TEST(LayoutMap, fallbackPairsCommaAndApostropheAsTheKeysDo) {
  const LayoutMap map = LayoutMap::fallback();
  EXPECT_EQ(map.toEnglish.at(","), "'");
  EXPECT_EQ(map.toEnglish.at("\u05EA"), ",");
}

TEST(LayoutMap, fallbackPairsTheSolidusDifferentlyInEachDirection) {
  const LayoutMap map = LayoutMap::fallback();
  EXPECT_EQ(map.toHebrew.at("/"), ".");
  EXPECT_EQ(map.toEnglish.at("/"), "q");
}

TEST(LayoutMap, fallbackMirrorsParentheses) {
  EXPECT_EQ(LayoutMap::fallback().toHebrew.at("("), ")");
}

TEST(LayoutMap, fallbackHasNoWayFromHebrewToCapitalsDigitsOrTheQuestionMark) {
  for (const auto& [key, value] : LayoutMap::fallback().toEnglish) {
    EXPECT_FALSE(isUppercaseCharacter(key)) << key;
    EXPECT_FALSE(isUppercaseCharacter(value)) << value;
    EXPECT_TRUE(key.find_first_of("?0123456789") == std::string::npos) << key;
  }
}

TEST(LayoutMap, fallbackRoundTripsEveryKeyThatIsNoCapital) {
  const LayoutMap map = LayoutMap::fallback();
  std::size_t roundTrips = 0;
  for (const auto& [latin, hebrew] : map.toHebrew) {
    if (!isUppercaseCharacter(latin)) {
      EXPECT_EQ(map.toEnglish.at(hebrew), latin);
      ++roundTrips;
    }
  }
  EXPECT_EQ(roundTrips, 42U);
}

TEST(LayoutMap, keyCodesAreTheFortySevenCharacterKeysAscending) {
  std::vector<int> expected;
  for (int keyCode = 0; keyCode <= 50; ++keyCode) {
    if (keyCode != 10 && keyCode != 36 && keyCode != 48 && keyCode != 49) expected.push_back(keyCode);
  }
  EXPECT_EQ(expected.size(), 47U);
  EXPECT_EQ(LayoutMap::keyCodes(), expected);
}

TEST(LayoutMap, usCharacterIsWhatTheUsLayoutTypesOnTheKey) {
  EXPECT_EQ(LayoutMap::usCharacter(0), "a");
  EXPECT_EQ(LayoutMap::usCharacter(42), "\\");
  EXPECT_EQ(LayoutMap::usCharacter(50), "`");
  std::string typed;
  for (const int keyCode : LayoutMap::keyCodes()) {
    typed += LayoutMap::usCharacter(static_cast<std::uint32_t>(keyCode)).value_or("missing");
  }
  EXPECT_EQ(typed, "asdfhgzxcvbqweryt123465=97-80]ou[iplj'k;\\,/nm.`");
}

TEST(LayoutMap, usCharacterIsNoneForEveryOtherKey) {
  for (const std::uint32_t keyCode : {10U, 36U, 48U, 49U, 51U, 52U, 122U, 0xFFFFFFFFU}) {
    EXPECT_EQ(LayoutMap::usCharacter(keyCode), std::nullopt) << keyCode;
  }
}

}  // namespace
}  // namespace lexwend
