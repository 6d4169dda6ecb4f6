// SPDX-License-Identifier: MIT
#include "platform/linux/tray/panel_color.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {
namespace {

const QColor kLight(0xf2, 0xf2, 0xf2);
const QColor kDark(0x20, 0x20, 0x20);

std::vector<std::uint32_t> cardinals(X11Connection& x11, xcb_window_t window, std::string_view property) {
  const auto bytes = x11.property(window, x11.atom(property)).value_or("");
  std::vector<std::uint32_t> values(bytes.size() / sizeof(std::uint32_t));
  if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(std::uint32_t));
  return values;
}

bool isDock(X11Connection& x11, xcb_window_t window) {
  const auto dock = x11.atom("_NET_WM_WINDOW_TYPE_DOCK");
  for (const auto type : cardinals(x11, window, "_NET_WM_WINDOW_TYPE")) {
    if (type == dock) return true;
  }
  return false;
}

/// The place of a window in device pixels of the root window; empty when the window no longer exists.
QRect rectangleOf(X11Connection& x11, xcb_window_t window) {
  const XcbReply<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(x11.get(), xcb_get_geometry(x11.get(), window), nullptr));
  const XcbReply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
      x11.get(), xcb_translate_coordinates(x11.get(), window, x11.root(), 0, 0), nullptr));
  if (size == nullptr || place == nullptr) return {};
  return {place->dst_x, place->dst_y, size->width, size->height};
}

/// The dock window that holds `icon`, or the largest one when no icon is given; empty when there is none.
QRect dockOf(X11Connection& x11, const std::optional<QRect>& icon) {
  QRect largest;
  for (const auto window : cardinals(x11, x11.root(), "_NET_CLIENT_LIST")) {
    if (!isDock(x11, window)) continue;
    const auto rectangle = rectangleOf(x11, window);
    if (icon && !rectangle.intersects(*icon)) continue;
    if (rectangle.width() * rectangle.height() > largest.width() * largest.height()) largest = rectangle;
  }
  return largest;
}

QImage pictureOf(const QRect& devicePixels) {
  QScreen* screen = QGuiApplication::primaryScreen();
  if (screen == nullptr || devicePixels.isEmpty()) return {};
  const double ratio = screen->devicePixelRatio();
  const QRectF logical(devicePixels.x() / ratio, devicePixels.y() / ratio, devicePixels.width() / ratio,
                       devicePixels.height() / ratio);
  const QRect whole = logical.toAlignedRect();
  return screen->grabWindow(0, whole.x(), whole.y(), whole.width(), whole.height()).toImage();
}

}  // namespace

QColor legibleOn(const QImage& panel) {
  // Most pixels of a panel show its background; icons and texts are the minority.
  constexpr int kMiddleGray = 128;
  qint64 light = 0;
  qint64 dark = 0;
  for (int y = 0; y < panel.height(); ++y) {
    for (int x = 0; x < panel.width(); ++x) (qGray(panel.pixel(x, y)) >= kMiddleGray ? light : dark) += 1;
  }
  return dark > light ? kLight : kDark;
}

QColor usualForeground(std::string_view desktop, const QPalette& palette) {
  const bool isGnome = desktop.find("GNOME") != std::string_view::npos;
  return isGnome ? kLight : palette.color(QPalette::WindowText);
}

QColor panelForeground(X11Connection* x11, const std::optional<QRect>& icon) {
  // Never only the place of the icon: a symbol that covers most of it would be taken for the panel, and the
  // color would change with each look.
  QImage panel;
  if (x11 != nullptr) panel = pictureOf(dockOf(*x11, icon));
  if (panel.isNull() && icon) panel = pictureOf(icon->adjusted(-icon->width(), 0, icon->width(), 0));
  if (!panel.isNull()) return legibleOn(panel);
  const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
  return usualForeground(desktop != nullptr ? desktop : "", QGuiApplication::palette());
}

}  // namespace lexwend::platform
