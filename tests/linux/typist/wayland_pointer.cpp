// SPDX-License-Identifier: MIT
#include "tests/linux/typist/wayland_pointer.h"

#include <stdexcept>

#include <linux/input-event-codes.h>
#include <virtual-pointer.h>
#include <wayland-client.h>

namespace lexwend::platform {

WaylandPointer::WaylandPointer(std::uint32_t width, std::uint32_t height)
    : connection_(WaylandConnection::open()), width_(width), height_(height) {
  void* bound = connection_ ? connection_->bind(zwlr_virtual_pointer_manager_v1_interface, 1) : nullptr;
  if (bound == nullptr) throw std::runtime_error("no compositor takes a pointer here");
  auto* manager = static_cast<zwlr_virtual_pointer_manager_v1*>(bound);
  pointer_ = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, connection_->seat());
  zwlr_virtual_pointer_manager_v1_destroy(manager);
  endFrame();
}

WaylandPointer::~WaylandPointer() {
  zwlr_virtual_pointer_v1_destroy(pointer_);
}

void WaylandPointer::moveTo(std::uint32_t x, std::uint32_t y) {
  zwlr_virtual_pointer_v1_motion_absolute(pointer_, ++time_, x, y, width_, height_);
  endFrame();
}

void WaylandPointer::click() {
  for (const wl_pointer_button_state state :
       {WL_POINTER_BUTTON_STATE_PRESSED, WL_POINTER_BUTTON_STATE_RELEASED}) {
    zwlr_virtual_pointer_v1_button(pointer_, ++time_, BTN_LEFT, state);
    endFrame();
  }
}

void WaylandPointer::endFrame() {
  zwlr_virtual_pointer_v1_frame(pointer_);
  if (!connection_->roundTrip()) throw std::runtime_error("the compositor has gone");
}

}  // namespace lexwend::platform
