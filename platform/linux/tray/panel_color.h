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

/// The color for a panel that cannot be looked at, by the desktop's name (XDG_CURRENT_DESKTOP): GNOME's bar
/// is dark in every theme, elsewhere a panel is taken to be as the windows are.
QColor usualForeground(std::string_view desktop, const QPalette& palette);
/// The color in which a symbol is legible on this picture of a panel: near white on a dark one, near black
/// on a light one.
QColor legibleOn(const QImage& panel);
/// The same for the panel on the screen: the dock window that holds `icon` (device pixels), or the largest
/// one where that is not known; without any the surroundings of `icon`, else what is usual on this desktop.
/// The application object must exist; `x11` may be null.
QColor panelForeground(X11Connection* x11, const std::optional<QRect>& icon);

}  // namespace lexwend::platform
