// SPDX-License-Identifier: MIT
#include "core/layout_map.h"

#include <array>

#include <unicode/uchar.h>

#include "core/characters.h"
#include "core/utf8.h"

namespace lexwend {
namespace {

struct CharacterPair {
  const char* latin;
  const char* hebrew;
};

// In this order: where two rows had the same Hebrew side, the first would be the way back.
constexpr std::array<CharacterPair, 42> kBuiltInTable{{
    // the letter rows and the punctuation keys beside them, without Shift
    {"q", "/"},
    {"w", "\u05F3"},  // the geresh, not the apostrophe
    {"e", "\u05E7"},
    {"r", "\u05E8"},
    {"t", "\u05D0"},
    {"y", "\u05D8"},
    {"u", "\u05D5"},
    {"i", "\u05DF"},
    {"o", "\u05DD"},
    {"p", "\u05E4"},
    {"[", "]"},
    {"]", "["},
    {"a", "\u05E9"},
    {"s", "\u05D3"},
    {"d", "\u05D2"},
    {"f", "\u05DB"},
    {"g", "\u05E2"},
    {"h", "\u05D9"},
    {"j", "\u05D7"},
    {"k", "\u05DC"},
    {"l", "\u05DA"},
    {";", "\u05E3"},
    {"'", ","},
    {"z", "\u05D6"},
    {"x", "\u05E1"},
    {"c", "\u05D1"},
    {"v", "\u05D4"},
    {"b", "\u05E0"},
    {"n", "\u05DE"},
    {"m", "\u05E6"},
    {",", "\u05EA"},
    {".", "\u05E5"},
    {"/", "."},
    {"`", ";"},
    // with Shift
    {"(", ")"},
    {")", "("},
    {"<", ">"},
    {">", "<"},
    {"{", "}"},
    {"}", "{"},
    {"\"", "\u05F4"},  // the gershayim
    {"&", "\u20AA"},   // the new sheqel sign
}};

struct UsKey {
  int keyCode;
  char character;
};

// Left out of 0 to 50: the ISO section key (10), Return (36), Tab (48) and Space (49).
constexpr std::array<UsKey, 47> kUsKeys{{
    {0, 'a'},   {1, 's'},  {2, 'd'},  {3, 'f'},  {4, 'h'},  {5, 'g'},   {6, 'z'},  {7, 'x'},
    {8, 'c'},   {9, 'v'},  {11, 'b'}, {12, 'q'}, {13, 'w'}, {14, 'e'},  {15, 'r'}, {16, 'y'},
    {17, 't'},  {18, '1'}, {19, '2'}, {20, '3'}, {21, '4'}, {22, '6'},  {23, '5'}, {24, '='},
    {25, '9'},  {26, '7'}, {27, '-'}, {28, '8'}, {29, '0'}, {30, ']'},  {31, 'o'}, {32, 'u'},
    {33, '['},  {34, 'i'}, {35, 'p'}, {37, 'l'}, {38, 'j'}, {39, '\''}, {40, 'k'}, {41, ';'},
    {42, '\\'}, {43, ','}, {44, '/'}, {45, 'n'}, {46, 'm'}, {47, '.'},  {50, '`'},
}};

// One scalar that can stand for a key: no space, no mark, no control, nothing private or unassigned.
bool isMappable(const std::string& text) {
  const auto scalar = singleScalar(text);
  if (!scalar || u_isUWhiteSpace(static_cast<UChar32>(*scalar))) return false;
  const std::uint32_t category = U_GET_GC_MASK(static_cast<UChar32>(*scalar));
  constexpr std::uint32_t kUnmappable = U_GC_MN_MASK | U_GC_MC_MASK | U_GC_ME_MASK | U_GC_CC_MASK |
                                        U_GC_CF_MASK | U_GC_CS_MASK | U_GC_CO_MASK | U_GC_CN_MASK;
  return (category & kUnmappable) == 0;
}

// What a key types in both layouts.
struct Key {
  KeyChars latin;
  KeyChars hebrew;
};

// The character keys that stand in both tables, ascending.
std::vector<Key> keysOf(const KeyTables& tables) {
  std::vector<Key> keys;
  for (const int keyCode : LayoutMap::keyCodes()) {
    const auto latin = tables.latin->find(keyCode);
    const auto hebrew = tables.hebrew->find(keyCode);
    if (latin != tables.latin->end() && hebrew != tables.hebrew->end()) {
      keys.push_back({latin->second, hebrew->second});
    }
  }
  return keys;
}

// Every insertion leaves an existing entry alone, so that the unshifted pairings win over the shifted ones
// and the lower key code wins within each.
void pairPlainCharacters(const std::vector<Key>& keys, LayoutMap& map) {
  for (const Key& key : keys) {
    if (!isMappable(key.latin.plain) || !isMappable(key.hebrew.plain)) continue;
    map.toHebrew.try_emplace(key.latin.plain, key.hebrew.plain);
    map.toEnglish.try_emplace(key.hebrew.plain, key.latin.plain);
  }
}

void pairShiftedCharacters(const std::vector<Key>& keys, LayoutMap& map) {
  for (const Key& key : keys) {
    const std::string& typed = key.latin.shifted;
    if (!isMappable(typed)) continue;
    if (isLetterCharacter(typed)) {
      // A capital means the letter of its key, whatever the Hebrew layout types there with Shift; no Hebrew
      // character leads back to a capital.
      if (isMappable(key.hebrew.plain)) map.toHebrew.try_emplace(typed, key.hebrew.plain);
    } else if (isMappable(key.hebrew.shifted)) {
      map.toHebrew.try_emplace(typed, key.hebrew.shifted);
      map.toEnglish.try_emplace(key.hebrew.shifted, typed);
    }
  }
}

}  // namespace

LayoutMap LayoutMap::build(const KeyTables& tables) {
  if (!tables.latin || !tables.hebrew) return fallback();
  LayoutMap map;
  map.builtFromSystem = true;
  const std::vector<Key> keys = keysOf(tables);
  pairPlainCharacters(keys, map);
  pairShiftedCharacters(keys, map);
  return map;
}

LayoutMap LayoutMap::fallback() {
  LayoutMap map;
  for (const CharacterPair& pair : kBuiltInTable) {
    map.toHebrew.insert_or_assign(pair.latin, pair.hebrew);
    map.toEnglish.try_emplace(pair.hebrew, pair.latin);
    if (isLetterCharacter(pair.latin)) map.toHebrew.insert_or_assign(uppercased(pair.latin), pair.hebrew);
  }
  return map;
}

const std::vector<int>& LayoutMap::keyCodes() {
  static const auto kKeyCodes = [] {
    std::vector<int> codes;
    codes.reserve(kUsKeys.size());
    for (const UsKey& key : kUsKeys) codes.push_back(key.keyCode);
    return codes;
  }();
  return kKeyCodes;
}

std::optional<std::string> LayoutMap::usCharacter(std::uint32_t keyCode) {
  for (const UsKey& key : kUsKeys) {
    if (static_cast<std::uint32_t>(key.keyCode) == keyCode) return std::string(1, key.character);
  }
  return std::nullopt;
}

}  // namespace lexwend
