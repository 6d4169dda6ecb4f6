// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <QWidget>

#include <xcb/xcb.h>

namespace lexwend::contract {

/// The user's pointer, by XTEST on a connection of the test's own.
class Pointer {
 public:
  Pointer(xcb_connection_t* connection, xcb_window_t root) : connection_(connection), root_(root) {}

  /// Moves to a place of a widget's, in the widget's coordinates.
  void moveTo(const QWidget& widget, QPoint place);
  /// Presses and releases the first button.
  void click();
  /// What the close box of a window manager's title bar does (ICCCM 4.2.8.1).
  void closeBox(const QWidget& window);

 private:
  void fake(std::uint8_t type, std::uint8_t detail, QPoint place = {});
  xcb_connection_t* connection_;
  xcb_window_t root_;
};

}  // namespace lexwend::contract
