// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lexwend {

/// What one physical key types in a layout, in UTF-8. Each text may be empty (a dead key) or longer than one
/// character.
struct KeyChars {
  std::string plain;    ///< With no modifier.
  std::string shifted;  ///< With Shift alone.

  friend bool operator==(const KeyChars&, const KeyChars&) = default;
};

/// Virtual key code (of a Macintosh keyboard, as in Carbon's Events.h) to what the key types.
using KeyTable = std::map<int, KeyChars>;

/// What the keys of the enabled layouts type, at least those of `LayoutMap::keyCodes`. A table is absent when
/// no layout for its language is enabled or the layout has no data. An empty table is not an absent one.
struct KeyTables {
  std::optional<KeyTable> latin;   ///< Of the layout for "en".
  std::optional<KeyTable> hebrew;  ///< Of the layout for "he".
};

/// Character to string, both UTF-8. Iteration is in scalar order, which is the byte order of UTF-8.
using CharacterMap = std::map<std::string, std::string, std::less<>>;

/// For each character of the Latin layout, what the Hebrew layout types on the same physical key, and the
/// reverse.
///
/// A plain value. It does not change after it is built, so any thread may read it. The two maps need not be
/// inverses of each other: capitals have no way back, and where two keys type the same character the first
/// pairing is kept.
class LayoutMap {
 public:
  CharacterMap toHebrew;   ///< A character of the Latin layout to what the Hebrew layout types on its key.
  CharacterMap toEnglish;  ///< A character of the Hebrew layout to what the Latin layout types on its key.
  bool builtFromSystem = false;  ///< From the enabled layouts; false means from the built-in table.

  /// The maps of two layouts, or `fallback()` when a key table is absent. Maps that come out empty stay
  /// empty.
  static LayoutMap build(const KeyTables& tables);

  /// The maps of the built-in table: the US layout and the Hebrew layout of SI-1452 as in macOS.
  static LayoutMap fallback();

  /// The virtual key codes of the 47 keys that type characters, ascending.
  static const std::vector<int>& keyCodes();

  /// What the US layout types on a key of `keyCodes` without modifiers; none for every other code.
  static std::optional<std::string> usCharacter(std::uint32_t keyCode);

  friend bool operator==(const LayoutMap&, const LayoutMap&) = default;
};

}  // namespace lexwend
