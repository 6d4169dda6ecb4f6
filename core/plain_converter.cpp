// SPDX-License-Identifier: MIT
#include "core/plain_converter.h"

#include <algorithm>
#include <cstring>

#include "core/scalar_facts.h"

namespace lexwend {
namespace {

constexpr std::size_t kLongestUnit = 4;  // bytes

// The scalar that ends at `end`: its first byte starts a unit wherever it stands. Of no bytes where none
// does.
ScalarUnit scalarBefore(std::string_view text, std::size_t end) {
  for (std::size_t length = 1; length <= kLongestUnit && length <= end; ++length) {
    const ScalarUnit unit = scalarUnitAt(text, end - length);
    if (unit.length == length && (unit.facts & kIllFormed) == 0) return unit;
  }
  return {};
}

bool joinsWhatFollows(std::string_view text, std::size_t end) {
  return (scalarBefore(text, end).facts & kJoinsAfter) != 0;
}

bool joinsWhatPrecedes(std::string_view text, std::size_t begin) {
  return (scalarUnitAt(text, begin).facts & kJoinsBefore) != 0;
}

// The bytes of the ASCII character or the Hebrew letter at `position`, else 0.
std::size_t lengthOfLone(std::string_view text, std::size_t position) {
  if (position + 1 >= text.size()) return 0;
  const auto first = static_cast<unsigned char>(text[position]);
  const auto second = static_cast<unsigned char>(text[position + 1]);
  const bool isPair = first == 0xD7;
  if (first >= 0x80 && (!isPair || second < 0x90 || second > 0xAA)) return 0;
  return isPair ? 2 : 1;
}

// A space, unless a Prepend takes it into its own character.
bool partsWords(ScalarFacts facts, bool joined) {
  return (facts & kSpace) != 0 && (!joined || (facts & kControl) != 0);
}

bool hasHebrewLetter(std::string_view text, std::size_t begin, std::size_t end) {
  while (begin < end) {
    const void* const found = std::memchr(text.data() + begin, 0xD7, end - begin);
    if (found == nullptr) return false;
    begin = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
    if ((scalarUnitAt(text, begin).facts & kHebrewLetter) != 0 && !joinsWhatFollows(text, begin)) return true;
    ++begin;
  }
  return false;
}

bool hasLatinLetter(std::string_view text, std::size_t begin, std::size_t end) {
  const auto isLatin = [](char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); };
  for (std::size_t place = simd::skipToLatin(text.substr(0, end), begin); place < end; ++place) {
    if (isLatin(text[place]) && !joinsWhatFollows(text, place) && !joinsWhatPrecedes(text, place + 1)) {
      return true;
    }
  }
  return false;
}

// Whether a text may be cut here, when its words are no matter. Neither of two scalars that are never looked
// up cares for the other.
bool partsCharacters(std::string_view text, std::size_t place) {
  if ((text[place] & 0xC0) == 0x80) return false;  // maybe not the start of a unit
  const ScalarFacts before = scalarBefore(text, place).facts;
  const ScalarFacts after = scalarUnitAt(text, place).facts;
  if (((before | after) & kPlain) == 0) return true;
  return (before & kJoinsAfter) == 0 && (after & kJoinsBefore) == 0;
}

// Whether a word ends here, in white space that stands before `place`.
bool partsWordsAt(std::string_view text, std::size_t place) {
  const ScalarUnit space = scalarBefore(text, place);
  return partsWords(space.facts, joinsWhatFollows(text, place - space.length));
}

}  // namespace

std::size_t lastPlainCut(std::string_view text, std::size_t searched, bool betweenWords) {
  // The scalar behind a cut between characters must be there whole.
  const std::size_t behind = betweenWords ? 0 : kLongestUnit;
  for (std::size_t place = text.size() - std::min(behind, text.size());
       place > 0 && place + behind > searched; --place) {
    if (betweenWords ? partsWordsAt(text, place) : partsCharacters(text, place)) return place;
  }
  return 0;
}

void findPlainLetters(std::string_view text, Letters& letters) {
  constexpr std::size_t kStretch = 4096;  // mixed text shows both soon
  for (std::size_t begin = 0; begin < text.size() && !letters.both(); begin += kStretch) {
    const std::size_t end = std::min(begin + kStretch, text.size());
    letters.hebrew = letters.hebrew || hasHebrewLetter(text, begin, end);
    letters.latin = letters.latin || hasLatinLetter(text, begin, end);
  }
}

bool PlainConverter::convert(std::string_view text, TextOutput& output) {
  // Blocks are tried again behind what they could not convert; the longer they fail, the later.
  constexpr std::size_t kShortestPause = 32;
  constexpr std::size_t kLongestPause = 4096;
  std::size_t pause = kShortestPause;
  std::size_t nextBlock = 0;
  output_ = &output;
  changed_ = false;
  for (std::size_t position = 0; position < text.size();) {
    if (position >= nextBlock) {
      const std::size_t done = convertBlocks(text, position);
      pause = done > position ? kShortestPause : std::min(2 * pause, kLongestPause);
      nextBlock = done + pause;
      position = done;
    }
    position = direction_.isUniform
                   ? convertStretch(text, position, std::min(nextBlock, text.size()), Lookup::all)
                   : convertWord(text, position);
  }
  output.take({piece_.data(), used_});
  used_ = 0;
  return changed_;
}

