// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/connection.h"

namespace lexwend::platform {

/// While it lives, GLib's default main context handles the events of the connection. Main thread only.
class ConnectionWatch {
 public:
  explicit ConnectionWatch(WaylandConnection& connection);
  ~ConnectionWatch();
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;

 private:
  WaylandConnection& connection_;
  unsigned source_;  // 0 when the connection was lost
};

}  // namespace lexwend::platform
