// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace lexwend {

/// One scalar of a text, or one maximal subpart of an ill-formed subsequence (The Unicode Standard, chapter
/// 3, "Conformance", U+FFFD Substitution of Maximal Subparts). Any thread.
struct Utf8Unit {
  std::optional<char32_t> scalar;  ///< None when ill-formed.
  std::size_t length = 0;          ///< Bytes, at least 1.
};

/// The unit at `position`, which must be a place where a unit starts, inside the text.
Utf8Unit utf8UnitAt(std::string_view text, std::size_t position);

/// The one scalar that the text consists of; none when it is empty, longer, or ill-formed.
std::optional<char32_t> singleScalar(std::string_view text);

}  // namespace lexwend
