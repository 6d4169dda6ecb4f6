// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace lexwend::platform {

/// Whether a window of this class (WM_CLASS) shows a terminal. Letter case does not matter.
bool isTerminalClass(std::string_view windowClass);

}  // namespace lexwend::platform
