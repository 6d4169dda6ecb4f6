// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include <gio/gio.h>

namespace lexwend::platform {

/// Tells a desktop that keeps its own list of layouts (KDE Plasma: org.kde.keyboard, /Layouts,
/// org.kde.KeyboardLayouts) which of them was selected, so that its indicator and the keyboard agree. Returns
/// at once; where there is no such desktop, nothing happens (GNOME offers programs no way to ask it).
/// `occurrence` counts the layouts of the same name before it in the list.
void tellDesktopOfLayout(GDBusConnection* sessionBus, const std::string& layout, std::size_t occurrence);

}  // namespace lexwend::platform
