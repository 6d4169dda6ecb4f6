// SPDX-License-Identifier: MIT
#include "bench/texts.h"

#include <cstdint>

namespace lexwend {
namespace {

// SplitMix64: short, and the same on every machine and library.
class Dice {
 public:
  std::size_t below(std::size_t bound) {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>((mixed ^ mixed >> 31U) % bound);
  }

  template <typename Choices>
  std::string_view of(const Choices& choices) {
    return choices[below(std::size(choices))];
  }

 private:
  std::uint64_t state_ = 20'240'229;
};

constexpr std::string_view kHebrew[] = {"א", "ב", "ג", "ד", "ה", "ו", "ז", "ח", "ט", "י", "ך", "כ", "ל", "ם",
                                        "מ", "ן", "נ", "ס", "ע", "ף", "פ", "ץ", "צ", "ק", "ר", "ש", "ת"};
constexpr std::string_view kPoints[] = {"\u05B0", "\u05B4", "\u05B5", "\u05B6", "\u05B7",
                                        "\u05B8", "\u05BC", "\u05C1", "\u05B9"};
constexpr std::string_view kEnds[] = {" ", " ", " ", " ", " ", ", ", ". ", "? ", " - ", "\n"};
constexpr std::string_view kEmoji[] = {"👩\u200D👩\u200D👧",   "🇮🇱", "👍🏽", "❤️",
                                       "🏳️\u200D🌈", "😀"};
constexpr std::string_view kMarks[] = {"\u0301", "\u0323", "\u0308", "\u05B0", "\u0327"};
constexpr std::string_view kDigits[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};

std::string hebrewWord(Dice& dice, bool pointed) {
  std::string word;
  for (std::size_t letters = 2 + dice.below(6); letters > 0; --letters) {
    word += dice.of(kHebrew);
    if (pointed && dice.below(4) != 0) word += dice.of(kPoints);
  }
  return word;
}

std::string englishWord(Dice& dice) {
  std::string word;
  for (std::size_t letters = 2 + dice.below(8); letters > 0; --letters) {
    const char first = word.empty() && dice.below(8) == 0 ? 'A' : 'a';
    word += static_cast<char>(first + static_cast<char>(dice.below(26)));
  }
  return word;
}

std::string pieceOf(std::string_view kind, Dice& dice) {
  if (kind == "hebrew") return hebrewWord(dice, false).append(dice.of(kEnds));
  if (kind == "english") return englishWord(dice).append(dice.of(kEnds));
  if (kind == "niqqud") return hebrewWord(dice, true).append(dice.of(kEnds));
  if (kind == "mixed") {
    return (dice.below(2) == 0 ? hebrewWord(dice, false) : englishWord(dice)).append(dice.of(kEnds));
  }
  if (kind == "emoji") {
    std::string piece(dice.of(kEmoji));
    if (dice.below(3) == 0) piece.append(" ").append(englishWord(dice)).append(" ");
    return piece;
  }
  if (kind == "marks") {
    std::string piece(1, static_cast<char>('a' + static_cast<char>(dice.below(26))));
    for (std::size_t marks = dice.below(30); marks > 0; --marks) piece += dice.of(kMarks);
    return piece + (dice.below(4) == 0 ? " " : "");
  }
  if (kind == "cluster") return "\u0301";  // behind a letter: one character from beginning to end
  if (kind == "alternating") return "\u0301\u0323";
  if (kind == "digits") return std::string(dice.of(kDigits));
  return "";
}

}  // namespace

const std::vector<std::string>& textKinds() {
  static const std::vector<std::string> kKinds{"hebrew", "english", "mixed",       "niqqud", "emoji",
                                               "marks",  "cluster", "alternating", "digits"};
  return kKinds;
}

std::string textOf(std::string_view kind, std::size_t bytes) {
  Dice dice;
  std::string text;
  if (pieceOf(kind, dice).empty()) return text;
  text.reserve(bytes + 256);
  if (kind == "cluster" || kind == "alternating") text += "a";
  while (text.size() < bytes) text += pieceOf(kind, dice);
  return text;
}

}  // namespace lexwend
