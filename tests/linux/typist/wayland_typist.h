// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/wayland/connection.h"

struct zwp_virtual_keyboard_v1;

namespace lexwend::platform {

/// A user's keyboard on the compositor of WAYLAND_DISPLAY. Each call returns when the compositor has handled
/// it.
class WaylandTypist {
 public:
  /// Throws where no compositor takes keys.
  WaylandTypist();
  ~WaylandTypist();
  WaylandTypist(const WaylandTypist&) = delete;
  WaylandTypist& operator=(const WaylandTypist&) = delete;

  /// "us,il", "us(dvorak),il".
  void setLayouts(const std::string& layouts);
  void key(std::uint32_t evdevKey, bool down);
  /// The state that the keys make, in the bits of the core protocol, and the layout.
  void modifiers(std::uint32_t depressed, std::uint32_t locked, std::uint32_t group);

 private:
  void sync();
  std::unique_ptr<WaylandConnection> connection_;
  zwp_virtual_keyboard_v1* keyboard_;
  std::uint32_t time_ = 0;
};

}  // namespace lexwend::platform
