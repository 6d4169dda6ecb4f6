// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/registration.h"

namespace lexwend::platform {

/// The window that has the keyboard, as its display tells.
struct FrontWindow {
  std::int64_t id = 0;
  std::optional<std::uint32_t> process;
  /// The class of an X window, the application's identifier of any other.
  std::optional<std::string> windowClass;
};

/// A key, which no keyboard has, whose press gives a window the keyboard: what is played after it in one go
/// comes to that window, whoever else was to get the keyboard meanwhile. As long as this lives.
struct FocusKey {
  std::uint16_t evdev;
  Registration registration;
};

}  // namespace lexwend::platform
