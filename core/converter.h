// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "core/direction.h"
#include "core/layout_map.h"
#include "core/text_output.h"

namespace lexwend {

/// Turns text that was typed in the wrong keyboard layout into what was meant.
///
/// Text with letters of one script is converted away from that script. Text with letters of both is converted
/// away from the active layout, and only words with letters of that layout's script change. White space stays
/// as it is. Text is UTF-8. Ill-formed bytes come back as they are. A map key matches a character when both
/// are the same sequence of scalars.
///
/// Immutable. Copies share their map. Each thread may use a copy of its own.
class Converter {
 public:
  explicit Converter(const LayoutMap& map);

  struct Result {
    std::string text;
    bool targetIsHebrew = false;  ///< Set whether or not anything changed.
    bool changed = false;         ///< False when `text` is canonically equivalent to the input.

    friend bool operator==(const Result&, const Result&) = default;
  };

  /// Never fails. Takes time linear in the text.
  Result convert(std::string_view text, bool currentLayoutIsHebrew) const;

  /// The same, with the text handed to `output` piece by piece. The text of the result is empty.
  Result convertTo(TextOutput& output, std::string_view text, bool currentLayoutIsHebrew) const;

  /// The two halves of it, for a text that comes in parts: first the letters of all parts are found, which
  /// decide the direction (directionOf()), then each part is converted. Adds to `letters`, and looks no
  /// further once both scripts are there.
  void findLetters(std::string_view part, Letters& letters) const;
  /// Returns whether the part was changed; the whole was when one part was.
  bool convertPart(TextOutput& output, std::string_view part, Direction direction) const;

  /// The last place where a text may be cut into parts; 0 when there is none. A direction that is not uniform
  /// needs cuts `betweenWords`. `searched` is the length that the text had when a cut was last looked for.
  std::size_t lastCut(std::string_view text, std::size_t searched, bool betweenWords) const;

 private:
  /// A run of characters, all white space or none of them.
  struct Token {
    std::string_view text;
    bool isSpace = false;
  };

  struct LetterCounts {
    std::size_t hebrew = 0;
    std::size_t latin = 0;
  };

  struct Tables;

  /// Calls `onToken(Token)` for each token of the text in order.
  template <typename OnToken>
  static void tokenize(std::string_view text, OnToken onToken);

  static LetterCounts letterCounts(std::string_view text);

  std::string convertCharacters(std::string_view text, Direction direction) const;

  /// Appends what the token becomes to `output`. With `onlySourceLetters` only letters of the source script
  /// are looked up, else every character is.
  void convertToken(std::string_view token, bool sourceIsHebrew, bool onlySourceLetters,
                    std::string& output) const;

  std::shared_ptr<const Tables> tables_;
};

}  // namespace lexwend
