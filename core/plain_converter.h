// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "core/direction.h"
#include "core/plain_table.h"
#include "core/text_output.h"

namespace lexwend {

/// Converter::findLetters() by a plain map.
void findPlainLetters(std::string_view text, Letters& letters);

/// Converter::lastCut() by a plain map.
std::size_t lastPlainCut(std::string_view text, std::size_t searched, bool betweenWords);

/// The conversion by a plain map: one pass over each word.
class PlainConverter {
 public:
  /// The table must fit the direction, and outlive the converter.
  PlainConverter(const PlainTable& table, Direction direction) : table_(table), direction_(direction) {}

  /// Converts a text whose start is the start of a character and of a word. Hands the output pieces of at
  /// most 16 KiB. Returns whether anything changed.
  bool convert(std::string_view text, TextOutput& output);

 private:
  enum class Lookup { none, letters, all };  // what of a word is looked up

  struct Word {
    std::size_t end = 0;
    Letters letters;
  };

  std::size_t convertWord(std::string_view text, std::size_t begin);
  static Word readWord(std::string_view text, std::size_t begin);
  Lookup lookupFor(Letters letters) const;
  std::size_t convertStretch(std::string_view text, std::size_t begin, std::size_t end, Lookup lookup);
  std::size_t convertBlocks(std::string_view text, std::size_t begin);
  void keep(std::string_view piece);
  void makeRoom(std::size_t bytes);

  const PlainTable& table_;
  Direction direction_;
  TextOutput* output_ = nullptr;
  bool changed_ = false;
  std::size_t used_ = 0;
  std::array<char, 16384> piece_;  // stays in the nearest cache
};

}  // namespace lexwend
