// SPDX-License-Identifier: MIT
// Texts on which an unwary algorithm is quadratic: a plain normalisation of the first takes more than a
// minute. Each finishes here in a fraction of a second; the bound leaves room for sanitizers on a busy
// machine.
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "core/characters.h"
#include "core/converter.h"

namespace lexwend {
namespace {

constexpr double kBoundInSeconds = 10;
constexpr std::size_t kMegabyte = 1'000'000;

std::string repeated(const std::string& part, std::size_t bytes) {
  std::string text;
  text.reserve(bytes + part.size());
  while (text.size() < bytes) text += part;
  return text;
}

struct LinearTime : testing::Test {
  // Processor time: what else the machine does is no matter.
  std::clock_t begin = std::clock();

  void TearDown() override {
    const auto seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, kBoundInSeconds);
  }
};

TEST_F(LinearTime, oneClusterOfAlternatingMarks) {
  const std::string text = "a" + repeated("\u0301\u0323", kMegabyte);
  EXPECT_EQ(characterCount(text), 1U);
  EXPECT_EQ(Converter(LayoutMap::fallback()).convert(text, false), (Converter::Result{text, true, false}));
}

TEST_F(LinearTime, equivalenceOfOneClusterOfAlternatingMarksInTwoOrders) {
  const std::string left = "a" + repeated("\u0301\u0323", kMegabyte);
  const std::string right = "a" + repeated("\u0323\u0301", kMegabyte);
  EXPECT_TRUE(canonicallyEquivalent(left, right));
  EXPECT_FALSE(canonicallyEquivalent(left, right + "\u0301"));
}

TEST_F(LinearTime, conversionOfAnEquivalentCharacterBeforeOneLongCluster) {
  LayoutMap map;
  map.toHebrew["\u2126"] = "\u03A9";
  const std::string rest = " a" + repeated("\u0301\u0323", kMegabyte);
  EXPECT_EQ(Converter(map).convert("\u2126" + rest, false),
            (Converter::Result{"\u03A9" + rest, true, false}));
}

TEST_F(LinearTime, longRunsOfEveryKind) {
  const Converter converter(LayoutMap::fallback());
  for (const std::string part :
       {"\u0600", "\u200D", "👩\u200D", "🇮🇱", "\u1100", "\u1161", "\r", "\r\n", "\x80", "\xFF", "\xE2\x82",
        "a\u0301", " ", "a ", "ש", "aש ", "\u05E9\u05C1", "\u0344"}) {
    const std::string text = repeated(part, kMegabyte / 5);
    EXPECT_GT(characterCount(text), 0U);
    const Converter::Result result = converter.convert(text, true);
    EXPECT_NE(canonicallyEquivalent(text, result.text), result.changed);
    EXPECT_FALSE(canonicallyEquivalent(text, text + "x"));
  }
}

}  // namespace
}  // namespace lexwend
