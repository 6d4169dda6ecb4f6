// SPDX-License-Identifier: MIT
#include "platform/mac/cf_text.h"

#include <vector>

namespace lexwend::platform::mac {
namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr Boolean kWithoutByteOrderMark = false;

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void appendUtf8(std::string& bytes, char32_t scalar) {
  const auto append = [&bytes](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
  const auto appendTail = [&append, scalar](int shift) { append(0x80 | ((scalar >> shift) & 0x3F)); };
  if (scalar < 0x80) {
    append(scalar);
  } else if (scalar < 0x800) {
    append(0xC0 | (scalar >> 6));
    appendTail(0);
  } else if (scalar < 0x10000) {
    append(0xE0 | (scalar >> 12));
    appendTail(6);
    appendTail(0);
  } else {
    append(0xF0 | (scalar >> 18));
    appendTail(12);
    appendTail(6);
    appendTail(0);
  }
}

}  // namespace

// The system's own conversion does not say what becomes of half a surrogate pair, which other applications do
// put into their texts; so it is done here.
std::string utf8(CFStringRef text) {
  const CFIndex length = CFStringGetLength(text);
  std::vector<UniChar> units(static_cast<std::size_t>(length) + 1);  // each has a next one
  CFStringGetCharacters(text, CFRangeMake(0, length), units.data());

  std::string bytes;
  bytes.reserve(units.size());
  for (std::size_t index = 0; index + 1 < units.size(); ++index) {
    char32_t scalar = units[index];
    const char32_t next = units[index + 1];
    if (isHighSurrogate(scalar) && isLowSurrogate(next)) {
      scalar = 0x10000 + ((scalar & 0x3FF) << 10 | (next & 0x3FF));
      ++index;
    } else if (isHighSurrogate(scalar) || isLowSurrogate(scalar)) {
      scalar = kReplacementCharacter;
    }
    appendUtf8(bytes, scalar);
  }
  return bytes;
}

CFRef<CFStringRef> cfText(std::string_view text) {
  return CFRef<CFStringRef>::adopt(CFStringCreateWithBytes(
      kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()), static_cast<CFIndex>(text.size()),
      kCFStringEncodingUTF8, kWithoutByteOrderMark));
}

CFRef<CFStringRef> cfTextOrEmpty(std::string_view text) {
  CFRef<CFStringRef> string = cfText(text);
  return string ? string : CFRef<CFStringRef>::share(CFSTR(""));
}

}  // namespace lexwend::platform::mac
