// SPDX-License-Identifier: MIT
#include "tests/core/random_text.h"

#include <array>
#include <string_view>
#include <vector>

namespace lexwend {
namespace {

constexpr std::u32string_view kHebrew = U"אבגדהוזחטיךכלםמןנסעףפץצקרשת";
constexpr std::u32string_view kNearlyHebrew = U"\u05F0\u05F1\u05F2\u05F3\u05F4\u05BE\uFB2A\uFB4B\u05EF";
constexpr std::u32string_view kNiqqud = U"\u05B0\u05B4\u05B8\u05BC\u05C1\u05C2\u0591\u05AF\u05BF";
constexpr std::u32string_view kMarks =
    U"\u0300\u0301\u0302\u0307\u0323\u0327\u0338\u0345\u0344\u0340\u20DD\u1DC0\u035C\u0B3E\uFE0F\U0001D165"
    U"\u3099";
constexpr std::u32string_view kSpacingMarks = U"\u0903\u093E\u0E33\u0BBE\uAA7D";
constexpr std::u32string_view kJoiners = U"\u200D\u200C\u200D\u200D";
constexpr std::u32string_view kPrepend = U"\u0600\u0605\u06DD\u070F\u08E2\u0D4E\U000110BD";
constexpr std::u32string_view kHangul =
    U"\u1100\u115F\u1161\u1160\u11A8\u11FF\uAC00\uAC01\uD7A3\uA960\uD7B0\uD7CB";
constexpr std::u32string_view kEmoji =
    U"\U0001F469\U0001F467\u2764\U0001F3FB\U0001F600\u00A9\u2122\U0001F9D1\u231A";
constexpr std::u32string_view kFlags = U"\U0001F1EE\U0001F1F1\U0001F1FA\U0001F1F8\U0001F1E6";
constexpr std::u32string_view kSpaces =
    U"\t\n\v\f\r "
    U"\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u2028\u2029"
    U"\u202F\u205F\u3000";
constexpr std::u32string_view kControls =
    U"\u0001\u007F\u009F\u200B\u200E\u200F\u2060\uFEFF\u00AD\u001C\U000E0001";
constexpr std::u32string_view kComposed =
    U"\u00E9\u00C5\u212B\u2126\u1E69\u0958\u1E0B\u0344\u2ADC\uF900\U0001D15E";
constexpr std::u32string_view kOthers = U"\u20AA\u20AC\u042F\u03C3\u4E2D\uFFFD\uFFFF\U00020000\uE000\u0378";
constexpr std::u32string_view kAscii =
    U"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.,;:'\"`/\\()[]{}<>&?!-=+*";
constexpr std::array<std::u32string_view, 15> kKinds{
    kHebrew, kNearlyHebrew, kNiqqud, kMarks,    kSpacingMarks, kJoiners, kPrepend, kHangul,
    kEmoji,  kFlags,        kSpaces, kControls, kComposed,     kOthers,  kAscii};

constexpr std::array<std::string_view, 14> kIllFormed{
    "\xFF",         "\x80",         "\xBF\xBF",         "\xC0\xAF",
    "\xC2",         "\xD7",         "\xE2\x82",         "\xE0\x80\x80",
    "\xED\xA0\x80", "\xF0\x9F\x98", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
    "\xE0\xA0",     "\xF0\x90"};

}  // namespace

std::size_t RandomText::below(std::size_t bound) {
  // SplitMix64: short, and the same on every machine and library.
  state_ += 0x9E3779B97F4A7C15U;
  std::uint64_t mixed = state_;
  mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
  mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
  return static_cast<std::size_t>((mixed ^ mixed >> 31U) % bound);
}

std::string RandomText::piece() {
  // A third each of the two scripts makes words; the rest stirs them up.
  const std::size_t choice = below(100);
  if (choice < 25) return utf8Of(kAscii[below(kAscii.size())]);
  if (choice < 45) return utf8Of(kHebrew[below(kHebrew.size())]);
  if (choice < 55) return utf8Of(kSpaces[below(kSpaces.size())]);
  if (choice < 58) return std::string(kIllFormed[below(kIllFormed.size())]);
  if (choice < 60) {  // any scalar at all
    const auto scalar = static_cast<char32_t>(below(0x110000));
    return utf8Of(scalar >= 0xD800 && scalar <= 0xDFFF ? U'\uFFFD' : scalar);
  }
  const std::u32string_view kind = kKinds[below(kKinds.size())];
  return utf8Of(kind[below(kind.size())]);
}

std::string RandomText::mark() {
  const std::u32string_view kind = below(2) == 0 ? kNiqqud : kMarks;
  return utf8Of(kind[below(kind.size())]);
}

std::string RandomText::text(std::size_t longest) {
  // Some texts keep to a single kind, where long runs meet: flags, Hangul, marks.
  const std::size_t length = below(longest + 1);
  std::string result;
  if (below(4) == 0) {
    const std::u32string_view kind = kKinds[below(kKinds.size())];
    const std::u32string_view other = kKinds[below(kKinds.size())];
    for (std::size_t count = 0; count < length; ++count) {
      const std::u32string_view from = below(5) == 0 ? other : kind;
      result += utf8Of(from[below(from.size())]);
    }
    return result;
  }
  for (std::size_t count = 0; count < length; ++count) result += piece();
  return result;
}

std::string RandomText::prose(std::size_t bytes) {
  std::string result;
  const std::size_t scripts = below(3);  // one of them, or both
  while (result.size() < bytes) {
    const bool hebrew = scripts == 2 ? below(2) == 0 : scripts == 1;
    const bool pointed = below(4) == 0;
    for (std::size_t letters = below(below(8) == 0 ? 90 : 10); letters > 0; --letters) {
      const bool strays = scripts == 2 && below(60) == 0;
      const std::u32string_view from = hebrew != strays ? kHebrew : kAscii.substr(0, 52);
      result += utf8Of(from[below(from.size())]);
      if (pointed && below(2) == 0) result += utf8Of(kNiqqud[below(kNiqqud.size())]);
      if (below(150) == 0) result += piece();
    }
    result += below(3) == 0 ? utf8Of(kAscii[52 + below(kAscii.size() - 52)]) : "";
    result += below(20) == 0 ? "\n" : " ";
  }
  return result;
}

LayoutMap RandomText::keyboardMap() {
  constexpr std::u32string_view kFurther = U"\u05F3\u05F4\u05BE\u05C0\u20AA\u20AC\u042F\u03C3\u00DF\u4E2D";
  const auto scalar = [&] {
    const std::size_t choice = below(20);
    if (choice < 11) return kAscii[below(kAscii.size())];
    return choice < 18 ? kHebrew[below(kHebrew.size())] : kFurther[below(kFurther.size())];
  };
  LayoutMap map;
  for (std::size_t count = below(90); count > 0; --count) {
    map.toHebrew[utf8Of(scalar())] = utf8Of(scalar());
    map.toEnglish[utf8Of(scalar())] = utf8Of(scalar());
  }
  return map;
}

LayoutMap RandomText::map() {
  LayoutMap map;
  for (std::size_t count = below(60); count > 0; --count) {
    const auto key = [&] { return below(5) == 0 ? piece() + piece() : piece(); };
    const auto value = [&] { return text(below(6) == 0 ? 3 : 1); };
    map.toHebrew[key()] = value();
    map.toEnglish[key()] = value();
  }
  map.toHebrew["\u2126"] =
      "\u03A9";  // equivalent to its key, so that a text can be converted and yet not be changed
  map.toEnglish["\u00E9"] = "e\u0301";
  map.builtFromSystem = below(2) == 0;
  return map;
}

std::string utf8Of(char32_t scalar) {
  std::string bytes;
  const auto add = [&](char32_t byte) { bytes += static_cast<char>(byte); };
  if (scalar < 0x80) {
    add(scalar);
  } else if (scalar < 0x800) {
    add(0xC0 | scalar >> 6);
    add(0x80 | (scalar & 0x3F));
  } else if (scalar < 0x10000) {
    add(0xE0 | scalar >> 12);
    add(0x80 | (scalar >> 6 & 0x3F));
    add(0x80 | (scalar & 0x3F));
  } else {
    add(0xF0 | scalar >> 18);
    add(0x80 | (scalar >> 12 & 0x3F));
    add(0x80 | (scalar >> 6 & 0x3F));
    add(0x80 | (scalar & 0x3F));
  }
  return bytes;
}

std::string hexOf(const std::string& text) {
  std::string hex;
  for (const char byte : text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    hex += kDigits[static_cast<unsigned char>(byte) >> 4U];
    hex += kDigits[static_cast<unsigned char>(byte) & 15U];
    hex += ' ';
  }
  return hex;
}

}  // namespace lexwend
