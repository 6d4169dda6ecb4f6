// SPDX-License-Identifier: MIT
#include "platform/linux/session/foreign_text.h"

#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace lexwend::platform {
namespace {

constexpr int kMostCharacters = 200;
constexpr std::uint32_t kLeftOut = U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;

}  // namespace

std::string foreignText(std::string_view text) {
  std::string kept;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t end = text.size();
  int characters = 0;
  for (std::size_t at = 0; at < end && characters < kMostCharacters;) {
    const std::size_t start = at;
    UChar32 character = 0;
    U8_NEXT(bytes, at, end, character);
    if (character < 0) {
      kept += "\xEF\xBF\xBD";
    } else if ((U_MASK(u_charType(character)) & kLeftOut) == 0) {
      kept.append(text.substr(start, at - start));
    } else {
      continue;
    }
    ++characters;
  }
  return kept;
}

}  // namespace lexwend::platform
