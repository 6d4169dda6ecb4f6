// SPDX-License-Identifier: MIT
#include "core/converter.h"

#include <utility>

#include "core/characters.h"
#include "core/plain_converter.h"
#include "core/plain_table.h"
#include "core/utf8.h"

namespace lexwend {
namespace {

// Gathers converted text in one string.
class StringOutput : public TextOutput {
 public:
  explicit StringOutput(std::string& text) : text_(text) {}
  void take(std::string_view piece) override { text_ += piece; }

 private:
  std::string& text_;
};

}  // namespace

struct Converter::Tables {
  explicit Tables(const LayoutMap& layoutMap)
      : toHebrew(layoutMap.toHebrew, false), toEnglish(layoutMap.toEnglish, true) {
    if (!isPlain()) map = layoutMap;
  }

  bool isPlain() const { return toHebrew.isPlain() && toEnglish.isPlain(); }
  const PlainTable& from(bool sourceIsHebrew) const { return sourceIsHebrew ? toEnglish : toHebrew; }

  PlainTable toHebrew;
  PlainTable toEnglish;
  LayoutMap map;  // empty where the tables hold all of it
};

Converter::Converter(const LayoutMap& map) : tables_(std::make_shared<const Tables>(map)) {}

Converter::Result Converter::convert(std::string_view text, bool currentLayoutIsHebrew) const {
  std::string converted;
  // A Latin letter of one byte becomes a Hebrew letter of two. Memory that is not written costs nothing.
  converted.reserve(2 * text.size());
  StringOutput output(converted);
  Result result = convertTo(output, text, currentLayoutIsHebrew);
  result.text = std::move(converted);
  return result;
}

Converter::Result Converter::convertTo(TextOutput& output, std::string_view text,
                                       bool currentLayoutIsHebrew) const {
  Letters letters;
  findLetters(text, letters);
  const Direction direction = directionOf(letters, currentLayoutIsHebrew);
  Result result;
  result.targetIsHebrew = !direction.sourceIsHebrew;
  result.changed = convertPart(output, text, direction);
  return result;
}

void Converter::findLetters(std::string_view part, Letters& letters) const {
  if (tables_->isPlain()) {
    findPlainLetters(part, letters);
    return;
  }
  tokenize(part, [&](const Token& token) {
    if (token.isSpace) return;
    const LetterCounts counts = letterCounts(token.text);
    letters.hebrew = letters.hebrew || counts.hebrew != 0;
    letters.latin = letters.latin || counts.latin != 0;
  });
}

bool Converter::convertPart(TextOutput& output, std::string_view part, Direction direction) const {
  if (tables_->isPlain()) {
    return PlainConverter(tables_->from(direction.sourceIsHebrew), direction).convert(part, output);
  }
  const std::string converted = convertCharacters(part, direction);
  output.take(converted);
  return converted != part && !canonicallyEquivalent(part, converted);
}

std::size_t Converter::lastCut(std::string_view text, std::size_t searched, bool betweenWords) const {
  if (tables_->isPlain()) return lastPlainCut(text, searched, betweenWords);
  // A line feed is a character of its own, whatever stands beside it, except behind a carriage return.
  const std::size_t lineFeed = text.substr(searched).rfind('\n');
  return lineFeed == std::string_view::npos ? 0 : searched + lineFeed + 1;
}

// The conversion by any map, character by character.
std::string Converter::convertCharacters(std::string_view text, Direction direction) const {
  const bool sourceIsHebrew = direction.sourceIsHebrew;
  const bool isUniform = direction.isUniform;
  std::string converted;
  converted.reserve(text.size());
  tokenize(text, [&](const Token& token) {
    const LetterCounts counts = letterCounts(token.text);
    const bool hasLetters = counts.hebrew != 0 || counts.latin != 0;
    const bool bothScripts = counts.hebrew != 0 && counts.latin != 0;
    const bool hasSourceLetters = (sourceIsHebrew ? counts.hebrew : counts.latin) != 0;
    if (!token.isSpace && (hasSourceLetters || (!hasLetters && isUniform))) {
      convertToken(token.text, sourceIsHebrew, bothScripts, converted);
    } else {
      converted += token.text;
    }
  });
  return converted;
}

template <typename OnToken>
void Converter::tokenize(std::string_view text, OnToken onToken) {
  std::size_t runBegin = 0;
  std::size_t position = 0;
  bool runIsSpace = false;
  for (CharacterReader reader(text); !reader.atEnd();) {
    const std::string_view character = reader.next();
    const bool isSpace = isSpaceCharacter(character);
    if (isSpace != runIsSpace && position != runBegin) {
      onToken(Token{text.substr(runBegin, position - runBegin), runIsSpace});
      runBegin = position;
    }
    runIsSpace = isSpace;
    position += character.size();
  }
  if (position != runBegin) onToken(Token{text.substr(runBegin), runIsSpace});
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

void Converter::convertToken(std::string_view token, bool sourceIsHebrew, bool onlySourceLetters,
                             std::string& output) const {
  const CharacterMap& source = sourceIsHebrew ? tables_->map.toEnglish : tables_->map.toHebrew;
  for (CharacterReader reader(token); !reader.atEnd();) {
    const std::string_view character = reader.next();
    const bool isLookedUp =
        !onlySourceLetters || (sourceIsHebrew ? isHebrewLetter(character) : isLatinLetter(character));
    const bool isWellFormed = utf8UnitAt(character, 0).isWellFormed();
    const auto entry = isLookedUp && isWellFormed ? source.find(character) : source.end();
    output += entry == source.end() ? character : std::string_view(entry->second);
  }
}

}  // namespace lexwend
