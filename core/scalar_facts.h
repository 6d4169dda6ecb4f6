// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/utf8.h"

namespace lexwend {

/// What a scalar means to its neighbours and to the words of a text, as bits.
using ScalarFacts = std::uint16_t;

constexpr ScalarFacts kJoinsBefore = 1;  ///< Extend, ZWJ or SpacingMark: belongs to the character before it.
constexpr ScalarFacts kJoinsAfter = 2;   ///< Prepend: the scalar after it belongs to its character.
constexpr ScalarFacts kSpace = 4;        ///< White_Space.
constexpr ScalarFacts kControl = 8;  ///< A control, CR or LF: a character of its own whatever precedes it.
constexpr ScalarFacts kHebrewLetter = 16;  ///< Alef to tav, final forms included.
constexpr ScalarFacts kLatinLetter = 32;   ///< A to Z, a to z.
constexpr ScalarFacts kIllFormed = 64;     ///< No scalar at all: an ill-formed subsequence.

/// Its own character wherever the scalar before it does not join after and the one after it does not join
/// before: Grapheme_Cluster_Break=Other, and neither a pictograph nor a consonant of an Indic conjunct, which
/// join under conditions of their own (UAX #29, GB9c and GB11).
constexpr ScalarFacts kPlain = 128;

/// A starter whose canonical decomposition is itself. Two texts that differ in nothing but such scalars, one
/// for one, are never canonically equivalent.
constexpr ScalarFacts kCanonical = 256;

/// The facts of a scalar. Any thread.
ScalarFacts scalarFacts(char32_t scalar);

/// One scalar of a text, or one ill-formed subsequence, with its facts.
struct ScalarUnit {
  char32_t scalar = 0;      ///< Without a meaning when ill-formed.
  std::uint8_t length = 0;  ///< Bytes.
  ScalarFacts facts = 0;
};

/// The unit at `position`, a place where a unit starts; past the end a unit of no bytes and no facts.
ScalarUnit scalarUnitAt(std::string_view text, std::size_t position);

namespace scalar_facts {

/// The facts of all scalars, page by page: a page is filled when it is first asked for, and stays.
struct Pages {
  static constexpr std::size_t kScalarsOfPage = 256;
  static constexpr std::size_t kPages = 0x110000 / kScalarsOfPage;

  std::array<std::array<ScalarFacts, kScalarsOfPage>, kPages> facts;
  std::array<std::atomic<bool>, kPages> isFilled;
};

extern Pages pages;

void fill(std::size_t page);

}  // namespace scalar_facts

inline ScalarFacts scalarFacts(char32_t scalar) {
  using scalar_facts::pages;
  const std::size_t page = scalar / scalar_facts::Pages::kScalarsOfPage;
  if (!pages.isFilled[page].load(std::memory_order_acquire)) scalar_facts::fill(page);
  return pages.facts[page][scalar % scalar_facts::Pages::kScalarsOfPage];
}

inline ScalarUnit scalarUnitAt(std::string_view text, std::size_t position) {
  if (position >= text.size()) return {};
  const Utf8Unit unit = utf8UnitAt(text, position);
  return {unit.scalar, unit.length, unit.isWellFormed() ? scalarFacts(unit.scalar) : kIllFormed};
}

}  // namespace lexwend
