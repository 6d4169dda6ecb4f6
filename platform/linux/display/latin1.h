// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// Latin-1 (the encoding of STRING) to UTF-8; every byte sequence has one.
std::string utf8FromLatin1(std::string_view latin1);
/// UTF-8 to Latin-1; nothing when a character has none or the text is ill-formed.
std::optional<std::string> latin1FromUtf8(std::string_view utf8);

}  // namespace lexwend::platform
