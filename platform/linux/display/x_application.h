// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

namespace lexwend::platform {

/// A program as the X server knows it.
struct XApplication {
  /// The prefix of the ids of all its resources; each connection has one. The server gives that of a program
  /// that has gone to the next one that comes.
  std::uint32_t client = 0;
  /// Its process; nothing for a program on another machine, and nothing without X-Resource 1.2.
  std::optional<std::uint32_t> process;
};

/// The program that made the window. Blocks for one round trip. Of a window that no longer exists only the
/// client is known.
XApplication applicationOf(xcb_connection_t* connection, xcb_window_t window);

/// Whether two windows may belong to one program. A program may have several connections. Where the server
/// reports both processes, these tell. Windows of one connection may be the same otherwise. When it reports
/// no process for either, they may be the same. When it reports one for only one of them, they are not.
bool mayBeTheSame(const XApplication& one, const XApplication& other);

}  // namespace lexwend::platform
