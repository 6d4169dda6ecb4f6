// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include <gio/gio.h>

namespace lexwend::platform {

/// Tells KDE Plasma, which keeps a list of layouts of its own, which layout was selected, so that its
/// indicator agrees with the keyboard (org.kde.keyboard, /Layouts, org.kde.KeyboardLayouts). Without Plasma
/// nothing happens; GNOME has no such interface. Does not block, and reports no failure. `occurrence` is the
/// number of earlier layouts of the same name in the list.
void tellDesktopOfLayout(GDBusConnection* sessionBus, const std::string& layout, std::size_t occurrence);

}  // namespace lexwend::platform
