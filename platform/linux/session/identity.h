// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace lexwend::platform {

/// The application's name on buses, in autostart and icon file names, and as its window class.
inline constexpr std::string_view kIdentifier = "org.lexwend.Lexwend";
inline constexpr std::string_view kDisplayName = "Lexwend";

}  // namespace lexwend::platform
