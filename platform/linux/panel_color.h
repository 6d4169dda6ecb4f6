// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <optional>

namespace lexwend::platform {

class X11Connection;

/// The color in which a symbol is legible on this picture of a panel: near white on a dark one, near black
/// on a light one.
QColor legibleOn(const QImage& panel);
/// The same for the panel on the screen: the dock window that holds `icon` (device pixels), or the largest
/// one where that is not known; without any the surroundings of `icon`, else as text is drawn in the
/// desktop's theme. The application object must exist; `x11` may be null.
QColor panelForeground(X11Connection* x11, const std::optional<QRect>& icon);

}  // namespace lexwend::platform
