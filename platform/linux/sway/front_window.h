// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/linux/display/front_window.h"
#include "platform/linux/sway/ipc.h"

namespace lexwend::platform {

/// The window that has the keyboard; nothing when none has it or sway is gone. Main thread only. Waits for
/// sway.
std::optional<FrontWindow> frontWindowOf(SwayIpc& sway);

}  // namespace lexwend::platform
