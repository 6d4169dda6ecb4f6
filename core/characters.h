// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The few Unicode properties that the conversion needs, over UTF-8.
///
/// A character is an extended grapheme cluster of UAX #29, by the rules GB1 to GB999 of Unicode 15.0. Rule
/// GB9c for Indic conjuncts, which later versions add, is not applied. The properties come from the ICU that
/// is linked.
///
/// Every operation takes any bytes. An ill-formed subsequence of UTF-8 is cut into its maximal subparts, as
/// section 3.9 of the Unicode Standard recommends for U+FFFD substitution: "E2 82" is one, "FF FF" are two,
/// an encoded surrogate is three. Each maximal subpart is one character. It joins no neighbour and is neither
/// letter nor space.
///
/// All operations are pure, linear in their input and safe on every thread.
namespace lexwend {

/// Walks a text character by character. The text must outlive the reader and the views that it gives.
class CharacterReader {
 public:
  explicit CharacterReader(std::string_view text) : text_(text) {}

  bool atEnd() const { return position_ == text_.size(); }

  /// The next character. Must not be called at the end.
  std::string_view next() {
    // Two neighbours that are both ASCII or Hebrew letters never form one character, except CR LF. Nearly all
    // text that is converted consists of them, so their bytes decide, without ICU.
    const std::size_t length = lengthOfLoneCharacter(position_);
    if (length != 0 &&
        (position_ + length == text_.size() || lengthOfLoneCharacter(position_ + length) != 0 ||
         text_[position_ + length] == '\r')) {
      return take(length);
    }
    return take(lengthOfCluster());
  }

 private:
  /// The length in bytes of an ASCII character or Hebrew letter at `position`, else 0. CR gives 0, since an
  /// LF may follow it.
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

/// Whether two texts have the same canonical decomposition (UAX #15). Ill-formed bytes are equal only to
/// themselves. Stops at the first difference.
bool canonicallyEquivalent(std::string_view left, std::string_view right);

/// The text in upper case, by the full, locale-independent mapping ("ß" gives "SS"). Ill-formed bytes are
/// kept.
std::string uppercased(std::string_view text);

/// True for a single scalar with the Uppercase property. Also true for a cased character that upper-casing
/// does not change. A character is cased when it is a single scalar with the Cased property, or when
/// lower-casing changes it.
bool isUppercaseCharacter(std::string_view character);

/// True when the first scalar of the character has the White_Space property, as newline characters have.
bool isSpaceCharacter(std::string_view character);

/// True when the first scalar of the character has the Alphabetic property.
bool isLetterCharacter(std::string_view character);

/// True for a letter alef to tav, final forms included. The first scalar decides, so vowel points do not
/// matter. Geresh, gershayim and the Yiddish ligatures are not letters here.
inline bool isHebrewLetter(std::string_view character) {
  return character.size() >= 2 && character[0] == '\xD7' &&
         static_cast<unsigned char>(character[1]) >= 0x90 && static_cast<unsigned char>(character[1]) <= 0xAA;
}

/// True for a letter A to Z or a to z without marks or accents.
inline bool isLatinLetter(std::string_view character) {
  return character.size() == 1 &&
         ((character[0] >= 'a' && character[0] <= 'z') || (character[0] >= 'A' && character[0] <= 'Z'));
}

}  // namespace lexwend
