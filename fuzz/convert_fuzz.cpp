// SPDX-License-Identifier: MIT
// Any bytes, converted as the plain reference converts them, with each kind of vectors that the processor
// has. The first byte chooses the active layout and the vectors; the rest is the text, twice, so that even a
// short one fills a block.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/characters.h"
#include "core/converter.h"
#include "core/simd/block_converter.h"
#include "tests/core/reference_converter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string half(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string text = half + half;
  static const auto kVectors = lexwend::simd::vectorKinds();
  if (!lexwend::simd::useVectors(kVectors[data[0] / 2 % kVectors.size()])) std::abort();
  const bool currentLayoutIsHebrew = data[0] % 2 == 1;
  static const lexwend::LayoutMap kMap = lexwend::LayoutMap::fallback();
  static const lexwend::Converter kConverter(kMap);
  if (kConverter.convert(text, currentLayoutIsHebrew) !=
          lexwend::reference::convert(kMap, text, currentLayoutIsHebrew) ||
      lexwend::characterCount(text) != lexwend::reference::characters(text).size()) {
    std::abort();
  }
  return 0;
}
