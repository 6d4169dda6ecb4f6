// SPDX-License-Identifier: MIT
#include "core/scalar_facts.h"

#include <array>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include "core/utf8.h"

namespace lexwend {
namespace {

constexpr std::size_t kShortScalars = 0x800;  // those of one and two bytes: Latin to Arabic with their marks

// A letter that may stand in an Indic conjunct; only later versions of Unicode join those.
bool mayFormConjunct(UChar32 point) {
  return u_getIntPropertyValue(point, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_CONSONANT;
}

bool isCanonical(UChar32 point) {
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* form = unorm2_getNFDInstance(&status);
  return U_SUCCESS(status) && unorm2_isInert(form, point);
}

ScalarFacts lookUpFacts(char32_t scalar) {
  const auto point = static_cast<UChar32>(scalar);
  ScalarFacts facts = 0;
  switch (static_cast<UGraphemeClusterBreak>(u_getIntPropertyValue(point, UCHAR_GRAPHEME_CLUSTER_BREAK))) {
    case U_GCB_EXTEND:
    case U_GCB_ZWJ:
    case U_GCB_SPACING_MARK:
      facts |= kJoinsBefore;
      break;
    case U_GCB_PREPEND:
      facts |= kJoinsAfter;
      break;
    case U_GCB_CONTROL:
    case U_GCB_CR:
    case U_GCB_LF:
      facts |= kControl;
      break;
    case U_GCB_OTHER:
      if (!u_hasBinaryProperty(point, UCHAR_EXTENDED_PICTOGRAPHIC) && !mayFormConjunct(point)) facts |= kPlain;
      break;
    default:
      break;
  }
  if (u_isUWhiteSpace(point)) facts |= kSpace;
  if (scalar >= 0x5D0 && scalar <= 0x5EA) facts |= kHebrewLetter;
  if ((scalar >= 'A' && scalar <= 'Z') || (scalar >= 'a' && scalar <= 'z')) facts |= kLatinLetter;
  if (isCanonical(point)) facts |= kCanonical;
  return facts;
}

const std::array<ScalarFacts, kShortScalars>& shortFacts() {
  static const auto kFacts = [] {
    std::array<ScalarFacts, kShortScalars> facts{};
    for (std::size_t scalar = 0; scalar < facts.size(); ++scalar) {
      facts[scalar] = lookUpFacts(static_cast<char32_t>(scalar));
    }
    return facts;
  }();
  return kFacts;
}

ScalarUnit longUnitAt(std::string_view text, std::size_t position) {
  const Utf8Unit unit = utf8UnitAt(text, position);
  const auto length = static_cast<std::uint8_t>(unit.length);
  if (!unit.scalar) return {0, length, kIllFormed};
  return {*unit.scalar, length, scalarFacts(*unit.scalar)};
}

}  // namespace

ScalarFacts scalarFacts(char32_t scalar) {
  return scalar < kShortScalars ? shortFacts()[scalar] : lookUpFacts(scalar);
}

ScalarUnit scalarUnitAt(std::string_view text, std::size_t position) {
  if (position >= text.size()) return {};
  const auto first = static_cast<unsigned char>(text[position]);
  if (first < 0x80) return {first, 1, shortFacts()[first]};
  if (first >= 0xC2 && first <= 0xDF && position + 1 < text.size()) {
    const auto second = static_cast<unsigned char>(text[position + 1]);
    if ((second & 0xC0) == 0x80) {
      const auto scalar = static_cast<char32_t>((first & 0x1F) << 6 | (second & 0x3F));
      return {scalar, 2, shortFacts()[scalar]};
    }
  }
  return longUnitAt(text, position);
}

}  // namespace lexwend
