// SPDX-License-Identifier: MIT
#include "core/scalar_facts.h"

#include <mutex>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

namespace lexwend {
namespace {

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
      if (!u_hasBinaryProperty(point, UCHAR_EXTENDED_PICTOGRAPHIC) && !mayFormConjunct(point)) {
        facts |= kPlain;
      }
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

}  // namespace

namespace scalar_facts {

constinit Pages pages{};

void fill(std::size_t page) {
  static std::mutex filling;
  const std::lock_guard lock(filling);
  if (pages.isFilled[page].load(std::memory_order_relaxed)) return;
  for (std::size_t place = 0; place < Pages::kScalarsOfPage; ++place) {
    pages.facts[page][place] = lookUpFacts(static_cast<char32_t>(page * Pages::kScalarsOfPage + place));
  }
  pages.isFilled[page].store(true, std::memory_order_release);
}

}  // namespace scalar_facts
}  // namespace lexwend
