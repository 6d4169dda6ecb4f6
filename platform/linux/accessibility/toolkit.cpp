// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/toolkit.h"

namespace lexwend::platform {

Toolkit toolkitNamed(const std::optional<std::string>& name) {
  if (name == "gtk" || name == "GTK") return Toolkit::gtk;  // GTK 3 and GTK 4
  return name == "Qt" ? Toolkit::qt : Toolkit::unknown;
}

icu::UnicodeString utf16(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::int32_t lengthInOffsets(std::string_view text, Toolkit toolkit) {
  return lengthInOffsets(utf16(text), toolkit);
}

std::int32_t lengthInOffsets(const icu::UnicodeString& text, Toolkit toolkit) {
  return toolkit == Toolkit::qt ? text.length() : text.countChar32();
}

std::int32_t insertLength(std::string_view text, Toolkit toolkit) {
  return toolkit == Toolkit::qt ? utf16(text).length() : static_cast<std::int32_t>(text.size());
}

}  // namespace lexwend::platform
