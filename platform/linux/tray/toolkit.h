// SPDX-License-Identifier: MIT
#pragma once

namespace lexwend::platform {

/// Whether the toolkit's windows are those of a Wayland compositor. The application object must exist.
bool toolkitIsOfWayland();

}  // namespace lexwend::platform
