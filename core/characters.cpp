// SPDX-License-Identifier: MIT
#include "core/characters.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include "core/utf8.h"

namespace lexwend {
namespace {

// The classes between which UAX #29 decides. Extended_Pictographic is a property of its own there; no scalar
// that has it has another class than "other".
enum class BreakClass : std::uint8_t {
  other,
  carriageReturn,
  lineFeed,
  control,
  extend,
  zeroWidthJoiner,
  regionalIndicator,
  prepend,
  spacingMark,
  hangulL,
  hangulV,
  hangulT,
  hangulLV,
  hangulLVT,
  pictograph,
};

BreakClass lookUpBreakClass(char32_t scalar) {
  const auto point = static_cast<UChar32>(scalar);
  switch (static_cast<UGraphemeClusterBreak>(u_getIntPropertyValue(point, UCHAR_GRAPHEME_CLUSTER_BREAK))) {
    case U_GCB_CR:
      return BreakClass::carriageReturn;
    case U_GCB_LF:
      return BreakClass::lineFeed;
    case U_GCB_CONTROL:
      return BreakClass::control;
    case U_GCB_EXTEND:
      return BreakClass::extend;
    case U_GCB_ZWJ:
      return BreakClass::zeroWidthJoiner;
    case U_GCB_REGIONAL_INDICATOR:
      return BreakClass::regionalIndicator;
    case U_GCB_PREPEND:
      return BreakClass::prepend;
    case U_GCB_SPACING_MARK:
      return BreakClass::spacingMark;
    case U_GCB_L:
      return BreakClass::hangulL;
    case U_GCB_V:
      return BreakClass::hangulV;
    case U_GCB_T:
      return BreakClass::hangulT;
    case U_GCB_LV:
      return BreakClass::hangulLV;
    case U_GCB_LVT:
      return BreakClass::hangulLVT;
    case U_GCB_OTHER:
    case U_GCB_E_BASE:  // this and the three below: no scalar has them since Unicode 11
    case U_GCB_E_BASE_GAZ:
    case U_GCB_E_MODIFIER:
    case U_GCB_GLUE_AFTER_ZWJ:
    case U_GCB_COUNT:
      break;
  }
  return u_hasBinaryProperty(point, UCHAR_EXTENDED_PICTOGRAPHIC) ? BreakClass::pictograph : BreakClass::other;
}

BreakClass breakClassOf(char32_t scalar) {
  constexpr std::size_t kTwoByteScalars =
      0x800;  // Latin, Greek, Cyrillic, Hebrew and Arabic with their marks
  static const auto kClasses = [] {
    std::array<BreakClass, kTwoByteScalars> classes{};
    for (std::size_t index = 0; index < classes.size(); ++index) {
      classes[index] = lookUpBreakClass(static_cast<char32_t>(index));
    }
    return classes;
  }();
  return scalar < kClasses.size() ? kClasses[scalar] : lookUpBreakClass(scalar);
}

// What the rules need to remember of a character that is still growing.
class GrowingCluster {
 public:
  explicit GrowingCluster(BreakClass first) { append(first); }

  /// Whether a scalar of class `next` still belongs to the character (UAX #29, GB3 to GB999).
  bool joins(BreakClass next) const {
    if (last_ == BreakClass::carriageReturn) {
      return next == BreakClass::lineFeed;  // GB3, GB4
    }
    if (isControl(last_) || isControl(next)) {
      return false;  // GB4, GB5
    }
    if (next == BreakClass::extend || next == BreakClass::zeroWidthJoiner ||
        next == BreakClass::spacingMark) {
      return true;  // GB9, GB9a
    }
    if (last_ == BreakClass::prepend) {
      return true;  // GB9b
    }
    switch (next) {
      case BreakClass::hangulL:
      case BreakClass::hangulLV:
      case BreakClass::hangulLVT:
        return last_ == BreakClass::hangulL;  // GB6
      case BreakClass::hangulV:
        return last_ == BreakClass::hangulL || last_ == BreakClass::hangulV ||
               last_ == BreakClass::hangulLV;  // GB6, GB7
      case BreakClass::hangulT:
        return last_ == BreakClass::hangulV || last_ == BreakClass::hangulLV ||
               last_ == BreakClass::hangulT || last_ == BreakClass::hangulLVT;  // GB7, GB8
      case BreakClass::pictograph:
        return emoji_ == Emoji::joined;  // GB11
      case BreakClass::regionalIndicator:
        return halfFlag_;  // GB12, GB13
      case BreakClass::other:
      case BreakClass::carriageReturn:
      case BreakClass::lineFeed:
      case BreakClass::control:
      case BreakClass::extend:
      case BreakClass::zeroWidthJoiner:
      case BreakClass::prepend:
      case BreakClass::spacingMark:
        break;
    }
    return false;  // GB999
  }

