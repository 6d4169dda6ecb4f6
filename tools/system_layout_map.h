// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "core/layout_map.h"

namespace lexwend {

/// The map of the keyboard layouts that the user has enabled on this system. None when a Hebrew or an English
/// one is missing, or when the system cannot be asked (no display). Blocks while the host connects to the
/// system.
std::optional<LayoutMap> systemLayoutMap();

}  // namespace lexwend
