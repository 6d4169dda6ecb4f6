// SPDX-License-Identifier: MIT
#include "core/utf8.h"

#include <cstdint>

namespace lexwend {
namespace {

// What a lead byte announces (the Unicode Standard, table 3-7). The bounds of the second byte keep out
// overlong forms, surrogates and everything above U+10FFFF; every later byte is 80 to BF.
struct Lead {
  std::size_t length;  // bytes of the whole sequence; 0 when nothing well-formed begins with the byte
  std::uint8_t lowestSecond = 0x80;
  std::uint8_t highestSecond = 0xBF;
};

Lead leadOf(std::uint8_t byte) {
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {2};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    return {3, static_cast<std::uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
            static_cast<std::uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return {4, static_cast<std::uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
            static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
  }
  return {0};
}

}  // namespace

Utf8Unit utf8UnitAt(std::string_view text, std::size_t position) {
  const auto first = static_cast<std::uint8_t>(text[position]);
  if (first < 0x80) {
    return {first, 1};
  }
  const Lead lead = leadOf(first);
  if (lead.length == 0) {
    return {std::nullopt, 1};
  }
  char32_t scalar = first & (0x7FU >> lead.length);
  std::uint8_t lowest = lead.lowestSecond;
  std::uint8_t highest = lead.highestSecond;
  for (std::size_t length = 1; length < lead.length; ++length) {
    if (position + length == text.size()) {
      return {std::nullopt, length};
    }
    const auto trail = static_cast<std::uint8_t>(text[position + length]);
    if (trail < lowest || trail > highest) {
      return {std::nullopt, length};
    }
    scalar = scalar << 6 | (trail & 0x3FU);
    lowest = 0x80;
    highest = 0xBF;
  }
  return {scalar, lead.length};
}

std::optional<char32_t> singleScalar(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const Utf8Unit unit = utf8UnitAt(text, 0);
  return unit.length == text.size() ? unit.scalar : std::nullopt;
}

}  // namespace lexwend
