// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "platform/linux/selection/owner.h"
#include "platform/linux/selection/reader.h"

namespace lexwend::platform {

/// The ways to the selections of a display. Each opens a connection of its own, and gives null when there is
/// none.
struct Selections {
  std::function<std::unique_ptr<SelectionOwner>(SelectionOwner::Changed changed)> openOwner;
  /// Of "CLIPBOARD" or "PRIMARY".
  std::function<std::unique_ptr<ClipboardReader>(std::string_view selection)> openReader;
};

/// Those of the display of DISPLAY.
Selections selectionsOfX();

}  // namespace lexwend::platform
