// SPDX-License-Identifier: MIT
#include "core/plain_table.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "core/scalar_facts.h"
#include "core/utf8.h"

namespace lexwend {
namespace {

// The byte that stands for a scalar in a ByteTable.
std::optional<std::uint8_t> byteOf(char32_t scalar) {
  if (scalar < 0x80) return static_cast<std::uint8_t>(scalar);
  if (scalar >= 0x5C0 && scalar <= 0x5FF) return static_cast<std::uint8_t>(0x80 | (scalar & 0x3F));
  return std::nullopt;
}

}  // namespace

PlainTable::PlainTable(const CharacterMap& map, bool sourceIsHebrew) : byteTable_(sourceIsHebrew) {
  entries_.reserve(map.size());
  for (std::size_t byte = 0; byte < lastBytes_.size(); ++byte) {
    const auto last = static_cast<char>(byte);
    lastBytes_[byte] = byte < 0x80 ? Entry{{last}, 1, false} : Entry{{'\xD7', last}, 2, false};
  }
  for (const auto& [key, value] : map) {
    const auto keyScalar = singleScalar(key);
    const auto valueScalar = singleScalar(value);
    constexpr ScalarFacts kNeeded = kPlain | kCanonical;
    if (!keyScalar || !valueScalar || (scalarFacts(*keyScalar) & kNeeded) != kNeeded ||
        (scalarFacts(*valueScalar) & kCanonical) == 0 ||
        entries_.size() == std::numeric_limits<std::uint8_t>::max()) {
      isPlain_ = false;
      return;
    }
    // White space is never looked up: it stands between the words.
    if ((scalarFacts(*keyScalar) & kSpace) == 0) add(*keyScalar, *valueScalar, value);
  }
}

void PlainTable::add(char32_t key, char32_t value, std::string_view bytes) {
  Entry entry;
  std::copy(bytes.begin(), bytes.end(), entry.bytes.begin());
  entry.length = static_cast<std::uint8_t>(bytes.size());
  entry.differs = key != value;
  entries_.push_back(entry);
  const auto place = static_cast<std::uint8_t>(entries_.size());
  if (key < kShortScalars) {
    shortScalars_[key] = place;
  } else {
    longScalars_.emplace_back(key, place);  // a map is in scalar order
  }
  const auto source = byteOf(key);
  if (!source) return;
  lastBytes_[*source] = entry;
  if (!entry.differs) return;
  // In a block towards Hebrew only ASCII changes, and may become two bytes; in one towards English two bytes
  // may become ASCII.
  const auto target = byteOf(value);
  const bool fitsBlocks = target && (byteTable_.sourceIsHebrew() ? value < 0x80 : key < 0x80);
  byteTable_.set(*source, fitsBlocks ? *target : simd::ByteTable::kNotInBlocks);
}

const PlainTable::Entry* PlainTable::findLong(char32_t scalar) const {
  const auto entry =
      std::lower_bound(longScalars_.begin(), longScalars_.end(), scalar,
                       [](const auto& known, char32_t sought) { return known.first < sought; });
  return entry == longScalars_.end() || entry->first != scalar ? nullptr : &entries_[entry->second - 1U];
}

}  // namespace lexwend
