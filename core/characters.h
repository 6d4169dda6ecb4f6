// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The few Unicode facts that the system needs, over UTF-8.
///
/// A character is an extended grapheme cluster of UAX #29 (the rules of Unicode 15.0, GB1 to GB999; GB9c,
/// which later versions add for Indic conjuncts, is not applied). The properties come from the ICU that is
/// linked.
///
/// Every operation takes any bytes. An ill-formed subsequence of UTF-8 is cut into its maximal subparts, as
/// the Unicode Standard recommends for U+FFFD substitution (section 3.9): "E2 82" is one, "FF FF" are two, an
/// encoded surrogate is three. Each of them is one character that joins no neighbour and is neither letter
/// nor space.
///
/// All operations are pure, linear in their input and safe on every thread.
namespace lexwend {

/// Walks a text character by character. The text must outlive the reader and the views that it gives.
class CharacterReader {
 public:
  explicit CharacterReader(std::string_view text) : text_(text) {}

  bool atEnd() const { return position_ == text_.size(); }

  /// The next character; not to be called at the end.
  std::string_view next() {
    // Two neighbours that are both ASCII or Hebrew letters never form one character, CR LF excepted. They
    // make up nearly all text that is ever converted, so they are told apart by their bytes.
    const std::size_t length = lengthOfLoneCharacter(position_);
    if (length != 0 &&
        (position_ + length == text_.size() || lengthOfLoneCharacter(position_ + length) != 0 ||
         text_[position_ + length] == '\r')) {
      return take(length);
    }
    return take(lengthOfCluster());
  }

 private:
  /// The bytes of the ASCII character (not CR, which may take an LF) or Hebrew letter at `position`, else 0.
  std::size_t lengthOfLoneCharacter(std::size_t position) const {
    const auto first = static_cast<unsigned char>(text_[position]);
    if (first < 0x80) return first == '\r' ? 0 : 1;
    if (first == 0xD7 && position + 1 < text_.size()) {  // U+05D0 to U+05EA are D7 90 to D7 AA
      const auto second = static_cast<unsigned char>(text_[position + 1]);
      return second >= 0x90 && second <= 0xAA ? 2 : 0;
    }
    return 0;
  }

  std::size_t lengthOfCluster() const;

  std::string_view take(std::size_t length) {
    const std::string_view character = text_.substr(position_, length);
    position_ += length;
    return character;
  }

  std::string_view text_;
  std::size_t position_ = 0;
};

/// The number of characters of a text; CR LF is one.
std::size_t characterCount(std::string_view text);

/// Whether two texts have the same canonical decomposition (UAX #15). Bytes that are not well-formed are
/// equal only to themselves. Stops at the first difference.
bool canonicallyEquivalent(std::string_view left, std::string_view right);

/// The text in upper case: the full, locale-independent mapping ("ß" gives "SS"). Ill-formed bytes are kept.
std::string uppercased(std::string_view text);

/// True for a single scalar with the Uppercase property, and for a character that upper-casing leaves as it
/// is and that is cased: a single scalar with the Cased property, or a character that lower-casing changes.
bool isUppercaseCharacter(std::string_view character);

/// True when the first scalar of the character has the White_Space property (the newline characters have it).
bool isSpaceCharacter(std::string_view character);

/// True when the first scalar of the character has the Alphabetic property.
bool isLetterCharacter(std::string_view character);

/// A letter alef to tav, final forms included, judged by the first scalar: vowel points do not matter.
/// Geresh, gershayim and the Yiddish ligatures are none.
inline bool isHebrewLetter(std::string_view character) {
  return character.size() >= 2 && character[0] == '\xD7' &&
         static_cast<unsigned char>(character[1]) >= 0x90 && static_cast<unsigned char>(character[1]) <= 0xAA;
}

/// A letter A to Z or a to z that stands alone: no mark, no accent.
inline bool isLatinLetter(std::string_view character) {
  return character.size() == 1 &&
         ((character[0] >= 'a' && character[0] <= 'z') || (character[0] >= 'A' && character[0] <= 'Z'));
}

}  // namespace lexwend
