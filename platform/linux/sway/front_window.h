// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/linux/display/front_window.h"
#include "platform/linux/sway/ipc.h"

namespace lexwend::platform {

/// The window that has the keyboard; nothing when none has it or sway is gone. Main thread only. Waits for
/// sway.
std::optional<FrontWindow> frontWindowOf(SwayIpc& sway);

/// By a binding: sway carries it out when it takes the key, before the next key. Nothing when sway refuses.
/// Main thread only. Waits for sway, at its end too.
std::optional<FocusKey> focusKeyOf(const std::shared_ptr<SwayIpc>& sway, std::int64_t window);

}  // namespace lexwend::platform
