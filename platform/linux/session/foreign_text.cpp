// SPDX-License-Identifier: MIT
#include "platform/linux/session/foreign_text.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace lexwend::platform {
namespace {

constexpr std::int32_t kMaxCharacters = 200;
constexpr std::size_t kMaxBytes = 4096;  // of which more than enough is read to find that many characters

/// Control characters, marks that turn the direction of what follows, line and paragraph separators.
bool maySpoilALine(UChar32 character) {
  constexpr std::uint32_t kSpoiling = U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
  return (U_GET_GC_MASK(character) & kSpoiling) != 0;
}

}  // namespace

std::string foreignText(std::string_view text) {
  const std::string_view part = text.substr(0, kMaxBytes);
  const auto given = icu::UnicodeString::fromUTF8({part.data(), static_cast<std::int32_t>(part.size())});
  icu::UnicodeString kept;
  std::int32_t characters = 0;
  for (std::int32_t i = 0; i < given.length() && characters < kMaxCharacters; i = given.moveIndex32(i, 1)) {
    const UChar32 character = given.char32At(i);
    if (maySpoilALine(character)) continue;
    kept.append(character);
    ++characters;
  }
  std::string bytes;
  return kept.toUTF8String(bytes);
}

}  // namespace lexwend::platform
