// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/selection/selections.h"

namespace lexwend::platform {

/// Those of the compositor that WAYLAND_DISPLAY names.
Selections selectionsOfWayland();

}  // namespace lexwend::platform
