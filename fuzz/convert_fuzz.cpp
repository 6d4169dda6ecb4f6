// SPDX-License-Identifier: MIT
// Any bytes, converted as the plain reference converts them: with each kind of vectors that the processor
// has, the plain way among them, whole and in two parts. The first byte chooses the active layout and where
// to part; the rest is the text, twice, so that even a short one fills a block.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/characters.h"
#include "core/converter.h"
#include "core/simd/block_converter.h"
#include "tests/core/reference_converter.h"

namespace {

using lexwend::Converter;

class StringOutput : public lexwend::TextOutput {
 public:
  void take(std::string_view piece) override { text += piece; }
  std::string text;
};

Converter::Result convertInParts(const Converter& converter, std::string_view text, std::size_t arrived,
                                 bool currentLayoutIsHebrew) {
  const std::string_view begin = text.substr(0, arrived);
  lexwend::Letters letters;
  const std::size_t seen = converter.lastCut(begin, 0, false);
  converter.findLetters(text.substr(0, seen), letters);
  converter.findLetters(text.substr(seen), letters);
  const lexwend::Direction direction = directionOf(letters, currentLayoutIsHebrew);
  const std::size_t cut = converter.lastCut(begin, 0, !direction.isUniform);
  StringOutput output;
  const bool first = converter.convertPart(output, text.substr(0, cut), direction);
  const bool second = converter.convertPart(output, text.substr(cut), direction);
  return {output.text, !direction.sourceIsHebrew, first || second};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string half(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string text = half + half;
  const bool currentLayoutIsHebrew = data[0] % 2 == 1;
  const std::size_t arrived = text.size() * (data[0] / 2) / 128;
  static const lexwend::LayoutMap kMap = lexwend::LayoutMap::fallback();
  static const Converter kConverter(kMap);
  const Converter::Result expected = lexwend::reference::convert(kMap, text, currentLayoutIsHebrew);
  for (const std::string_view kind : lexwend::simd::vectorKinds()) {
    if (!lexwend::simd::useVectors(kind)) std::abort();
    if (kConverter.convert(text, currentLayoutIsHebrew) != expected) std::abort();
    if (convertInParts(kConverter, text, arrived, currentLayoutIsHebrew) != expected) std::abort();
  }
  if (lexwend::characterCount(text) != lexwend::reference::characters(text).size()) std::abort();
  return 0;
}
