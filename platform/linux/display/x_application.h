// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

namespace lexwend::platform {

/// A program as the X server knows it.
struct XApplication {
  /// What the ids of all its resources begin with: one for each connection.
  std::uint32_t client = 0;
  /// Its process; nothing for a program on another machine, and without X-Resource 1.2.
  std::optional<std::uint32_t> process;
};

/// The program that has made the window. One round trip. Of a window that has gone the client is known, its
/// process is not.
XApplication applicationOf(xcb_connection_t* connection, xcb_window_t window);

/// Whether two windows may belong to one program. A program may have several connections. Two of which the
/// server tells no process may be the same, one of them only is another program.
bool mayBeTheSame(const XApplication& one, const XApplication& other);

/// A shortcut that was played to a program.
struct PlayedShortcut {
  XApplication application;
  /// A window of it, the one in front.
  xcb_window_t window = XCB_WINDOW_NONE;
  /// Before its first key.
  std::chrono::steady_clock::time_point time;
};

}  // namespace lexwend::platform
