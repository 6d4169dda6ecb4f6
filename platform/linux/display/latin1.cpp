// SPDX-License-Identifier: MIT
#include "platform/linux/display/latin1.h"

namespace lexwend::platform {

std::string utf8FromLatin1(std::string_view latin1) {
  std::string utf8;
  for (const char c : latin1) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8.push_back(c);
    } else {
      utf8.push_back(static_cast<char>(0xC0 | (byte >> 6)));
      utf8.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
  return utf8;
}

std::optional<std::string> latin1FromUtf8(std::string_view utf8) {
  std::string latin1;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    if (lead < 0x80) {
      latin1.push_back(utf8[i]);
      continue;
    }
    const bool twoBytes = (lead == 0xC2 || lead == 0xC3) && i + 1 < utf8.size();
    const auto trail = twoBytes ? static_cast<unsigned char>(utf8[i + 1]) : 0U;
    if ((trail & 0xC0U) != 0x80U) return std::nullopt;
    latin1.push_back(static_cast<char>(((lead & 0x03U) << 6) | (trail & 0x3FU)));
    ++i;
  }
  return latin1;
}

}  // namespace lexwend::platform
