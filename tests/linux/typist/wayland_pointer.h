// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

#include "platform/linux/wayland/connection.h"

struct zwlr_virtual_pointer_v1;

namespace lexwend::platform {

/// A user's mouse on the compositor of WAYLAND_DISPLAY. Each call returns when the compositor has handled it.
class WaylandPointer {
 public:
  /// The size of the output. Throws where no compositor takes a pointer.
  WaylandPointer(std::uint32_t width, std::uint32_t height);
  ~WaylandPointer();
  WaylandPointer(const WaylandPointer&) = delete;
  WaylandPointer& operator=(const WaylandPointer&) = delete;

  void moveTo(std::uint32_t x, std::uint32_t y);
  /// The left button, down and up.
  void click();

 private:
  void endFrame();
  std::unique_ptr<WaylandConnection> connection_;
  zwlr_virtual_pointer_v1* pointer_;
  std::uint32_t width_;
  std::uint32_t height_;
  std::uint32_t time_ = 0;
};

}  // namespace lexwend::platform
