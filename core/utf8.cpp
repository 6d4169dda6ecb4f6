// SPDX-License-Identifier: MIT
#include "core/utf8.h"

namespace lexwend {
std::optional<char32_t> singleScalar(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const Utf8Unit unit = utf8UnitAt(text, 0);
  return unit.length == text.size() && unit.isWellFormed() ? std::optional(unit.scalar) : std::nullopt;
}

}  // namespace lexwend