  void append(BreakClass next) {
    if (next == BreakClass::pictograph) {
      emoji_ = Emoji::open;
    } else if (next == BreakClass::zeroWidthJoiner && emoji_ == Emoji::open) {
      emoji_ = Emoji::joined;
    } else if (next != BreakClass::extend || emoji_ != Emoji::open) {
      emoji_ = Emoji::none;
    }
    halfFlag_ = next == BreakClass::regionalIndicator && !halfFlag_;
    last_ = next;
  }

 private:
  // How far the character ends in "pictograph, Extend*, ZWJ".
  enum class Emoji : std::uint8_t { none, open, joined };

  static bool isControl(BreakClass breakClass) {
    return breakClass == BreakClass::control || breakClass == BreakClass::carriageReturn ||
           breakClass == BreakClass::lineFeed;
  }

  BreakClass last_ = BreakClass::other;
  Emoji emoji_ = Emoji::none;
  bool halfFlag_ = false;  // it ends in an odd number of regional indicators
};

// Gives the canonical decomposition of a text piece by piece: a starter with all the marks that follow it, in
// canonical order. A mark run of any length is ordered in linear time, which a plain insertion does not do.
class DecomposedPieces {
 public:
  explicit DecomposedPieces(std::string_view text) : text_(text) {}

  /// Puts the next piece in `piece`; false at the end. Bytes that are not well-formed are pieces of their
  /// own.
  bool next(std::u32string& piece) {
    piece.clear();
    if (heldStarter_) {
      piece.push_back(*heldStarter_);
      heldStarter_.reset();
    }
    while (const auto scalar = nextScalar()) {
      if (combiningClass(*scalar) == 0 && !piece.empty()) {
        heldStarter_ = scalar;
        break;
      }
      piece.push_back(*scalar);
    }
    orderMarks(piece);
    return !piece.empty();
  }

 private:
  static constexpr char32_t kIllFormedByte = 0x110000;  // above every scalar; the byte is added to it

  static std::uint8_t combiningClass(char32_t scalar) {
    return scalar < kIllFormedByte ? u_getCombiningClass(static_cast<UChar32>(scalar)) : 0;
  }

  std::optional<char32_t> nextScalar() {
    if (given_ == decomposed_.size()) {
      if (position_ == text_.size()) return std::nullopt;
      decomposeNextUnit();
    }
    return decomposed_[given_++];
  }

  void decomposeNextUnit() {
    decomposed_.clear();
    given_ = 0;
    const Utf8Unit unit = utf8UnitAt(text_, position_);
    if (unit.isWellFormed()) {
      decompose(unit.scalar);
    } else {
      for (const char byte : text_.substr(position_, unit.length)) {
        decomposed_.push_back(kIllFormedByte + static_cast<unsigned char>(byte));
      }
    }
    position_ += unit.length;
  }

  void decompose(char32_t scalar) {
    constexpr std::int32_t kRoom = 32;  // UTF-16 units; the longest canonical decomposition has four scalars
    std::array<UChar, kRoom> units{};
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* form = unorm2_getNFDInstance(&status);
    const std::int32_t length =
        unorm2_getDecomposition(form, static_cast<UChar32>(scalar), units.data(), kRoom, &status);
    if (U_FAILURE(status)) {
      std::abort();  // the tables are compiled into the library: only a broken one gets here
    }
    if (length < 0) {
      decomposed_.push_back(scalar);
      return;
    }
    for (std::int32_t index = 0; index < length;) {
      UChar32 part = 0;
      U16_NEXT(units.data(), index, length, part);
      decomposed_.push_back(static_cast<char32_t>(part));
    }
  }

