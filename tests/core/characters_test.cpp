// SPDX-License-Identifier: MIT
#include "core/characters.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/core/characters_of.h"

namespace lexwend {
namespace {

using Characters = std::vector<std::string>;

TEST(CharacterReader, givesNothingForAnEmptyText) {
  EXPECT_TRUE(CharacterReader("").atEnd());
}

TEST(CharacterReader, givesAsciiAndHebrewLettersOneByOne) {
  EXPECT_EQ(charactersOf("abשל c"), (Characters{"a", "b", "ש", "ל", " ", "c"}));
}

TEST(CharacterReader, keepsCarriageReturnAndLineFeedTogether) {
  EXPECT_EQ(charactersOf("a\r\n\n\r\ra"), (Characters{"a", "\r\n", "\n", "\r", "\r", "a"}));
}

TEST(CharacterReader, keepsMarksWithTheirLetter) {
  EXPECT_EQ(charactersOf("aשָׁb\u0301"), (Characters{"a", "שָׁ", "b\u0301"}));
}

TEST(CharacterReader, keepsEmojiSequencesAndFlagsTogether) {
  EXPECT_EQ(charactersOf("👩\u200D👩\u200D👧🇮🇱🇺🇸🇮"), (Characters{"👩\u200D👩\u200D👧", "🇮🇱", "🇺🇸", "🇮"}));
}

TEST(CharacterReader, cutsIllFormedBytesIntoMaximalSubparts) {
  EXPECT_EQ(charactersOf("\xE2\x82\xFF\xFFz"), (Characters{"\xE2\x82", "\xFF", "\xFF", "z"}));
  EXPECT_EQ(charactersOf("\xED\xA0\x80"), (Characters{"\xED", "\xA0", "\x80"}));
  EXPECT_EQ(charactersOf("\xF0\x9F\x98"), (Characters{"\xF0\x9F\x98"}));
  EXPECT_EQ(charactersOf("\xC0\xAF"), (Characters{"\xC0", "\xAF"}));
  EXPECT_EQ(charactersOf("\xF4\x90\x80\x80"), (Characters{"\xF4", "\x90", "\x80", "\x80"}));
  EXPECT_EQ(charactersOf("\xD7"), (Characters{"\xD7"}));
}

TEST(CharacterReader, joinsNoMarkToIllFormedBytes) {
  EXPECT_EQ(charactersOf("\xFF\u0301"), (Characters{"\xFF", "\u0301"}));
  EXPECT_EQ(charactersOf("\u0600\xFF"), (Characters{"\u0600", "\xFF"}));
}

TEST(CharacterCount, countsCharactersNotBytesOrScalars) {
  EXPECT_EQ(characterCount(""), 0U);
  EXPECT_EQ(characterCount("שלום"), 4U);
  EXPECT_EQ(characterCount("a\r\nb"), 3U);
  EXPECT_EQ(characterCount("e\u0301\u0302"), 1U);
  EXPECT_EQ(characterCount("\xFF\xE2\x82 "), 3U);
}

TEST(CanonicallyEquivalent, holdsForEqualTexts) {
  EXPECT_TRUE(canonicallyEquivalent("", ""));
  EXPECT_TRUE(canonicallyEquivalent("שלום", "שלום"));
}

TEST(CanonicallyEquivalent, holdsForComposedAndDecomposedTexts) {
  EXPECT_TRUE(canonicallyEquivalent("é", "e\u0301"));
  EXPECT_TRUE(canonicallyEquivalent("\uFB2A", "\u05E9\u05C1"));  // shin with shin dot
  EXPECT_TRUE(canonicallyEquivalent("\uD55C", "\u1112\u1161\u11AB"));
  EXPECT_TRUE(canonicallyEquivalent("\u2126", "\u03A9"));
  EXPECT_TRUE(canonicallyEquivalent("\u0958", "\u0915\u093C"));
}

TEST(CanonicallyEquivalent, holdsForMarksOfDifferentClassesInAnyOrder) {
  EXPECT_TRUE(canonicallyEquivalent("a\u0323\u0307", "a\u0307\u0323"));
  EXPECT_TRUE(canonicallyEquivalent("\u1E69", "s\u0307\u0323"));
  EXPECT_TRUE(canonicallyEquivalent("\u0307\u0323", "\u0323\u0307"));
}

TEST(CanonicallyEquivalent, failsForMarksOfOneClassInAnotherOrder) {
  EXPECT_FALSE(canonicallyEquivalent("a\u0301\u0300", "a\u0300\u0301"));
}

TEST(CanonicallyEquivalent, failsForDifferentTexts) {
  EXPECT_FALSE(canonicallyEquivalent("a", "b"));
  EXPECT_FALSE(canonicallyEquivalent("a", ""));
  EXPECT_FALSE(canonicallyEquivalent("", "a"));
  EXPECT_FALSE(canonicallyEquivalent("a", "ab"));
  EXPECT_FALSE(canonicallyEquivalent("ab", "a"));
  EXPECT_FALSE(canonicallyEquivalent("ﬁ", "fi"));  // compatibility is not enough
}

TEST(CanonicallyEquivalent, comparesIllFormedBytesAsTheyAre) {
  EXPECT_TRUE(canonicallyEquivalent("\xFF\u00E9",
                                    "\xFF"
                                    "e\u0301"));
  EXPECT_FALSE(canonicallyEquivalent("\xFF", "\xFE"));
  EXPECT_FALSE(canonicallyEquivalent("\xFF", "\uFFFD"));
  EXPECT_FALSE(canonicallyEquivalent("\xC3", "\xC3\xA9"));
  EXPECT_FALSE(canonicallyEquivalent("\xE2\x82", "\xE2\x82\xAC"));
  EXPECT_FALSE(
      canonicallyEquivalent("\xE2\x82"
                            "A",
                            "\xE2\x82\xAC"));
}

TEST(CanonicallyEquivalent, keepsMarksFromPassingIllFormedBytes) {
  EXPECT_FALSE(canonicallyEquivalent("a\u0307\xFF\u0323", "a\u0323\xFF\u0307"));
}

TEST(Uppercased, mapsFullyAndWithoutALocale) {
  EXPECT_EQ(uppercased(""), "");
  EXPECT_EQ(uppercased("az,1שi"), "AZ,1שI");
  EXPECT_EQ(uppercased("straße é"), "STRASSE É");
}

TEST(Uppercased, keepsIllFormedBytes) {
  EXPECT_EQ(uppercased("a\xFF"
                       "b\xE2\x82"),
            "A\xFF"
            "B\xE2\x82");
}

TEST(IsUppercaseCharacter, holdsForCapitals) {
  for (const std::string text : {"A", "Z", "É", "E\u0301", "\u2160", "\u24B6", "\u01C5\u0301"}) {
    EXPECT_EQ(isUppercaseCharacter(text), text != "\u01C5\u0301") << text;
  }
}

TEST(IsUppercaseCharacter, failsForSmallLettersAndTheUncased) {
  for (const std::string text : {"", "a", "é", "e\u0301", "ß", "1", ",", "ש", "\u01C5", "\xFF"}) {
    EXPECT_FALSE(isUppercaseCharacter(text)) << text;
  }
}

TEST(IsUppercaseCharacter, holdsForACasedScalarThatUpperCasingLeaves) {
  EXPECT_TRUE(isUppercaseCharacter("\u1D34"));  // modifier letter capital H: Cased, without mappings
}

TEST(IsSpaceCharacter, looksAtTheFirstScalar) {
  for (const std::string text : {" ", "\t", "\n", "\v", "\f", "\r", "\r\n", "\u0085", "\u00A0", "\u1680",
                                 "\u2000", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000", " \u0301"}) {
    EXPECT_TRUE(isSpaceCharacter(text)) << text;
  }
  for (const std::string text :
       {"", "a", "ש", "\u001C", "\u200B", "\u2060", "\uFEFF", "\x85", "\xC2", "\xFF"}) {
    EXPECT_FALSE(isSpaceCharacter(text)) << text;
  }
}

TEST(IsLetterCharacter, looksAtTheFirstScalar) {
  for (const std::string text : {"a", "Z", "ש", "שׁ", "é", "\u2167"}) {
    EXPECT_TRUE(isLetterCharacter(text)) << text;
  }
  for (const std::string text : {"", "1", "!", " ", "\u0301", "\xFF"}) {
    EXPECT_FALSE(isLetterCharacter(text)) << text;
  }
}

}  // namespace
}  // namespace lexwend
