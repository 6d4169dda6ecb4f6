// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace lexwend::platform {

/// The window that has the keyboard, as its display tells.
struct FrontWindow {
  std::int64_t id = 0;
  std::optional<std::uint32_t> process;
  /// The class of an X window, the application's identifier of any other.
  std::optional<std::string> windowClass;
};

}  // namespace lexwend::platform
