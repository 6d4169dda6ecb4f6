// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace lexwend::platform {

/// Words of another program as they may stand in a log line: UTF-8, without control characters and line
/// separators, at most 200 characters. What is left out is replaced by nothing, bytes that are not UTF-8 by
/// U+FFFD.
std::string foreignText(std::string_view text);

}  // namespace lexwend::platform
