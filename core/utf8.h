// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace lexwend {

/// One scalar of a text, or one maximal subpart of an ill-formed subsequence (The Unicode Standard, section
/// 3.9, "U+FFFD Substitution of Maximal Subparts"). Any thread.
struct Utf8Unit {
  static constexpr char32_t kIllFormed = 0x110000;  // above every scalar

  char32_t scalar = kIllFormed;
  std::uint8_t length = 0;  ///< Bytes, at least 1.

  bool isWellFormed() const { return scalar != kIllFormed; }
};

/// The unit that starts at `position`. A unit must start there, inside the text.
inline Utf8Unit utf8UnitAt(std::string_view text, std::size_t position) {
  const auto byteAt = [&](std::size_t place) { return static_cast<unsigned char>(text[position + place]); };
  const char32_t first = byteAt(0);
  if (first < 0x80) return {first, 1};
  if (first < 0xC2 || first > 0xF4) return {Utf8Unit::kIllFormed, 1};
  const std::size_t left = text.size() - position;
  if (left < 2) return {Utf8Unit::kIllFormed, 1};
  // The bounds of the second byte exclude overlong forms, surrogates and values above U+10FFFF (The Unicode
  // Standard, table 3-7). Every later byte is 80 to BF.
  const char32_t second = byteAt(1);
  const char32_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const char32_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (second < lowest || second > highest) return {Utf8Unit::kIllFormed, 1};
  if (first < 0xE0) return {(first & 0x1F) << 6 | (second & 0x3F), 2};
  if (left < 3 || (byteAt(2) & 0xC0) != 0x80) return {Utf8Unit::kIllFormed, 2};
  const char32_t upper = (second & 0x3F) << 6 | (byteAt(2) & 0x3FU);
  if (first < 0xF0) return {(first & 0x0F) << 12 | upper, 3};
  if (left < 4 || (byteAt(3) & 0xC0) != 0x80) return {Utf8Unit::kIllFormed, 3};
  return {(first & 0x07) << 18 | upper << 6 | (byteAt(3) & 0x3FU), 4};
}

/// The scalar of a text of exactly one well-formed scalar, else nothing.
std::optional<char32_t> singleScalar(std::string_view text);

}  // namespace lexwend