// Converts a word, and puts out the white space that ends it. Returns how far it came.
std::size_t PlainConverter::convertWord(std::string_view text, std::size_t begin) {
  const Word word = readWord(text, begin);
  convertStretch(text, begin, word.end, lookupFor(word.letters));
  const std::size_t length = scalarUnitAt(text, word.end).length;
  keep(text.substr(word.end, length));
  return word.end + length;
}

// Reads up to the white space that ends the word, or the end of the text.
PlainConverter::Word PlainConverter::readWord(std::string_view text, std::size_t begin) {
  Word word{begin, {}};
  bool joined = false;
  ScalarUnit unit = scalarUnitAt(text, begin);
  while (unit.length != 0 && !partsWords(unit.facts, joined)) {
    const ScalarUnit next = scalarUnitAt(text, word.end + unit.length);
    if (!joined) {
      word.letters.hebrew = word.letters.hebrew || (unit.facts & kHebrewLetter) != 0;
      word.letters.latin =
          word.letters.latin || ((unit.facts & kLatinLetter) != 0 && (next.facts & kJoinsBefore) == 0);
    }
    joined = (unit.facts & kJoinsAfter) != 0;
    word.end += unit.length;
    unit = next;
  }
  return word;
}

PlainConverter::Lookup PlainConverter::lookupFor(Letters letters) const {
  if (letters.both()) return Lookup::letters;
  return (direction_.sourceIsHebrew ? letters.hebrew : letters.latin) ? Lookup::all : Lookup::none;
}

// Converts from `begin` to `end`; in a uniform text up to where a character starts. Returns how far it came.
std::size_t PlainConverter::convertStretch(std::string_view text, std::size_t begin, std::size_t end,
                                           Lookup lookup) {
  if (lookup == Lookup::none) {
    keep(text.substr(begin, end - begin));
    return end;
  }
  const ScalarFacts sourceLetter = direction_.sourceIsHebrew ? kHebrewLetter : kLatinLetter;
  bool joined = false;
  bool changed = false;
  char* output = piece_.data() + used_;
  const char* const full = piece_.data() + piece_.size() - kLongestUnit;
  while (begin < end || (joined && direction_.isUniform && begin < text.size())) {
    if (output > full) {
      output_->take({piece_.data(), static_cast<std::size_t>(output - piece_.data())});
      output = piece_.data();
    }
    if (lookup == Lookup::all && !joined) {
      // Two neighbours that are both ASCII or Hebrew letters leave each other alone. Nearly all text is that.
      std::size_t length = lengthOfLone(text, begin);
      while (length != 0 && begin < end && output <= full) {
        const std::size_t nextLength = lengthOfLone(text, begin + length);
        if (nextLength == 0) break;
        const PlainTable::Entry& entry =
            table_.ofLastByte(static_cast<unsigned char>(text[begin + length - 1]));
        std::memcpy(output, entry.bytes.data(), kLongestUnit);
        output += entry.length;
        changed = changed || entry.differs;
        begin += length;
        length = nextLength;
      }
      if (begin >= end || output > full) continue;
    }
    ScalarUnit unit = scalarUnitAt(text, begin);
    do {
      const ScalarUnit next = scalarUnitAt(text, begin + unit.length);
      const bool isCharacter = !joined && (next.facts & kJoinsBefore) == 0 && (unit.facts & kIllFormed) == 0;
      const bool isLookedUp = isCharacter && (lookup == Lookup::all || (unit.facts & sourceLetter) != 0);
      if (const PlainTable::Entry* const entry = isLookedUp ? table_.find(unit.scalar) : nullptr) {
        std::memcpy(output, entry->bytes.data(), kLongestUnit);
        output += entry->length;
        changed = changed || entry->differs;
      } else if (text.size() - begin >= kLongestUnit) {
        std::memcpy(output, text.data() + begin, kLongestUnit);  // faster than only the bytes of the unit
        output += unit.length;
      } else {
        output = std::copy_n(text.data() + begin, unit.length, output);
      }
      joined = (unit.facts & kJoinsAfter) != 0;
      begin += unit.length;
      unit = next;
    } while (begin < end && output <= full && (unit.facts & (kHebrewLetter | kLatinLetter)) == 0);
  }
  used_ = static_cast<std::size_t>(output - piece_.data());
  changed_ = changed_ || changed;
  return begin;
}

std::size_t PlainConverter::convertBlocks(std::string_view text, std::size_t begin) {
  const auto words = direction_.isUniform ? simd::Words::every : simd::Words::ofSource;
  while (text.size() - begin >= simd::kBlock) {
    makeRoom(simd::kRoomOfBlock);
    const simd::BlockProgress progress = simd::convertBlocks(table_.byteTable(), words, text.substr(begin),
                                                             piece_.data() + used_, piece_.size() - used_);
    used_ += progress.written;
    begin += progress.read;
    changed_ = changed_ || progress.changed;
    if (progress.read == 0) break;
  }
  return begin;
}

void PlainConverter::keep(std::string_view piece) {
  if (piece.size() > piece_.size() - used_) makeRoom(piece_.size());
  if (piece.size() > piece_.size()) {
    output_->take(piece);
    return;
  }
  std::copy(piece.begin(), piece.end(), piece_.begin() + static_cast<std::ptrdiff_t>(used_));
  used_ += piece.size();
}

// Hands on what is there when less than so many bytes are free.
void PlainConverter::makeRoom(std::size_t bytes) {
  if (piece_.size() - used_ >= bytes) return;
  output_->take({piece_.data(), used_});
  used_ = 0;
}

}  // namespace lexwend
