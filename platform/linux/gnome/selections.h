// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/selection/selections.h"

namespace lexwend::platform {

/// The clipboard of mutter by remote control, and PRIMARY over XWayland, which has the same one. `x` are the
/// selections of XWayland; they may be empty. For `startKeeper` see MutterOwner.
Selections selectionsOfMutter(const std::shared_ptr<MutterRemoteDesktop>& remote, const Selections& x,
                              const std::function<bool(xcb_timestamp_t)>& startKeeper);

}  // namespace lexwend::platform
