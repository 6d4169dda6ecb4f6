// SPDX-License-Identifier: MIT
#include "tests/core/reference_converter.h"

#include <cstdint>
#include <memory>
#include <stdexcept>

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

namespace lexwend::reference {
namespace {

struct Stretch {
  std::string text;
  bool isWellFormed = true;
};

void require(UErrorCode status) {
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

// Cuts a text into its longest well-formed stretches and the maximal subparts of what is ill-formed. UText
// shows the latter as U+FFFD over other bytes than those of U+FFFD.
std::vector<Stretch> stretches(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  UText* units = utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status);
  require(status);
  std::vector<Stretch> result;
  std::int64_t begin = 0;
  for (UChar32 scalar = utext_next32(units); scalar != U_SENTINEL; scalar = utext_next32(units)) {
    const std::int64_t end = utext_getNativeIndex(units);
    const std::string bytes(
        text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
    const bool isWellFormed = scalar != 0xFFFD || bytes == "\xEF\xBF\xBD";
    if (isWellFormed && !result.empty() && result.back().isWellFormed) {
      result.back().text += bytes;
    } else {
      result.push_back({bytes, isWellFormed});
    }
    begin = end;
  }
  utext_close(units);
  return result;
}

icu::BreakIterator& characterBreaks() {
  static const std::unique_ptr<icu::BreakIterator> kBreaks = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    require(status);
    return breaks;
  }();
  return *kBreaks;
}

// The stretches of a text, each well-formed one in its canonical decomposition: no mark passes an ill-formed
// byte.
std::vector<std::string> decomposed(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* form = icu::Normalizer2::getNFDInstance(status);
  require(status);
  std::vector<std::string> result;
  for (const Stretch& stretch : stretches(text)) {
    result.push_back(stretch.text);
    if (stretch.isWellFormed) {
      const icu::UnicodeString normal = form->normalize(icu::UnicodeString::fromUTF8(stretch.text), status);
      require(status);
      result.back().clear();
      normal.toUTF8String(result.back());
    }
  }
  return result;
}

// The first scalar of a character; negative when it is ill-formed.
UChar32 firstScalar(const std::string& character) {
  const icu::UnicodeString units = icu::UnicodeString::fromUTF8(character);
  const UChar32 first = units.char32At(0);
  return first == 0xFFFD && character.rfind("\xEF\xBF\xBD", 0) != 0 ? U_SENTINEL : first;
}

bool isHebrew(const std::string& character) {
  const UChar32 first = firstScalar(character);
  return first >= 0x5D0 && first <= 0x5EA;
}

bool isLatin(const std::string& character) {
  return character.size() == 1 &&
         std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz").find(character) !=
             std::string::npos;
}

bool isSpace(const std::string& character) {
  const UChar32 first = firstScalar(character);
  const bool isNewline =
      (first >= 0x0A && first <= 0x0D) || first == 0x85 || first == 0x2028 || first == 0x2029;
  return first >= 0 && (isNewline || u_hasBinaryProperty(first, UCHAR_WHITE_SPACE));
}

using Word = std::vector<std::string>;

// The characters in runs of one kind, white space or not.
std::vector<Word> words(const std::vector<std::string>& characters) {
  std::vector<Word> result;
  for (const std::string& character : characters) {
    if (result.empty() || isSpace(result.back().back()) != isSpace(character)) result.emplace_back();
    result.back().push_back(character);
  }
  return result;
}

struct Letters {
  int hebrew = 0;
  int latin = 0;
};

Letters lettersOf(const Word& word) {
  Letters letters;
  for (const std::string& character : word) {
    letters.hebrew += isHebrew(character) ? 1 : 0;
    letters.latin += isLatin(character) ? 1 : 0;
  }
  return letters;
}

}  // namespace

std::vector<std::string> characters(std::string_view text) {
  std::vector<std::string> result;
  for (const Stretch& stretch : stretches(text)) {
    if (!stretch.isWellFormed) {
      result.push_back(stretch.text);
      continue;
    }
    const icu::UnicodeString units = icu::UnicodeString::fromUTF8(stretch.text);
    icu::BreakIterator& breaks = characterBreaks();
    breaks.setText(units);
    for (std::int32_t begin = breaks.first(), end = breaks.next(); end != icu::BreakIterator::DONE;
         begin = end, end = breaks.next()) {
      std::string character;
      units.tempSubStringBetween(begin, end).toUTF8String(character);
      result.push_back(character);
    }
  }
  return result;
}

bool canonicallyEquivalent(std::string_view left, std::string_view right) {
  return decomposed(left) == decomposed(right);
}

Converter::Result convert(const LayoutMap& map, std::string_view text, bool currentLayoutIsHebrew) {
  const std::vector<Word> allWords = words(characters(text));
  Letters total;
  for (const Word& word : allWords) {
    if (!isSpace(word.front())) {
      total.hebrew += lettersOf(word).hebrew;
      total.latin += lettersOf(word).latin;
    }
  }

  bool sourceIsHebrew = currentLayoutIsHebrew;
  bool uniform = true;
  if (total.hebrew > 0 && total.latin == 0) {
    sourceIsHebrew = true;
  } else if (total.hebrew == 0 && total.latin > 0) {
    sourceIsHebrew = false;
  } else if (total.hebrew > 0 && total.latin > 0) {
    uniform = false;
  }

  std::string output;
  for (const Word& word : allWords) {
    const Letters letters = lettersOf(word);
    bool converts = false;
    bool onlySourceLetters = false;
    if (isSpace(word.front())) {
      converts = false;
    } else if (letters.hebrew > 0 && letters.latin > 0) {
      converts = true;
      onlySourceLetters = true;
    } else if (letters.hebrew > 0) {
      converts = sourceIsHebrew;
    } else if (letters.latin > 0) {
      converts = !sourceIsHebrew;
    } else {
      converts = uniform;
    }
    for (const std::string& character : word) {
      const CharacterMap& source = sourceIsHebrew ? map.toEnglish : map.toHebrew;
      const bool isSourceLetter = sourceIsHebrew ? isHebrew(character) : isLatin(character);
      const auto entry = source.find(character);
      const bool replaces = converts && firstScalar(character) >= 0 &&
                            (!onlySourceLetters || isSourceLetter) && entry != source.end();
      output += replaces ? entry->second : character;
    }
  }
  return {output, !sourceIsHebrew, decomposed(output) != decomposed(text)};
}

}  // namespace lexwend::reference
