// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// Converts Latin-1 (the encoding of STRING) to UTF-8. Never fails.
std::string utf8FromLatin1(std::string_view latin1);
/// Converts UTF-8 to Latin-1. Nothing when a character is not in Latin-1 or the text is ill-formed.
std::optional<std::string> latin1FromUtf8(std::string_view utf8);

}  // namespace lexwend::platform
