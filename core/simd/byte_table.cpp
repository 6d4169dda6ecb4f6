// SPDX-License-Identifier: MIT
#include "core/simd/block_converter.h"

namespace lexwend::simd {

void ByteTable::set(std::uint8_t source, std::uint8_t target) {
  const auto high = static_cast<std::uint8_t>(source >> 4U);
  std::size_t place = 0;
  while (place < used_ && rows_[place].high != high) ++place;
  if (place == used_) rows_[used_++].high = high;
  rows_[place].differences[source & 15U] = static_cast<std::uint8_t>(source ^ target);
}

}  // namespace lexwend::simd
