// SPDX-License-Identifier: MIT
#include "platform/linux/tray/toolkit.h"

#include <QGuiApplication>

namespace lexwend::platform {

bool toolkitIsOfWayland() {
  return QGuiApplication::platformName().startsWith("wayland");
}

}  // namespace lexwend::platform
