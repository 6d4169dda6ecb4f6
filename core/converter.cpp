// SPDX-License-Identifier: MIT
#include "core/converter.h"

#include <array>
#include <cstdint>
#include <utility>

#include "core/characters.h"
#include "core/utf8.h"

namespace lexwend {
namespace {

// One direction of the map, made for looking up. Nearly every key is one scalar of one or two bytes; those
// are found by their scalar, the rest in a map. Refers to the strings of the map that it is made from.
class LookupTable {
 public:
  explicit LookupTable(const CharacterMap& map) {
    for (const auto& [key, value] : map) {
      const auto scalar = singleScalar(key);
      if (scalar && *scalar < kShortScalars) {
        values_.emplace_back(value);
        shortScalars_[*scalar] = static_cast<std::uint16_t>(values_.size());
      } else {
        others_.emplace(key, value);
      }
    }
  }

  /// The entry of a character, or the character itself when it has none.
  std::string_view valueOr(std::string_view character) const {
    if (const std::size_t scalar = shortScalar(character); scalar != kShortScalars) {
      const std::uint16_t place = shortScalars_[scalar];
      return place == 0 ? character : values_[place - 1];
    }
    if (others_.empty() || !utf8UnitAt(character, 0).scalar) return character;
    const auto entry = others_.find(character);
    return entry == others_.end() ? character : entry->second;
  }

 private:
  static constexpr std::size_t kShortScalars = 0x800;  // the scalars of one and two bytes

  /// The scalar of a character that is one scalar of one or two bytes, else kShortScalars.
  static std::size_t shortScalar(std::string_view character) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(character[index]); };
    if (character.size() == 1 && byte(0) < 0x80) return byte(0);
    // Behind one of these lead bytes the second byte can only be its trail byte: without one the character is
    // the lead byte alone, ill-formed.
    if (character.size() == 2 && byte(0) >= 0xC2 && byte(0) <= 0xDF) {
      return static_cast<std::size_t>(byte(0) & 0x1F) << 6 | (byte(1) & 0x3F);
    }
    return kShortScalars;
  }

  std::array<std::uint16_t, kShortScalars> shortScalars_{};  // 1 + the place in values_, 0 for none
  std::vector<std::string_view> values_;
  std::map<std::string_view, std::string_view> others_;
};

}  // namespace

struct Converter::Tables {
  explicit Tables(LayoutMap layoutMap) : map(std::move(layoutMap)) {}

  LayoutMap map;
  LookupTable toHebrew{map.toHebrew};
  LookupTable toEnglish{map.toEnglish};
};

Converter::Converter(LayoutMap map) : tables_(std::make_shared<const Tables>(std::move(map))) {}

std::vector<Converter::Token> Converter::tokenize(std::string_view text) {
  std::vector<Token> tokens;
  std::size_t runBegin = 0;
  std::size_t position = 0;
  bool runIsSpace = false;
  for (CharacterReader reader(text); !reader.atEnd();) {
    const std::string_view character = reader.next();
    const bool isSpace = isSpaceCharacter(character);
    if (isSpace != runIsSpace && position != runBegin) {
      tokens.push_back({text.substr(runBegin, position - runBegin), runIsSpace});
      runBegin = position;
    }
    runIsSpace = isSpace;
    position += character.size();
  }
  if (position != runBegin) {
    tokens.push_back({text.substr(runBegin), runIsSpace});
  }
  return tokens;
}

Converter::LetterCounts Converter::letterCounts(std::string_view text) {
  LetterCounts counts;
  for (CharacterReader reader(text); !reader.atEnd();) {
    const std::string_view character = reader.next();
    if (isHebrewLetter(character)) {
      ++counts.hebrew;
    } else if (isLatinLetter(character)) {
      ++counts.latin;
    }
  }
  return counts;
}

Converter::Result Converter::convert(std::string_view text, bool currentLayoutIsHebrew) const {
  const std::vector<Token> tokens = tokenize(text);
  std::vector<LetterCounts> countsOf(tokens.size());
  LetterCounts total;
  for (std::size_t index = 0; index < tokens.size(); ++index) {
    if (!tokens[index].isSpace) {
      countsOf[index] = letterCounts(tokens[index].text);
      total.hebrew += countsOf[index].hebrew;
      total.latin += countsOf[index].latin;
    }
  }

  const bool uniform = total.hebrew == 0 || total.latin == 0;
  const bool hasLetters = total.hebrew != 0 || total.latin != 0;
  const bool sourceIsHebrew = uniform && hasLetters ? total.hebrew != 0 : currentLayoutIsHebrew;

  Result result;
  result.targetIsHebrew = !sourceIsHebrew;
  // A Latin letter of one byte becomes a Hebrew letter of two.
  result.text.reserve(text.size() + (sourceIsHebrew ? 0 : total.latin));
  for (std::size_t index = 0; index < tokens.size(); ++index) {
    const Token& token = tokens[index];
    const bool hasHebrew = countsOf[index].hebrew != 0;
    const bool hasLatin = countsOf[index].latin != 0;
    const bool bothScripts = hasHebrew && hasLatin;
    const bool isSourceWord = sourceIsHebrew ? hasHebrew : hasLatin;
    const bool hasNoLetters = !hasHebrew && !hasLatin;
    if (!token.isSpace && (bothScripts || isSourceWord || (hasNoLetters && uniform))) {
      convertToken(token.text, sourceIsHebrew, bothScripts, result.text);
    } else {
      result.text += token.text;
    }
  }
  result.changed = !canonicallyEquivalent(text, result.text);
  return result;
}

void Converter::convertToken(std::string_view token, bool sourceIsHebrew, bool onlySourceLetters,
                             std::string& output) const {
  const LookupTable& source = sourceIsHebrew ? tables_->toEnglish : tables_->toHebrew;
  for (CharacterReader reader(token); !reader.atEnd();) {
    const std::string_view character = reader.next();
    const bool isLookedUp =
        !onlySourceLetters || (sourceIsHebrew ? isHebrewLetter(character) : isLatinLetter(character));
    output += isLookedUp ? source.valueOr(character) : character;
  }
}

}  // namespace lexwend
