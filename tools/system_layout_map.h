// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "core/layout_map.h"

namespace lexwend {

/// The map of the keyboard layouts that the user has enabled on this system; none when a Hebrew or an English
/// one is missing, or the system cannot be asked (no display).
std::optional<LayoutMap> systemLayoutMap();

}  // namespace lexwend
