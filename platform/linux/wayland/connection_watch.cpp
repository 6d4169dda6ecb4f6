// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/connection_watch.h"

#include <glib-unix.h>

namespace lexwend::platform {

ConnectionWatch::ConnectionWatch(WaylandConnection& connection)
    : connection_(connection),
      source_(g_unix_fd_add(
          connection.descriptor(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
          [](gint, GIOCondition, gpointer self) -> gboolean {
            auto& watch = *static_cast<ConnectionWatch*>(self);
            watch.connection_.handleEvents();
            watch.connection_.flush();
            if (watch.connection_.isConnected()) return G_SOURCE_CONTINUE;
            watch.source_ = 0;
            return G_SOURCE_REMOVE;
          },
          this)) {}

ConnectionWatch::~ConnectionWatch() {
  if (source_ != 0) g_source_remove(source_);
}

}  // namespace lexwend::platform
