// SPDX-License-Identifier: MIT
// The code under test against the plain reference, over texts made at random from fixed seeds.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/characters.h"
#include "core/converter.h"
#include "tests/core/characters_of.h"
#include "tests/core/random_text.h"
#include "tests/core/reference_converter.h"

namespace lexwend {
namespace {

constexpr std::uint64_t kDifferentialSeed = 20'240'229;
constexpr std::size_t kLongestText =
    24;  // pieces: long enough for several words, short enough to read in a failure

bool isWhiteSpaceAlone(std::string_view text) {
  CharacterReader reader(text);
  while (!reader.atEnd()) {
    if (!isSpaceCharacter(reader.next())) return false;
  }
  return true;
}

// The white space of a text: every run of it, in order.
std::vector<std::string> spacesOf(std::string_view text) {
  std::vector<std::string> runs;
  bool inRun = false;
  for (CharacterReader reader(text); !reader.atEnd();) {
    const std::string_view character = reader.next();
    const bool isSpace = isSpaceCharacter(character);
    if (isSpace && !inRun) runs.emplace_back();
    if (isSpace) runs.back() += character;
    inRun = isSpace;
  }
  return runs;
}

TEST(Differential, charactersAreThoseOfTheBreakIterator) {
  constexpr int kTexts = 100'000;
  RandomText random(kDifferentialSeed);
  for (int round = 0; round < kTexts; ++round) {
    const std::string text = random.text(kLongestText);
    ASSERT_EQ(charactersOf(text), reference::characters(text))
        << "seed " << kDifferentialSeed << ", text " << round << ": " << hexOf(text);
  }
}

TEST(Differential, conversionWithTheBuiltInTableIsThatOfTheReference) {
  constexpr int kTexts = 150'000;
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  RandomText random(kDifferentialSeed + 1);
  for (int round = 0; round < kTexts; ++round) {
    const std::string text = random.text(kLongestText);
    const bool currentLayoutIsHebrew = random.below(2) == 0;
    const Converter::Result result = converter.convert(text, currentLayoutIsHebrew);
    ASSERT_EQ(result, reference::convert(map, text, currentLayoutIsHebrew))
        << "seed " << kDifferentialSeed + 1 << ", text " << round << ", layout is Hebrew "
        << currentLayoutIsHebrew << ": " << hexOf(text) << "became " << hexOf(result.text);
  }
}

TEST(Differential, conversionWithAnyMapIsThatOfTheReference) {
  constexpr int kMaps = 2'500;
  constexpr int kTextsOfAMap = 40;
  RandomText random(kDifferentialSeed + 2);
  int keptEquivalent = 0;
  for (int round = 0; round < kMaps; ++round) {
    const LayoutMap map = random.map();
    const Converter converter(map);
    for (int turn = 0; turn < kTextsOfAMap; ++turn) {
      const std::string text = random.text(kLongestText);
      const bool currentLayoutIsHebrew = random.below(2) == 0;
      const Converter::Result result = converter.convert(text, currentLayoutIsHebrew);
      ASSERT_EQ(result, reference::convert(map, text, currentLayoutIsHebrew))
          << "seed " << kDifferentialSeed + 2 << ", map " << round << ", text " << turn
          << ", layout is Hebrew " << currentLayoutIsHebrew << ": " << hexOf(text) << "became "
          << hexOf(result.text);
      keptEquivalent += result.text != text && !result.changed ? 1 : 0;
    }
  }
  EXPECT_GT(keptEquivalent, 0) << "no text came out in other bytes that mean the same";
}

TEST(Differential, equivalenceIsThatOfTheNormaliser) {
  constexpr int kPairs = 60'000;
  RandomText random(kDifferentialSeed + 3);
  int equivalent = 0;
  for (int round = 0; round < kPairs; ++round) {
    // Two texts over the same few pieces in another order are often, but not always, equivalent.
    std::vector<std::string> pieces;
    for (std::size_t count = random.below(6) + 1; count > 0; --count) {
      pieces.push_back(random.below(2) == 0 ? random.mark() : random.text(2));
    }
    std::string left = random.text(3);
    std::string right = left;
    for (const std::string& piece : pieces) left += piece;
    if (pieces.size() > 1) {
      const std::size_t place = random.below(pieces.size() - 1);
      std::swap(pieces[place], pieces[place + 1]);
    }
    for (const std::string& piece : pieces) right += piece;
    const std::string after = random.text(3);
    left += after;
    right += after;
    const bool expected = reference::canonicallyEquivalent(left, right);
    ASSERT_EQ(canonicallyEquivalent(left, right), expected)
        << "seed " << kDifferentialSeed + 3 << ", pair " << round << ": " << hexOf(left) << "and "
        << hexOf(right);
    equivalent += expected && left != right ? 1 : 0;
  }
  EXPECT_GT(equivalent, 100);
}

TEST(Properties, whiteSpaceNeverChanges) {
  constexpr int kTexts = 20'000;
  const Converter converter(LayoutMap::fallback());
  RandomText random(kDifferentialSeed + 4);
  for (int round = 0; round < kTexts; ++round) {
    const std::string text = random.text(kLongestText);
    const bool currentLayoutIsHebrew = random.below(2) == 0;
    ASSERT_EQ(spacesOf(converter.convert(text, currentLayoutIsHebrew).text), spacesOf(text))
        << "seed " << kDifferentialSeed + 4 << ", text " << round << ": " << hexOf(text);
  }
}

TEST(Properties, targetFollowsTheLettersOfTheText) {
  constexpr int kTexts = 20'000;
  const Converter converter(LayoutMap::fallback());
  RandomText random(kDifferentialSeed + 5);
  int uniform = 0;
  int mixed = 0;
  for (int round = 0; round < kTexts; ++round) {
    const std::string text = random.text(6);
    bool hasHebrew = false;
    bool hasLatin = false;
    for (const std::string& character : charactersOf(text)) {
      hasHebrew = hasHebrew || isHebrewLetter(character);
      hasLatin = hasLatin || isLatinLetter(character);
    }
    for (const bool currentLayoutIsHebrew : {false, true}) {
      const bool expected = hasHebrew != hasLatin ? hasLatin : !currentLayoutIsHebrew;
      ASSERT_EQ(converter.convert(text, currentLayoutIsHebrew).targetIsHebrew, expected)
          << "seed " << kDifferentialSeed + 5 << ", text " << round << ": " << hexOf(text);
    }
    uniform += hasHebrew != hasLatin ? 1 : 0;
    mixed += hasHebrew && hasLatin ? 1 : 0;
  }
  EXPECT_GT(uniform, 1000);
  EXPECT_GT(mixed, 1000);
}

// A character of the built-in table that leads to the other side and from there back to itself.
std::vector<std::string> reversible(const CharacterMap& there, const CharacterMap& back) {
  std::vector<std::string> characters;
  for (const auto& [key, value] : there) {
    const auto entry = back.find(value);
    if (entry != back.end() && entry->second == key) characters.push_back(key);
  }
  return characters;
}

TEST(Properties, convertingTwiceReturnsATextOfReversibleCharacters) {
  constexpr int kTexts = 20'000;
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  RandomText random(kDifferentialSeed + 6);
  for (int round = 0; round < kTexts; ++round) {
    const bool fromHebrew = random.below(2) == 0;
    const std::vector<std::string> characters =
        fromHebrew ? reversible(map.toEnglish, map.toHebrew) : reversible(map.toHebrew, map.toEnglish);
    ASSERT_EQ(characters.size(), 42U);
    // A letter on both sides (a and shin) gives either conversion its direction.
    std::string text = fromHebrew ? "ש" : "a";
    for (std::size_t length = random.below(20); length > 0; --length) {
      text += random.below(6) == 0 ? " " : characters[random.below(characters.size())];
    }
    const Converter::Result once = converter.convert(text, fromHebrew);
    ASSERT_EQ(once.targetIsHebrew, !fromHebrew) << text;
    const Converter::Result twice = converter.convert(once.text, !fromHebrew);
    ASSERT_EQ(twice.text, text) << "seed " << kDifferentialSeed + 6 << ", text " << round;
  }
}

TEST(Properties, whiteSpaceAloneIsNeverConverted) {
  constexpr int kTexts = 20'000;
  RandomText random(kDifferentialSeed + 7);
  int blank = 0;
  const Converter converter(LayoutMap::fallback());
  for (int round = 0; round < kTexts; ++round) {
    const std::string text = random.text(3);
    if (isWhiteSpaceAlone(text)) {
      ASSERT_EQ(converter.convert(text, true), (Converter::Result{text, false, false})) << hexOf(text);
      ++blank;
    }
  }
  EXPECT_GT(blank, 100);
}

}  // namespace
}  // namespace lexwend
