// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include <gio/gio.h>

namespace lexwend::platform {

/// Whether the desktop takes its own layout again when a program locks another group, as GNOME's shell does:
/// then only its own shortcut selects one. Blocks until the bus has answered, for kBusCallTimeout at most.
bool desktopKeepsItsLayout(GDBusConnection* sessionBus);

/// Tells KDE Plasma, which keeps a list of layouts of its own, which layout was selected, so that its
/// indicator agrees with the keyboard (org.kde.keyboard, /Layouts, org.kde.KeyboardLayouts). Without Plasma
/// nothing happens. Does not block, and reports no failure. `occurrence` is the
/// number of earlier layouts of the same name in the list.
void tellDesktopOfLayout(GDBusConnection* sessionBus, const std::string& layout, std::size_t occurrence);

}  // namespace lexwend::platform
