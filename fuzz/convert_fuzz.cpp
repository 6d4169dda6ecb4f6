// SPDX-License-Identifier: MIT
// Any bytes, converted as the plain reference converts them. The first byte chooses the active layout; the
// rest is the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/characters.h"
#include "core/converter.h"
#include "tests/core/reference_converter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
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
