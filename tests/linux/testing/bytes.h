// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/pasteboard.h"

namespace lexwend::platform {

/// The text as contents of a clipboard.
inline Bytes bytesOf(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

}  // namespace lexwend::platform
