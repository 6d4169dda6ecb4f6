// SPDX-License-Identifier: MIT
// A text that is converted in parts becomes what it becomes whole.
#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/converter.h"
#include "tests/core/random_text.h"

namespace lexwend {
namespace {

constexpr std::uint64_t kSeed = 20'240'315;

class StringOutput : public TextOutput {
 public:
  void take(std::string_view piece) override { text += piece; }
  std::string text;
};

// Calls `onPart` for each part of a text that arrives in chunks of random sizes.
template <typename OnPart>
void cut(const Converter& converter, std::string_view text, bool betweenWords, RandomText& random,
         OnPart onPart) {
  std::size_t begin = 0;
  std::size_t searched = 0;
  for (std::size_t end = 0; end < text.size();) {
    end = std::min(end + 1 + random.below(9), text.size());
    const std::string_view there = text.substr(begin, end - begin);
    const std::size_t size = converter.lastCut(there, searched, betweenWords);
    ASSERT_LE(size, there.size());
    if (size != 0) onPart(there.substr(0, size));
    begin += size;
    searched = there.size() - size;
  }
  onPart(text.substr(begin));
}

Converter::Result convertInParts(const Converter& converter, std::string_view text,
                                 bool currentLayoutIsHebrew, RandomText& random) {
  Letters letters;
  cut(converter, text, false, random, [&](std::string_view part) { converter.findLetters(part, letters); });
  const Direction direction = directionOf(letters, currentLayoutIsHebrew);
  Converter::Result result;
  result.targetIsHebrew = !direction.sourceIsHebrew;
  StringOutput output;
  cut(converter, text, !direction.isUniform, random, [&](std::string_view part) {
    if (converter.convertPart(output, part, direction)) result.changed = true;
  });
  result.text = output.text;
  return result;
}

void expectTheSameInParts(const Converter& converter, const std::string& text, RandomText& random) {
  for (const bool currentLayoutIsHebrew : {false, true}) {
    ASSERT_EQ(convertInParts(converter, text, currentLayoutIsHebrew, random),
              converter.convert(text, currentLayoutIsHebrew))
        << "layout is Hebrew " << currentLayoutIsHebrew << ": " << hexOf(text);
  }
}

TEST(Parts, ofAnythingBecomeWhatTheWholeBecomes) {
  const Converter converter(LayoutMap::fallback());
  RandomText random(kSeed);
  for (int round = 0; round < 40'000; ++round) {
    expectTheSameInParts(converter, random.text(24), random);
    if (HasFatalFailure()) return;
  }
}

TEST(Parts, ofProseBecomeWhatTheWholeBecomes) {
  RandomText random(kSeed + 1);
  for (int round = 0; round < 2'000; ++round) {
    expectTheSameInParts(Converter(random.keyboardMap()), random.prose(random.below(400)), random);
    if (HasFatalFailure()) return;
  }
}

TEST(Parts, byAMapOfAnyKeysBecomeWhatTheWholeBecomes) {
  RandomText random(kSeed + 2);
  for (int round = 0; round < 2'000; ++round) {
    const Converter converter(random.map());
    std::string text;
    for (int line = 0; line < 4; ++line) text += random.text(8) + (random.below(2) == 0 ? "\n" : "\r\n");
    expectTheSameInParts(converter, text, random);
    if (HasFatalFailure()) return;
  }
}

// Else a long text would have to be kept.
TEST(Parts, endNearTheEndOfAnyTextOfOneScript) {
  const Converter converter(LayoutMap::fallback());
  for (const std::string_view unit : {"a", "ש", "1", "\u0301", "\u0600", "\u05B0", "a\u0301", "\u0600a", "😀",
                                      "👩\u200D", "\xFF", "\xE2\x82", "中"}) {
    std::string text;
    while (text.size() < 1000) text += unit;
    EXPECT_GT(converter.lastCut(text, 0, false), text.size() - 16) << hexOf(std::string(unit));
  }
}

TEST(Parts, areNoneOfOneWordWhereWordsMatter) {
  const Converter converter(LayoutMap::fallback());
  EXPECT_EQ(converter.lastCut("akuoשלום", 0, true), 0U);
  EXPECT_EQ(converter.lastCut("akuo שלום", 0, true), 5U);
  EXPECT_EQ(converter.lastCut("akuo\u0600 שלום", 0, true), 0U) << "the space belongs to the sign before it";
  EXPECT_EQ(converter.lastCut("akuo\u0600\nשלום", 0, true), 7U);
}

}  // namespace
}  // namespace lexwend
