// SPDX-License-Identifier: MIT
// The conversion in blocks against the plain reference, with every kind of vectors that this processor has.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "core/converter.h"
#include "core/scalar_facts.h"
#include "core/simd/block_converter.h"
#include "tests/core/random_text.h"
#include "tests/core/reference_converter.h"

namespace lexwend {
namespace {

constexpr std::uint64_t kBlocksSeed = 20'240'301;

// The processor is taken to have the vectors of the parameter.
struct Blocks : testing::TestWithParam<std::string_view> {
  void SetUp() override { ASSERT_TRUE(simd::useVectors(GetParam())); }
  void TearDown() override { simd::useVectors(simd::vectorKinds().front()); }
};

std::string nameOf(const testing::TestParamInfo<std::string_view>& kind) {
  std::string name(kind.param);
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Kinds, Blocks, testing::ValuesIn(simd::vectorKinds()), nameOf);

void expectAsReference(const LayoutMap& map, const Converter& converter, const std::string& text) {
  for (const bool currentLayoutIsHebrew : {false, true}) {
    // A copy that ends where its memory ends: a sanitizer sees a read beyond it.
    const std::unique_ptr<char[]> exact(new char[text.size()]);
    std::memcpy(exact.get(), text.data(), text.size());
    const Converter::Result result = converter.convert({exact.get(), text.size()}, currentLayoutIsHebrew);
    ASSERT_EQ(result, reference::convert(map, text, currentLayoutIsHebrew))
        << "layout is Hebrew " << currentLayoutIsHebrew << ": " << hexOf(text) << "became "
        << hexOf(result.text);
  }
}

TEST_P(Blocks, convertProseAsTheReferenceDoes) {
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  RandomText random(kBlocksSeed);
  for (int round = 0; round < 400; ++round) {
    expectAsReference(map, converter, random.prose(random.below(600)));
    if (HasFatalFailure()) return;
  }
}

TEST_P(Blocks, convertByAnyKeyboardAsTheReferenceDoes) {
  RandomText random(kBlocksSeed + 1);
  for (int round = 0; round < 400; ++round) {
    const LayoutMap map = random.keyboardMap();
    expectAsReference(map, Converter(map), random.prose(random.below(400)));
    if (HasFatalFailure()) return;
  }
}

TEST_P(Blocks, meetAnythingAtAnyPlace) {
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  const std::vector<std::string> texts{
      "akuo nv akunl, Hello (world) this is a text of one script & of more than one block",
      "שלום מה שלומך, זה טקסט בכתב אחד, (ארוך) מבלוק אחד ומלא אותיות",
      "היי akuo nv שלום, aשb (akuo) מה Hello world שלומך abc אבג 123 . def דהו"};
  const std::vector<std::string> strangers{
      "\u0301",   "\u05B0",  "\u0600",   "\u200D",  "\u2014", "\xD7", "\xD6",   "\xFF",
      "\xE2\x82", "\u05C1",  "\u05BE",   "&",       "\u05F4", "\n",   "\u00A0", std::string(1, '\0'),
      "😀",        "\u0600 ", "\u0600\n", " \u0301", "\u0591"};
  for (const std::string& text : texts) {
    for (const std::string& stranger : strangers) {
      for (std::size_t place = 0; place <= simd::kBlock + 2; ++place) {
        expectAsReference(map, converter, text.substr(0, place) + stranger + text.substr(place));
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_P(Blocks, convertTheSameAtEveryAddress) {
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  RandomText random(kBlocksSeed + 2);
  for (int round = 0; round < 10; ++round) {
    const std::string text = random.prose(300);
    const Converter::Result expected = reference::convert(map, text, true);
    for (std::size_t offset = 0; offset < simd::kBlock; ++offset) {
      const std::string moved = std::string(offset, 'x') + text;
      ASSERT_EQ(converter.convert(std::string_view(moved).substr(offset), true), expected) << offset;
    }
  }
}

TEST_P(Blocks, endBeforeACharacterThatIsNotThereWhole) {
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  for (const char* const last : {"\xD7", "\x97", "\xD6", "\xE2", "\xE2\x80", "ש\x97", "\xD7\xD7", "ש"}) {
    for (std::size_t length = 50; length < 70; ++length) {
      for (const char* const next : {"ש", "\x90", "\u05B0", "a", "\u0301"}) {
        expectAsReference(map, converter, std::string(length, '.') + last + next + std::string(80, '.'));
        expectAsReference(map, converter,
                          "היי akuo " + std::string(length, '.') + last + next + std::string(80, ' '));
      }
    }
  }
}

// The conversion in blocks has its own idea of which Hebrew scalars join the one before them.
TEST_P(Blocks, knowThePointsAndAccents) {
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  for (char32_t scalar = 0x580; scalar < 0x600; ++scalar) {
    const bool joins = (scalarFacts(scalar) & kJoinsBefore) != 0;
    const std::string text = std::string(20, '0') + "k" + utf8Of(scalar) + std::string(80, '0');
    const std::string output = converter.convert(text, false).text;
    EXPECT_EQ(output.substr(20, 1) == "k", joins) << std::hex << static_cast<std::uint32_t>(scalar);
  }
}

// Where vectors exist, they are used: nearly all of a plain text is done in blocks.
TEST_P(Blocks, readNearlyAllOfAPlainText) {
  simd::ByteTable table(false);
  table.set('a', 'b');
  const std::string text(10 * simd::kBlock, 'a');
  std::vector<char> output(20 * simd::kBlock + simd::kRoomOfBlock);
  const auto progress = simd::convertBlocks(table, simd::Words::every, text, output.data(), output.size());
  if (GetParam() == "none") {
    EXPECT_EQ(progress.read, 0U);
  } else {
    EXPECT_GT(progress.read, 9 * simd::kBlock);
    EXPECT_TRUE(progress.changed);
    EXPECT_EQ(std::string(output.data(), progress.written), std::string(progress.read, 'b'));
  }
}

}  // namespace
}  // namespace lexwend