  // The canonical ordering algorithm of UAX #15 as a stable counting sort over the 256 combining classes.
  void orderMarks(std::u32string& piece) {
    const std::size_t begin = !piece.empty() && combiningClass(piece[0]) == 0 ? 1 : 0;
    const auto marks = piece.begin() + static_cast<std::ptrdiff_t>(begin);
    if (std::is_sorted(marks, piece.end(), [](char32_t left, char32_t right) {
          return combiningClass(left) < combiningClass(right);
        })) {
      return;
    }
    std::array<std::size_t, 256> places{};
    for (auto mark = marks; mark != piece.end(); ++mark) ++places[combiningClass(*mark)];
    std::size_t place = begin;
    for (std::size_t& entry : places) {
      const std::size_t count = entry;
      entry = place;
      place += count;
    }
    unordered_ = piece;
    for (std::size_t index = begin; index < unordered_.size(); ++index) {
      piece[places[combiningClass(unordered_[index])]++] = unordered_[index];
    }
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::u32string decomposed_;  // of the unit before `position_`
  std::size_t given_ = 0;      // how many scalars of it were given out
  std::optional<char32_t> heldStarter_;
  std::u32string unordered_;
};

// The number of leading bytes that two texts share, cut back to a place where a unit starts in both.
std::size_t sharedPrefix(std::string_view left, std::string_view right) {
  const std::size_t shorter = left.size() < right.size() ? left.size() : right.size();
  std::size_t shared = 0;
  while (shared < shorter && left[shared] == right[shared]) ++shared;
  // A unit starts at every byte that is not a trail byte (80 to BF).
  const auto isTrail = [](std::string_view text, std::size_t position) {
    return position < text.size() && (static_cast<unsigned char>(text[position]) & 0xC0) == 0x80;
  };
  while (shared > 0 && (isTrail(left, shared) || isTrail(right, shared))) --shared;
  return shared;
}

// Applies a case mapping of ICU to the well-formed stretches of a text.
template <typename MapCase>
std::string mapCase(std::string_view text, MapCase mapStretch) {
  std::string result;
  result.reserve(text.size());
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t begin = position;
    Utf8Unit unit;
    while (position < text.size() && (unit = utf8UnitAt(text, position)).isWellFormed()) {
      position += unit.length;
    }
    result += mapStretch(text.substr(begin, position - begin));
    if (position < text.size()) {
      result += text.substr(position, unit.length);
      position += unit.length;
    }
  }
  return result;
}

using IcuCaseMapping = void (*)(const char*, std::uint32_t, icu::StringPiece, icu::ByteSink&, icu::Edits*,
                                UErrorCode&);

std::string mapStretch(IcuCaseMapping mapping, std::string_view stretch) {
  constexpr const char* kRootLocale = "";
  std::string mapped;
  icu::StringByteSink<std::string> sink(&mapped);
  UErrorCode status = U_ZERO_ERROR;
  mapping(kRootLocale, 0, icu::StringPiece(stretch.data(), static_cast<std::int32_t>(stretch.size())), sink,
          nullptr, status);
  return U_SUCCESS(status) ? mapped : std::string(stretch);
}

std::string lowercased(std::string_view text) {
  return mapCase(text,
                 [](std::string_view stretch) { return mapStretch(&icu::CaseMap::utf8ToLower, stretch); });
}

}  // namespace

std::size_t CharacterReader::lengthOfCluster() const {
  const Utf8Unit first = utf8UnitAt(text_, position_);
  std::size_t end = position_ + first.length;
  if (!first.isWellFormed()) return first.length;
  GrowingCluster cluster(breakClassOf(first.scalar));
  while (end < text_.size()) {
    const Utf8Unit unit = utf8UnitAt(text_, end);
    if (!unit.isWellFormed()) break;
    const BreakClass next = breakClassOf(unit.scalar);
    if (!cluster.joins(next)) break;
    cluster.append(next);
    end += unit.length;
  }
  return end - position_;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (CharacterReader reader(text); !reader.atEnd(); reader.next()) ++count;
  return count;
}

bool canonicallyEquivalent(std::string_view left, std::string_view right) {
  // What both texts begin with may be left out, marks included: canonical ordering keeps marks of one class
  // in the order of the text and lets those of different classes pass each other, so equal beginnings cancel.
  const std::size_t shared = sharedPrefix(left, right);
  DecomposedPieces leftPieces(left.substr(shared));
  DecomposedPieces rightPieces(right.substr(shared));
  std::u32string leftPiece;
  std::u32string rightPiece;
  bool more = true;
  while (more) {
    more = leftPieces.next(leftPiece);
    rightPieces.next(rightPiece);
    if (leftPiece != rightPiece) return false;
  }
  return true;
}

std::string uppercased(std::string_view text) {
  return mapCase(text,
                 [](std::string_view stretch) { return mapStretch(&icu::CaseMap::utf8ToUpper, stretch); });
}

bool isUppercaseCharacter(std::string_view character) {
  const auto scalar = singleScalar(character);
  if (scalar && u_hasBinaryProperty(static_cast<UChar32>(*scalar), UCHAR_UPPERCASE)) return true;
  const auto isCased = [&] {
    return (scalar && u_hasBinaryProperty(static_cast<UChar32>(*scalar), UCHAR_CASED)) ||
           !canonicallyEquivalent(lowercased(character), character);
  };
  return canonicallyEquivalent(uppercased(character), character) && isCased();
}

bool isSpaceCharacter(std::string_view character) {
  if (character.empty()) return false;
  const auto first = static_cast<unsigned char>(character[0]);
  if (first < 0x80) return first == ' ' || (first >= '\t' && first <= '\r');
  if (isHebrewLetter(character)) return false;
  const Utf8Unit unit = utf8UnitAt(character, 0);
  return unit.isWellFormed() && u_isUWhiteSpace(static_cast<UChar32>(unit.scalar));
}

bool isLetterCharacter(std::string_view character) {
  if (character.empty()) return false;
  const Utf8Unit unit = utf8UnitAt(character, 0);
  return unit.isWellFormed() && u_isUAlphabetic(static_cast<UChar32>(unit.scalar));
}

}  // namespace lexwend
