// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/layout_map.h"

namespace lexwend {

/// Makes texts that are hard to cut into characters and to convert: both scripts, marks, niqqud, joiners,
/// prepended signs, Hangul, emoji, flags, all white space, and ill-formed bytes. The same seed makes the same
/// texts.
class RandomText {
 public:
  explicit RandomText(std::uint64_t seed) : state_(seed) {}

  /// Any number below `bound`.
  std::size_t below(std::size_t bound);

  /// One scalar, or now and then an ill-formed sequence.
  std::string piece();

  /// A combining mark, Hebrew or Latin.
  std::string mark();

  /// A text of up to `longest` pieces.
  std::string text(std::size_t longest);

  /// A text of about `bytes` bytes as people write: words of one script, some with points, some of both, and
  /// now and then a piece of anything.
  std::string prose(std::size_t bytes);

  /// A map as keyboards make them: single scalars that are characters of their own.
  LayoutMap keyboardMap();

  /// A map with keys of all kinds: small enough for its keys to come up in a text.
  LayoutMap map();

 private:
  std::uint64_t state_;
};

/// A scalar as UTF-8.
std::string utf8Of(char32_t scalar);

/// The bytes of a text in hexadecimal, for the message of a failed test.
std::string hexOf(const std::string& text);

}  // namespace lexwend
