// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "core/layout_map.h"
#include "core/simd/block_converter.h"

namespace lexwend {

/// One direction of a plain map, made for looking up scalars.
///
/// A map is plain when each key and each value is one scalar, and neither joins its neighbours under
/// conditions of its own nor is canonically equivalent to anything else. The maps of keyboards are. Then no
/// text has to be cut into characters: a scalar is one exactly when the scalar before it is no Prepend and
/// the one after it no Extend, ZWJ or SpacingMark. And a text is changed exactly when its bytes are.
class PlainTable {
 public:
  /// What a scalar becomes, in UTF-8.
  struct Entry {
    std::array<char, 4> bytes{};
    std::uint8_t length = 0;
    bool differs = false;  ///< From its key.
  };

  /// Takes the entries that a lookup may find. `isPlain()` tells whether it could take them all.
  PlainTable(const CharacterMap& map, bool sourceIsHebrew);

  bool isPlain() const { return isPlain_; }

  /// The entry of a scalar that is a character of its own; null when it has none.
  const Entry* find(char32_t scalar) const {
    if (scalar < kShortScalars) {
      return shortScalars_[scalar] == 0 ? nullptr : &entries_[shortScalars_[scalar] - 1U];
    }
    return findLong(scalar);
  }

  /// What an ASCII character or a Hebrew letter becomes, by its last byte, when it is a character of its own.
  const Entry& ofLastByte(unsigned char byte) const { return lastBytes_[byte]; }

  /// The same entries for whole blocks of bytes.
  const simd::ByteTable& byteTable() const { return byteTable_; }

 private:
  static constexpr std::size_t kShortScalars = 0x800;  // those of one and two bytes

  void add(char32_t key, char32_t value, std::string_view bytes);
  const Entry* findLong(char32_t scalar) const;

  std::array<std::uint8_t, kShortScalars> shortScalars_{};  // 1 + the place in entries_, 0 for none
  std::vector<Entry> entries_;
  std::vector<std::pair<char32_t, std::uint8_t>> longScalars_;  // with the same places, ascending
  std::array<Entry, 0xC0> lastBytes_{};
  simd::ByteTable byteTable_;
  bool isPlain_ = true;
};

}  // namespace lexwend
