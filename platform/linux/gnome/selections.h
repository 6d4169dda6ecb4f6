// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/selection/selections.h"

namespace lexwend::platform {

/// The clipboard of mutter by remote control, and PRIMARY over XWayland, which has the same one.
Selections selectionsOfMutter(const std::shared_ptr<MutterRemoteDesktop>& remote);

}  // namespace lexwend::platform
