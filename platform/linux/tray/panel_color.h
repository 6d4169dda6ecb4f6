// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QPalette>
#include <QRect>
#include <optional>
#include <string_view>

namespace lexwend::platform {

class X11Connection;

/// The foreground color for a panel whose pixels cannot be read. The desktop's name (XDG_CURRENT_DESKTOP)
/// decides: GNOME's bar is dark in every theme; elsewhere a panel is taken to have the colors of windows.
QColor usualForeground(std::string_view desktop, const QPalette& palette);
/// The color of a legible symbol on this picture of a panel: near white on a dark panel, near black on a
/// light one.
QColor legibleOn(const QImage& panel);
/// The same, for the panel on the screen. It is the dock window that holds `icon` (device pixels), or the
/// largest dock window when the icon's place is not known. Without a dock window the surroundings of `icon`
/// decide, and otherwise usualForeground(). The application object must exist. `x11` may be null. Blocks for
/// a few round trips to the X server.
QColor panelForeground(X11Connection* x11, const std::optional<QRect>& icon);

}  // namespace lexwend::platform
