// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/linux/wayland/connection.h"

struct wl_array;
struct wl_keyboard;
struct wl_surface;
struct xkb_context;
struct xkb_keymap;

namespace lexwend::platform {

/// The keymap of the seat's keyboards, which a compositor sends to every program that asks for the keyboard
/// and again when it changes. It has a group for each of the user's layouts. One thread at a time. Its events
/// are handled within the calls of the connection, which it must not outlive.
class SeatKeymap {
 public:
  /// `changed` is called when another keymap has come, the first one included.
  SeatKeymap(WaylandConnection& connection, std::function<void()> changed);
  ~SeatKeymap();
  SeatKeymap(const SeatKeymap&) = delete;
  SeatKeymap& operator=(const SeatKeymap&) = delete;

  /// Null while none has come. That of the last keyboard stays.
  const std::shared_ptr<xkb_keymap>& keymap() const { return keymap_; }

 private:
  static void capabilitiesChange(void* self, wl_seat* seat, std::uint32_t capabilities);
  static void keymapComes(void* self, wl_keyboard* keyboard, std::uint32_t format, std::int32_t file,
                          std::uint32_t size);
  void read(std::int32_t file, std::uint32_t size);

  std::function<void()> changed_;
  std::shared_ptr<xkb_context> context_;
  wl_seat* seat_;
  wl_keyboard* keyboard_ = nullptr;
  std::shared_ptr<xkb_keymap> keymap_;
};

}  // namespace lexwend::platform
