// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend {

/// Which letters a text holds.
struct Letters {
  bool hebrew = false;
  bool latin = false;

  bool both() const { return hebrew && latin; }
};

/// Which way a text is converted.
struct Direction {
  bool sourceIsHebrew = false;
  bool isUniform = true;  ///< The text keeps to one script, so that every word is converted.
};

/// Text of one script is converted away from it; all other text away from the layout that is active.
inline Direction directionOf(Letters letters, bool currentLayoutIsHebrew) {
  if (letters.hebrew == letters.latin) return {currentLayoutIsHebrew, !letters.both()};
  return {letters.hebrew, true};
}

}  // namespace lexwend
