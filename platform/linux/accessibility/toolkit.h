// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/unistr.h>

namespace lexwend::platform {

/// How a toolkit counts. It decides in what units offsets are given and what InsertText's length means; a
/// wrong guess makes Qt insert memory that was never written into the user's document.
enum class Toolkit {
  gtk,      // offsets in code points, InsertText's length in UTF-8 bytes
  qt,       // both in UTF-16 code units
  unknown,  // not written to
};

Toolkit toolkitNamed(const std::optional<std::string>& name);

icu::UnicodeString utf16(std::string_view text);
/// The length of UTF-8 text in units of offsets.
std::int32_t lengthInOffsets(std::string_view text, Toolkit toolkit);
std::int32_t lengthInOffsets(const icu::UnicodeString& text, Toolkit toolkit);
/// The length of UTF-8 text as InsertText takes it.
std::int32_t insertLength(std::string_view text, Toolkit toolkit);

}  // namespace lexwend::platform
