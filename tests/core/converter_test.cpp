// SPDX-License-Identifier: MIT
#include "core/converter.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace lexwend {
namespace {

struct Sample {
  std::string name;
  std::string input;
  bool currentLayoutIsHebrew;
  std::string text;
};

class ConverterSamples : public testing::TestWithParam<Sample> {};

TEST_P(ConverterSamples, convertsAsMeant) {
  const Sample& sample = GetParam();
  const Converter converter(LayoutMap::fallback());
  const Converter::Result result = converter.convert(sample.input, sample.currentLayoutIsHebrew);
  EXPECT_EQ(result.text, sample.text);
  EXPECT_EQ(result.changed, sample.text != sample.input);
}

INSTANTIATE_TEST_SUITE_P(
    Converter, ConverterSamples,
    testing::Values(
        Sample{"hebrewPhraseTypedOnTheLatinLayout", "akuo nv akunl", false, "שלום מה שלומך"},
        Sample{"englishWordTypedOnTheHebrewLayout", "יקךךם", true, "hello"},
        Sample{"latinTextGoesToHebrewWhileTheHebrewLayoutIsActive", "hello, world.", true, "יקךךםת ׳םרךגץ"},
        Sample{"commaAndFullStopComeBack", "יקךךםת ׳םרךגץ", true, "hello, world."},
        Sample{"capitalConvertsLikeItsSmallLetter", "Akuo", false, "שלום"},
        Sample{"mixedTextConvertsLatinWordsOnTheLatinLayout", "היי akuo nv", false, "היי שלום מה"},
        Sample{"mixedTextConvertsHebrewWordsOnTheHebrewLayout", "היי akuo nv", true, "vhh akuo nv"},
        Sample{"digitsPassThrough", "שלום 123", true, "akuo 123"},
        Sample{"characterWithoutAnEntryStays", "nv akunl?", false, "מה שלומך?"},
        Sample{"parenthesesAreMirrored", "(akuo)", false, ")שלום("},
        Sample{"fullStopAloneFollowsTheLatinLayout", ".", false, "ץ"},
        Sample{"fullStopAloneFollowsTheHebrewLayout", ".", true, "/"},
        Sample{"punctuationWordIsKeptInMixedText", "היי akuo .", false, "היי שלום ."},
        Sample{"wordOfBothScriptsConvertsItsLatinLetters", "aשb", false, "ששנ"},
        Sample{"wordOfBothScriptsConvertsItsHebrewLetters", "aשb", true, "aab"},
        Sample{"wordOfBothScriptsKeepsItsPunctuation", "a,ש.", false, "ש,ש."},
        Sample{"noBreakSpaceSeparatesWords", "היי akuo\u00A0.", false, "היי שלום\u00A0."},
        Sample{"pointedLetterStaysBesideOnesThatConvert", "שָׁלום", true, "שָׁkuo"},
        Sample{"accentedLetterIsNoLatinLetter", "é .", true, "é /"},
        Sample{"letterWithACombiningAccentIsNoLatinLetter", "e\u0301 .", true, "e\u0301 /"},
        Sample{"gereshIsNoHebrewLetter", "\u05F3", false, "\u05F3"},
        Sample{"gershayimIsNoHebrewLetter", "\u05F4 a", true, "\u05F4 ש"},
        Sample{"yiddishLigaturesAreNoHebrewLetters", "\u05F0\u05F1\u05F2 a", true, "\u05F0\u05F1\u05F2 ש"},
        Sample{"carriageReturnWithLineFeedSeparatesWords", "היי a\r\n.", false, "היי ש\r\n."},
        Sample{"spaceWithAMarkIsSpace", "היי a \u05B8.", false, "היי ש \u05B8."},
        Sample{"illFormedBytesComeBack", "a\xFF\xD7 \xE2\x82z\xED\xA0\x80", false,
               "ש\xFF\xD7 \xE2\x82ז\xED\xA0\x80"},
        Sample{"nulIsACharacterLikeAnyOther", std::string("a\0b", 3), false, std::string("ש\0נ", 5)}),
    [](const testing::TestParamInfo<Sample>& sample) { return sample.param.name; });

const Converter& builtIn() {
  static const Converter kConverter(LayoutMap::fallback());
  return kConverter;
}

TEST(Converter, leavesAnEmptyTextEmptyWithTheOtherLanguageAsTarget) {
  for (const bool currentLayoutIsHebrew : {false, true}) {
    const Converter::Result result = builtIn().convert("", currentLayoutIsHebrew);
    EXPECT_EQ(result, (Converter::Result{"", !currentLayoutIsHebrew, false}));
  }
}

TEST(Converter, leavesWhiteSpaceAsItIsWithTheOtherLanguageAsTarget) {
  const std::string space = "\t \n\n\r\n \v\f\r\u0085\u00A0\u1680\u2003\u2028\u2029\u202F\u205F\u3000 \t";
  for (const bool currentLayoutIsHebrew : {false, true}) {
    const Converter::Result result = builtIn().convert(space, currentLayoutIsHebrew);
    EXPECT_EQ(result, (Converter::Result{space, !currentLayoutIsHebrew, false}));
  }
}

TEST(Converter, takesTheOtherLanguageAsTargetOfAnyTextWithoutLetters) {
  for (const std::string text : {".", "123 456", "?!", "привет", "\xFF"}) {
    EXPECT_TRUE(builtIn().convert(text, false).targetIsHebrew) << text;
    EXPECT_FALSE(builtIn().convert(text, true).targetIsHebrew) << text;
  }
}

TEST(Converter, setsTheTargetByTheScriptOfUniformText) {
  for (const bool currentLayoutIsHebrew : {false, true}) {
    EXPECT_TRUE(builtIn().convert("akuo 1.", currentLayoutIsHebrew).targetIsHebrew);
    EXPECT_FALSE(builtIn().convert("שלום 1.", currentLayoutIsHebrew).targetIsHebrew);
  }
}

TEST(Converter, countsAPointedLetterAsHebrewAndLeavesIt) {
  EXPECT_EQ(builtIn().convert("שׁ akuo", true), (Converter::Result{"שׁ akuo", false, false}));
  EXPECT_EQ(builtIn().convert("שׁ akuo", false), (Converter::Result{"שׁ שלום", true, true}));
}

TEST(Converter, setsTheTargetOfMixedTextByTheActiveLayout) {
  EXPECT_TRUE(builtIn().convert("שלום akuo", false).targetIsHebrew);
  EXPECT_FALSE(builtIn().convert("שלום akuo", true).targetIsHebrew);
}

TEST(Converter, convertsEveryFinalFormAndEveryLetterFromAlefToTav) {
  EXPECT_EQ(builtIn().convert("אבגדהוזחטיךכלםמןנסעףפץצקרשת", true).text, "tcdsvuzjyhlfkonibxg;p.mera,");
}

TEST(Converter, convertsNothingWithEmptyMaps) {
  const Converter converter{LayoutMap{}};
  EXPECT_EQ(converter.convert("akuo שלום", false), (Converter::Result{"akuo שלום", true, false}));
}

TEST(Converter, isNotChangedWhenTheOutputIsCanonicallyEquivalent) {
  LayoutMap map;
  map.toHebrew = {{"\u2126", "\u03A9"}, {"\u00C5", "A\u030A"}};  // ohm sign, angstrom
  const Converter converter(map);
  EXPECT_EQ(converter.convert("\u2126\u00C5", false), (Converter::Result{"\u03A9A\u030A", true, false}));
  EXPECT_TRUE(converter.convert("\u2126\u00C5b", false).text.ends_with("b"));
}

TEST(Converter, isChangedWhenACharacterBecomesAnother) {
  LayoutMap map;
  map.toHebrew = {{"a", "a"}, {"b", "c"}};
  const Converter converter(map);
  EXPECT_FALSE(converter.convert("aaa", false).changed);
  EXPECT_TRUE(converter.convert("aab", false).changed);
}

TEST(Converter, looksUpKeysOfSeveralScalarsByTheirExactSequence) {
  LayoutMap map;
  map.toHebrew = {{"e\u0301", "1"}, {"\U0001F1EE\U0001F1F1", "2"}, {"\u20AC", "34"}};
  const Converter converter(map);
  EXPECT_EQ(converter.convert("e\u0301 é \U0001F1EE\U0001F1F1\U0001F1EE \u20AC", false).text,
            "1 é 2\U0001F1EE 34");
}

TEST(Converter, neverLooksUpIllFormedBytes) {
  LayoutMap map;
  map.toHebrew = {{"\xFF", "no"}, {"\xE2\x82", "no"}, {"\u00FF", "no"}, {"\u0082", "no"}, {" ", "no"}};
  const Converter converter(map);
  EXPECT_EQ(converter.convert("\xFF\xE2\x82\x82\xE0\xA0", false),
            (Converter::Result{"\xFF\xE2\x82\x82\xE0\xA0", true, false}));
}

TEST(Converter, mapsToTheEmptyStringAndToSeveralCharacters) {
  LayoutMap map;
  map.toHebrew = {{"a", ""}, {"b", "xyz"}};
  const Converter converter(map);
  EXPECT_EQ(converter.convert("aba", false), (Converter::Result{"xyz", true, true}));
  EXPECT_EQ(converter.convert("a", false), (Converter::Result{"", true, true}));
}

TEST(Converter, copiesOutliveTheOriginal) {
  std::vector<Converter> copies;
  {
    const Converter original(LayoutMap::fallback());
    copies.push_back(original);
  }
  EXPECT_EQ(copies[0].convert("akuo", false).text, "שלום");
}

}  // namespace
}  // namespace lexwend
